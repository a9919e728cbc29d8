// Measures the encoding detection on real translated text: the message catalogues (.mo) that
// Debian packages install under /usr/share/locale, converted with iconv into the encodings
// people used for each language before UTF-8. For every language, encoding and length it
// prints how many samples the detection reads back as the very same text, and what it
// answered for the others.
//
//   tessaran-detection_table [--priority] [--explain] [--locale-dir DIR] [LANGUAGE…]
//
// --explain lists the samples read wrong, with the plausibility of some readings of each.
//
// A word sample is a message of 4 to 11 characters with at least one beyond ASCII (a word or
// two), a short one a line of a message of 12 to 80 ("a few words"); a medium one is about
// 3 KB of successive messages. Languages
// whose catalogues are not installed are left out (install the packages that translate them,
// for example manpages-ja or the language packs, to measure them).

#include "document/EncodingDetector.h"
#include "document/EncodingManager.h"
#include "platform/StringEncoding.h"
#include "platform/TextCodec.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iconv.h>
#include <map>
#include <optional>

namespace {

struct Case {
    const char* language;  // folder under the locale directory
    const char* iconvName; // how iconv names the encoding
};

// clang-format off
constexpr Case cases[] = {
    {"ja", "SHIFT_JIS"}, {"ja", "EUC-JP"}, {"ja", "ISO-2022-JP"},
    {"ja", "UTF-8"},
    {"zh_CN", "GB2312"}, {"zh_CN", "GB18030"},
    {"zh_TW", "BIG5"},
    {"ko", "EUC-KR"},
    {"de", "WINDOWS-1252"}, {"fr", "WINDOWS-1252"}, {"es", "WINDOWS-1252"},
    {"it", "WINDOWS-1252"}, {"de", "UTF-8"},
    {"pl", "WINDOWS-1250"}, {"cs", "ISO-8859-2"},
    {"ru", "ISO-8859-5"}, {"el", "ISO-8859-7"},
    {"tr", "ISO-8859-9"},
    {"ru", "WINDOWS-1251"}, {"ru", "KOI8-R"}, {"ru", "IBM866"},
    {"uk", "WINDOWS-1251"}, {"uk", "KOI8-U"},
    {"bg", "WINDOWS-1251"}, {"sr", "WINDOWS-1251"},
    {"el", "WINDOWS-1253"}, {"tr", "WINDOWS-1254"},
    {"lt", "WINDOWS-1257"}, {"lt", "ISO-8859-13"}, {"lv", "WINDOWS-1257"},
    {"et", "ISO-8859-15"}, {"de", "ISO-8859-15"}, {"fr", "ISO-8859-15"},
    {"ro", "ISO-8859-16"}, {"pl", "ISO-8859-2"}, {"cs", "IBM852"},
    {"he", "ISO-8859-8"}, {"ar", "ISO-8859-6"},
};
// clang-format on

constexpr int kShortSamples = 40;
constexpr int kMediumSamples = 10;
constexpr qsizetype kMediumBytes = 3000;

// The translations of one catalogue, in the catalogue's order, plural forms apart.
QStringList translationsOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    const QByteArray data = file.readAll();
    if (data.size() < 28) {
        return {};
    }
    const auto* bytes = reinterpret_cast<const uchar*>(data.constData());
    const bool little = qFromLittleEndian<quint32>(bytes) == 0x950412deu;
    if (!little && qFromBigEndian<quint32>(bytes) != 0x950412deu) {
        return {};
    }
    const auto word = [&](qsizetype at) -> quint32 {
        if (at < 0 || at + 4 > data.size()) {
            return 0;
        }
        return little ? qFromLittleEndian<quint32>(bytes + at)
                      : qFromBigEndian<quint32>(bytes + at);
    };
    const quint32 count = word(8);
    const quint32 table = word(16);
    QStringList result;
    for (quint32 i = 1; i < count; ++i) { // entry 0 is the catalogue's header
        const quint32 length = word(table + 8 * i);
        const quint32 offset = word(table + 8 * i + 4);
        if (qsizetype(offset) + qsizetype(length) > data.size()) {
            break;
        }
        for (const QByteArray& form : data.mid(offset, length).split('\0')) {
            const QString text = QString::fromUtf8(form);
            if (text.toUtf8() == form && !form.isEmpty()) {
                result << text;
            }
        }
    }
    return result;
}

QStringList messagesOf(const QString& localeDir, const QString& language)
{
    QDir dir(localeDir + u'/' + language + QStringLiteral("/LC_MESSAGES"));
    QStringList messages;
    const QStringList files = dir.entryList({QStringLiteral("*.mo")}, QDir::Files, QDir::Name);
    for (const QString& name : files) {
        // Country, language and currency names are lists of words, not sentences.
        if (!name.startsWith(QLatin1String("iso_"))) {
            messages << translationsOf(dir.filePath(name));
        }
    }
    return messages;
}

std::optional<QByteArray> iconvEncode(const char* encoding, const QString& text)
{
    iconv_t descriptor = iconv_open(encoding, "UTF-8");
    if (descriptor == iconv_t(-1)) {
        return std::nullopt;
    }
    QByteArray input = text.toUtf8();
    QByteArray output(input.size() * 4 + 16, Qt::Uninitialized);
    char* in = input.data();
    size_t inLeft = size_t(input.size());
    char* out = output.data();
    size_t outLeft = size_t(output.size());
    bool ok = iconv(descriptor, &in, &inLeft, &out, &outLeft) != size_t(-1) && inLeft == 0 &&
              iconv(descriptor, nullptr, nullptr, &out, &outLeft) != size_t(-1);
    iconv_close(descriptor);
    if (!ok) {
        return std::nullopt;
    }
    output.truncate(output.size() - qsizetype(outLeft));
    return output;
}

bool hasNonAscii(const QString& text)
{
    return std::any_of(text.begin(), text.end(), [](QChar c) { return c.unicode() >= 0x80; });
}

struct Sample {
    QString text;
    QByteArray bytes;
};

// Lines of messages spread over the whole list, so that one catalogue does not decide.
QList<Sample> shortSamples(const QStringList& messages, const char* encoding, qsizetype shortest,
                           qsizetype longest)
{
    QList<Sample> candidates;
    for (const QString& message : messages) {
        for (const QString& line : message.split(u'\n')) {
            const QString trimmed = line.trimmed();
            if (trimmed.size() >= shortest && trimmed.size() <= longest && hasNonAscii(trimmed)) {
                if (auto bytes = iconvEncode(encoding, trimmed + u'\n')) {
                    candidates.append({trimmed + u'\n', *bytes});
                }
            }
        }
    }
    QList<Sample> samples;
    const qsizetype stride = std::max<qsizetype>(1, candidates.size() / kShortSamples);
    for (qsizetype i = 0; i < candidates.size() && samples.size() < kShortSamples; i += stride) {
        samples.append(candidates[i]);
    }
    return samples;
}

QList<Sample> mediumSamples(const QStringList& messages, const char* encoding)
{
    QList<Sample> samples;
    const qsizetype stride = std::max<qsizetype>(1, messages.size() / kMediumSamples);
    for (qsizetype start = 0; start < messages.size() && samples.size() < kMediumSamples;
         start += stride) {
        Sample sample;
        for (qsizetype i = start; i < messages.size() && sample.bytes.size() < kMediumBytes; ++i) {
            if (auto bytes = iconvEncode(encoding, messages[i] + u'\n')) {
                sample.text += messages[i] + u'\n';
                sample.bytes += *bytes;
            }
        }
        if (sample.bytes.size() >= kMediumBytes / 2 && hasNonAscii(sample.text)) {
            samples.append(sample);
        }
    }
    return samples;
}

QString shortName(quint64 encoding)
{
    if (encoding == StringEncoding::NoEncoding) {
        return QStringLiteral("none");
    }
    const quint32 cf = StringEncoding::convertNSStringEncodingToEncoding(encoding);
    const QString name = StringEncoding::convertEncodingToIANACharSetName(cf);
    return name.isEmpty() ? QString::number(encoding) : name;
}

// With --explain: a sample read wrong, and how plausible each reading of it is.
void explain(const Sample& sample, quint64 detected)
{
    constexpr quint64 readings[] = {0x80000A01, 3,          0x80000632, 0x80000423, 0x80000940,
                                    12,         15,         9,          0x80000502, 0x80000A02,
                                    0x80000A08, 0x8000041B, 0x80000205, 0x80000007, 0x80000207,
                                    0x80000503, 0x8000020D, 0x80000507, 0x80000210};
    std::printf("    %s    -> %s:", qPrintable(sample.text.trimmed()),
                qPrintable(shortName(detected)));
    for (const quint64 encoding : readings) {
        const double score = EncodingDetector::plausibility(sample.bytes, encoding);
        if (score >= 0) {
            std::printf(" %s %.2f", qPrintable(shortName(encoding)), score);
        }
    }
    std::printf("\n");
}

bool explaining = false;

// One row: how many samples come back as the same text, and what the detection said.
void measure(const Case& row, const char* length, const QList<Sample>& samples, bool priority)
{
    if (samples.isEmpty()) {
        return;
    }
    // No application here: the tool makes the one manager it needs.
    static EncodingManager manager;
    int right = 0;
    std::map<QString, int> answers;
    for (const Sample& sample : samples) {
        const DecodedContents contents =
            manager.automaticDistinctionWithData(sample.bytes, priority);
        QString text = contents.text;
        if (contents.isValid() && text == sample.text) {
            ++right;
        } else if (explaining) {
            explain(sample, contents.encoding);
        }
        ++answers[shortName(contents.encoding)];
    }
    QStringList said;
    for (const auto& [name, count] : answers) {
        said << QStringLiteral("%1 %2").arg(name).arg(count);
    }
    std::printf("| %-5s | %-12s | %-6s | %2d/%-2d | %s |\n", row.language, row.iconvName, length,
                right, int(samples.size()), qPrintable(said.join(QStringLiteral(", "))));
}

} // namespace

int main(int argc, char** argv)
{
    bool priority = false;
    QString localeDir = QStringLiteral("/usr/share/locale");
    QStringList only;
    for (int i = 1; i < argc; ++i) {
        const QString argument = QString::fromLocal8Bit(argv[i]);
        if (argument == QLatin1String("--priority")) {
            priority = true;
        } else if (argument == QLatin1String("--explain")) {
            explaining = true;
        } else if (argument == QLatin1String("--locale-dir") && i + 1 < argc) {
            localeDir = QString::fromLocal8Bit(argv[++i]);
        } else if (argument.startsWith(u'-')) {
            std::fputs("usage: tessaran-detection_table [--priority] [--explain] "
                       "[--locale-dir DIR] [LANGUAGE...]\n",
                       stderr);
            return 2;
        } else {
            only << argument;
        }
    }
    std::printf("Detection with the Japanese priority %s; right = read back as the same text.\n\n",
                priority ? "on" : "off");
    std::printf("| lang  | encoding     | length | right | detected |\n");
    std::printf("|-------|--------------|--------|-------|----------|\n");
    QHash<QString, QStringList> messagesByLanguage;
    for (const Case& row : cases) {
        const QString language = QString::fromLatin1(row.language);
        if (!only.isEmpty() && !only.contains(language)) {
            continue;
        }
        if (!messagesByLanguage.contains(language)) {
            messagesByLanguage.insert(language, messagesOf(localeDir, language));
        }
        const QStringList& messages = messagesByLanguage[language];
        measure(row, "word", shortSamples(messages, row.iconvName, 4, 11), priority);
        measure(row, "short", shortSamples(messages, row.iconvName, 12, 80), priority);
        measure(row, "medium", mediumSamples(messages, row.iconvName), priority);
    }
    return 0;
}
