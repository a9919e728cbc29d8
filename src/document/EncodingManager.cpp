#include "document/EncodingManager.h"

#include "document/EncodingDetector.h"
#include "platform/Range.h"
#include "platform/SharedInstance.h"
#include "platform/TextCodec.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <cstring>

namespace {

constexpr quint32 EncodingTableEnd = 0xFFFFFFFFu;
constexpr quint32 SeparatorId = 0xFFFFFFFFu;

// Core Foundation numbers, in menu order; separators are the invalid number. The table
// ends with a terminator word of its own that is not part of the list.
// clang-format off
constexpr std::array<quint32, 65> encodingTable{
    0xA01, 0x920, 0x820, 0x628, SeparatorId,              // Japanese
    0x8000100, SeparatorId,                               // UTF-8
    0x1, 0x420, SeparatorId,                              // Japanese, Mac OS and Windows
    0x100, SeparatorId,                                   // UTF-16
    0x0, 0x500, 0xB01, SeparatorId,                       // Western
    0x930, 0xA05, 0x19, 0x421, 0x632, 0x830, SeparatorId, // Simplified Chinese
    0x931, 0xA09, 0xA06, 0x2, 0x423, SeparatorId,         // Traditional Chinese
    0x940, 0x840, 0x3, 0x422, SeparatorId,                // Korean
    0x1D, 0x501, SeparatorId,                             // Central European
    0x15, 0x41D, 0x1E, 0x508, SeparatorId,                // Thai, Vietnamese
    0x4, 0x506, 0x5, 0x505, 0x6, 0x207, 0x7, 0x205,       // Arabic, Hebrew, Greek, Cyrillic
    SeparatorId,
    0x23, 0x209, 0x25, 0x416, SeparatorId,                // Turkish, Icelandic
    0x201, 0x203, 0x202, 0x204, 0x400, SeparatorId,       // Latin
    0x600, 0xBFF,                                         // ASCII
    EncodingTableEnd,
};
// clang-format on
// The terminator and the separator share a value; the table's length tells them apart.
constexpr qsizetype encodingTableLength = qsizetype(encodingTable.size()) - 1;

// The encodings offered after the list: the other strict converters whose files people still
// meet, in menu order, grouped like the list.
// clang-format off
constexpr quint32 otherEncodingTable[] = {
    0x14000100, 0x10000100, 0x0C000100, 0x1C000100, 0x18000100, SeparatorId, // Unicode
    0x20F, 0x410, 0x20A, 0x20E, SeparatorId,                                  // Western
    0x412, 0x210, 0x20D, 0x507, SeparatorId,                                  // Central European
    0x502, 0xA02, 0xA08, 0x41B, 0x413, SeparatorId,                           // Cyrillic
    0x503, 0x504, 0x206, 0x208,                                   // Greek, Turkish, Arabic, Hebrew
};
// clang-format on

constexpr quint64 UTF8 = 4;
constexpr quint64 UTF16 = 10;
constexpr quint64 UTF32 = 0x8C000100;
constexpr quint64 EUCJP = 3;
constexpr quint64 ISO2022JP = 21;
constexpr quint64 ShiftJIS = 0x80000A01;

} // namespace

bool EncodingManager::readWholeFile(const QUrl& url, QByteArray& data)
{
    // Regular files only: a FIFO would block the reading until some writer appears and a
    // device may never end.
    const QString path = url.toLocalFile();
    if (path.isEmpty() || !QFileInfo(path).isFile()) {
        return false;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    // One read into a buffer of the file's size: no growing. Not asked for huge pages: the
    // buffer lives only until the text is decoded, and finding free huge pages can make the
    // kernel compact memory first, which took longer than the reading itself.
    const qint64 size = file.size();
    data = QByteArray(size, Qt::Uninitialized);
    qint64 done = 0;
    while (done < size) {
        const qint64 got = file.read(data.data() + done, size - done);
        if (got <= 0) {
            break;
        }
        done += got;
    }
    data.truncate(done);
    // The file may have grown since its size was taken, and some files (those of /proc)
    // tell no size at all: what follows is read up to the end.
    if (done == size && file.error() == QFileDevice::NoError) {
        char more[1 << 16];
        qint64 got = 0;
        while ((got = file.read(more, sizeof more)) > 0) {
            data.append(more, got);
        }
    }
    return file.error() == QFileDevice::NoError;
}

EncodingManager& EncodingManager::sharedEncodingManager()
{
    return SharedInstance<EncodingManager>::object();
}

EncodingManager::EncodingManager()
    : _lineFeed(QChar(10))
    , _carrigeReturn(QChar(13))
    , _carrigeReturn_lineFeed(QStringLiteral("\r\n"))
{}

QList<quint64> EncodingManager::encodingList()
{
    QMutexLocker locker(&_encodingListLock);
    if (!_hasEncodingList) {
        for (qsizetype i = 0; i < encodingTableLength; ++i) {
            const quint64 encoding =
                StringEncoding::convertEncodingToNSStringEncoding(encodingTable[i]);
            if (encoding != 0) {
                _encodingList.append(encoding);
            }
        }
        _hasEncodingList = true;
    }
    return _encodingList;
}

void EncodingManager::setEncodingList(const QList<quint64>& encodingList)
{
    QMutexLocker locker(&_encodingListLock);
    _encodingList = encodingList;
    _hasEncodingList = true;
}

QList<quint64> EncodingManager::otherEncodingList()
{
    QList<quint64> list;
    for (const quint32 encoding : otherEncodingTable) {
        list.append(StringEncoding::convertEncodingToNSStringEncoding(encoding));
    }
    return list;
}

QList<quint64> EncodingManager::offeredEncodings()
{
    return encodingList() + QList<quint64>{Separator} + otherEncodingList();
}

quint64 EncodingManager::automaticDistinctionEncodingWithContentsOfURL(const QUrl& url,
                                                                       bool priority)
{
    return automaticDistinctionWithContentsOfURL(url, priority).encoding;
}

DecodedContents EncodingManager::automaticDistinctionWithContentsOfURL(const QUrl& url,
                                                                       bool priority)
{
    QByteArray data;
    if (!readWholeFile(url, data)) {
        DecodedContents failed;
        failed.unreadable = true;
        return failed;
    }
    const qint64 bytesRead = data.size();
    DecodedContents result = automaticDistinctionWithData(std::move(data), priority);
    result.bytesRead = bytesRead;
    return result;
}

DecodedContents EncodingManager::automaticDistinctionWithData(QByteArray data, bool priority)
{
    DecodedContents result;
    if (data.isEmpty()) {
        return result;
    }
    const auto found = [&](quint64 encoding) {
        result.encoding = encoding;
        data = QByteArray();   // the bytes are no longer needed; free them before scanning
        result.text.squeeze(); // gives back the address space decoding reserved but did not use
        result.lineBreaks = scanLineBreaks(result.text);
        return result;
    };
    const auto* bytes = reinterpret_cast<const uchar*>(data.constData());
    const qsizetype head = qMin<qsizetype>(3, data.size());

    // The first byte of the UTF-8 byte-order mark anywhere in the first three bytes; when
    // it is there but the data are not UTF-8, the UTF-16 marks are not looked for either.
    if (std::memchr(bytes, 0xEF, size_t(head)) != nullptr) {
        if (TextCodec::decode(UTF8, data, result.text)) {
            return found(UTF8);
        }
    } else {
        // A UTF-32 mark begins with a UTF-16 one (FF FE 00 00), which would read as a NUL.
        if ((data.startsWith(QByteArrayView("\xFF\xFE\0\0", 4)) ||
             data.startsWith(QByteArrayView("\0\0\xFE\xFF", 4))) &&
            TextCodec::decode(UTF32, data, result.text)) {
            return found(UTF32);
        }
        const qsizetype head16 = qMin<qsizetype>(2, data.size());
        if ((std::memchr(bytes, 0xFE, size_t(head16)) ||
             std::memchr(bytes, 0xFF, size_t(head16))) &&
            TextCodec::decode(UTF16, data, result.text)) {
            return found(UTF16);
        }
    }

    if (priority) {
        if (data.contains('\x1B') && TextCodec::decode(ISO2022JP, data, result.text)) {
            return found(ISO2022JP);
        }
        if (TextCodec::decode(EUCJP, data, result.text)) {
            return found(EUCJP);
        }
        if (TextCodec::decode(ShiftJIS, data, result.text)) {
            return found(ShiftJIS);
        }
    }

    if (const quint64 detected = EncodingDetector::detect(data, offeredEncodings(), result.text);
        detected != StringEncoding::NoEncoding) {
        return found(detected);
    }
    // Unmarked UTF-16 only for data that holds NUL bytes, as the detection has it: nearly any
    // even number of bytes decodes as UTF-16, and loses every line.
    const bool mayBeUtf16 = data.contains('\0');
    for (const quint64 encoding : encodingList()) {
        if (encoding != Separator && (encoding != UTF16 || mayBeUtf16) &&
            TextCodec::decode(encoding, data, result.text)) {
            return found(encoding);
        }
    }
    return DecodedContents{};
}

namespace {

// The first line of [begin, end) longer than `limit` units, lines ending at LF, CR or CR LF;
// `find(from, c)` gives the next `c` at or after `from`, or `end`.
template <typename Char, typename Find>
std::optional<std::pair<qsizetype, qint64>> firstLineLongerThan(const Char* begin, const Char* end,
                                                                qint64 limit, Find find)
{
    if (end - begin <= limit) {
        return std::nullopt;
    }
    // The next LF and the next CR, each looked for at memory speed and only again once passed.
    const Char* lf = find(begin, '\n');
    const Char* cr = find(begin, '\r');
    qsizetype line = 1;
    for (const Char* start = begin;;) {
        const Char* stop = std::min(lf, cr);
        if (stop - start > limit) {
            return std::pair{line, qint64(stop - start)};
        }
        if (stop == end) {
            return std::nullopt;
        }
        start = stop + (stop == cr && stop + 1 < end && stop[1] == '\n' ? 2 : 1);
        ++line;
        if (lf < start) {
            lf = find(start, '\n');
        }
        if (cr < start) {
            cr = find(start, '\r');
        }
    }
}

} // namespace

std::optional<std::pair<qsizetype, qint64>> EncodingManager::lineLongerThan(QByteArrayView data,
                                                                            qint64 limit)
{
    const char* const end = data.data() + data.size();
    return firstLineLongerThan(data.data(), end, limit, [end](const char* from, char c) {
        const void* at = std::memchr(from, c, size_t(end - from));
        return at ? static_cast<const char*>(at) : end;
    });
}

std::optional<std::pair<qsizetype, qint64>> EncodingManager::lineLongerThan(QStringView text,
                                                                            qint64 limit)
{
    const QChar* const end = text.data() + text.size();
    return firstLineLongerThan(text.data(), end, limit, [end](const QChar* from, char c) {
        // A QChar is looked for with the vectorised search; a QLatin1Char is not.
        const qsizetype at = QStringView(from, end).indexOf(QChar(char16_t(c)));
        return at < 0 ? end : from + at;
    });
}

DecodedContents EncodingManager::contentsOfURL(const QUrl& url, quint64 encoding, bool priority,
                                               qint64 lineByteLimit)
{
    QByteArray data;
    if (!readWholeFile(url, data)) {
        DecodedContents result;
        result.unreadable = true;
        return result;
    }
    return contentsOfData(std::move(data), encoding, priority, lineByteLimit);
}

DecodedContents EncodingManager::contentsOfData(QByteArray data, quint64 encoding, bool priority,
                                                qint64 lineByteLimit)
{
    DecodedContents result;
    result.bytesRead = data.size();
    if (lineByteLimit >= 0) {
        if (const auto line = lineLongerThan(data, lineByteLimit)) {
            result.longLine = line->first;
            result.longLineBytes = line->second;
            return result;
        }
    }
    if (encoding == StringEncoding::NoEncoding) {
        const qint64 bytesRead = result.bytesRead;
        result = automaticDistinctionWithData(std::move(data), priority);
        result.bytesRead = bytesRead;
        return result;
    }
    if (TextCodec::decode(encoding, data, result.text)) {
        data = QByteArray();
        result.text.squeeze();
        result.encoding = encoding;
        result.lineBreaks = scanLineBreaks(result.text);
        return result;
    }
    result.text = QString();
    return result;
}

// Line breaks

qsizetype EncodingManager::scanLineBreaks(const QUrl& url, quint64 encoding)
{
    QByteArray data;
    QString text;
    if (!readWholeFile(url, data) || !TextCodec::decode(encoding, data, text)) {
        return NSNotFound;
    }
    return scanLineBreaks(text);
}

qsizetype EncodingManager::scanLineBreaks(QStringView text)
{
    // Searching for single characters runs at memory speed; the pair is looked for only
    // at the CRs found.
    qsizetype cr = text.indexOf(u'\r');
    if (cr < 0) {
        return text.contains(u'\n') ? 0 : NSNotFound;
    }
    for (; cr >= 0; cr = text.indexOf(u'\r', cr + 1)) {
        if (cr + 1 < text.size() && text[cr + 1] == u'\n') {
            return 2;
        }
    }
    return 1;
}

QString EncodingManager::replaceLineBreaks(qsizetype lineBreaks, const QString& string) const
{
    if (lineBreaks < 0 || lineBreaks > 2) {
        return string;
    }
    const QString& lineBreak =
        lineBreaks == 0 ? _lineFeed : (lineBreaks == 1 ? _carrigeReturn : _carrigeReturn_lineFeed);
    const QStringView text(string);
    qsizetype cr = text.indexOf(u'\r');
    if (cr < 0 && lineBreaks == 0) {
        return string;
    }
    // Every CR LF, CR and LF becomes the style's line break in one pass. QString::replace moves
    // the rest of the string again for every thousand matches: converting the line breaks of a
    // 100 MB file that way took many seconds.
    QString result;
    result.reserve(text.size());
    qsizetype lf = text.indexOf(u'\n');
    qsizetype at = 0;
    while (cr >= 0 || lf >= 0) {
        const qsizetype next = cr < 0 ? lf : (lf < 0 ? cr : std::min(cr, lf));
        result.append(text.sliced(at, next - at));
        result.append(lineBreak);
        at = next + (text[next] == u'\r' && next + 1 == lf ? 2 : 1);
        if (cr >= 0 && cr < at) {
            cr = text.indexOf(u'\r', at);
        }
        if (lf >= 0 && lf < at) {
            lf = text.indexOf(u'\n', at);
        }
    }
    result.append(text.sliced(at));
    return result;
}

LineBreakCounts EncodingManager::countLineBreaks(QStringView text)
{
    LineBreakCounts counts;
    if (!text.contains(u'\r')) {
        // Most texts: line feeds alone, counted in a loop the compiler makes run at memory
        // speed.
        const char16_t* units = text.utf16();
        qsizetype lineFeeds = 0;
        for (qsizetype i = 0; i < text.size(); ++i) {
            lineFeeds += units[i] == u'\n';
        }
        counts.lineFeeds = lineFeeds;
        return counts;
    }
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c == u'\n') {
            ++counts.lineFeeds;
        } else if (c == u'\r') {
            if (i + 1 < text.size() && text[i + 1] == u'\n') {
                ++counts.carriageReturnLineFeeds;
                ++i;
            } else {
                ++counts.carriageReturns;
            }
        }
    }
    return counts;
}

NonTextReason EncodingManager::nonTextReason(QStringView text)
{
    if (text.contains(QChar(0))) {
        return NonTextReason::NulCharacters;
    }
    // The start of the file tells: a text with some control characters here and there (a
    // backspace of overstruck output, a bell) is still text.
    const QStringView head = text.first(qMin<qsizetype>(text.size(), 1 << 16));
    qsizetype controls = 0;
    for (QChar c : head) {
        const char16_t u = c.unicode();
        if ((u < 0x20 && u != u'\t' && u != u'\n' && u != u'\r' && u != u'\f' && u != 0x0B &&
             u != 0x1B) ||
            (u >= 0x7F && u < 0xA0)) {
            ++controls;
        }
    }
    return !head.isEmpty() && controls * 4 > head.size() ? NonTextReason::ControlCharacters
                                                         : NonTextReason::None;
}

QString EncodingManager::lineBreaksLongTitle(qsizetype lineBreaks)
{
    switch (lineBreaks) {
    case 0:
        return QStringLiteral("OS X / Unix (LF)");
    case 1:
        return QStringLiteral("Classic Mac (CR)");
    case 2:
        return QStringLiteral("Windows (CRLF)");
    default:
        return {};
    }
}

QString EncodingManager::lineBreaksShortTitle(qsizetype lineBreaks)
{
    switch (lineBreaks) {
    case 0:
        return QStringLiteral("OS X/Unix(LF)");
    case 1:
        return QStringLiteral("Classic Mac(CR)");
    case 2:
        return QStringLiteral("Windows(CRLF)");
    default:
        return {};
    }
}

QString EncodingManager::lineBreaksStatusTitle(qsizetype lineBreaks)
{
    return lineBreaks == KeepLineBreaks ? QStringLiteral("Line breaks as read")
                                        : lineBreaksShortTitle(lineBreaks);
}
