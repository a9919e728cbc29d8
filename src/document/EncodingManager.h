#pragma once

#include "platform/StringEncoding.h"

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QString>
#include <QStringView>
#include <QUrl>
#include <Qt>

#include <optional>
#include <utility>

/// A file's text decoded once: the encoding it was read in and the text, with its line
/// breaks as they are in the file, and the line-break style a scan of that text finds.
/// The editor holds LF line breaks (replaceLineBreaks(0, text)); the style found here is
/// what the next save writes back (replaceLineBreaks(style, text), then TextCodec::encode).
struct DecodedContents {
    /// StringEncoding::NoEncoding when the file could not be read or decoded.
    quint64 encoding = StringEncoding::NoEncoding;
    QString text;
    /// 0 LF, 1 CR, 2 CRLF, or NSNotFound when the text holds no line break.
    qsizetype lineBreaks = 0;
    /// How many bytes the file held when it was read.
    qint64 bytesRead = 0;
    /// True when reading the file failed (as opposed to its bytes not decoding).
    bool unreadable = false;
    /// When the file was not decoded because of a line longer than the limit asked for:
    /// that line's number (from 1) and its length in bytes.
    qsizetype longLine = 0;
    qint64 longLineBytes = 0;

    bool isValid() const { return encoding != StringEncoding::NoEncoding; }
};

/// How many line breaks of each kind a text holds.
struct LineBreakCounts {
    qsizetype lineFeeds = 0;
    qsizetype carriageReturns = 0;
    qsizetype carriageReturnLineFeeds = 0;

    /// Whether the text uses more than one kind.
    bool isMixed() const
    {
        return (lineFeeds > 0) + (carriageReturns > 0) + (carriageReturnLineFeeds > 0) > 1;
    }
};

/// Why a decoded file is better not edited as text.
enum class NonTextReason {
    None,
    /// It holds NUL characters, which no text file has.
    NulCharacters,
    /// A quarter or more of its characters (among the first 65,536) are control characters
    /// other than tabs, line breaks, form feeds and escapes: no text has that many.
    ControlCharacters,
};

/// The encodings the editor offers, the pop-ups that show them, the detection of a file's
/// encoding, and the line-break styles.
class EncodingManager
{
public:
    /// Item data roles of the pop-ups: the represented object (Qt::UserRole, an encoding or
    /// a line-break style) and the tag (−1 for "Automatic").
    static constexpr int RepresentedObjectRole = Qt::UserRole;
    static constexpr int TagRole = Qt::UserRole + 1;
    /// A separator between groups in the encoding list.
    static constexpr quint64 Separator = 0xFFFFFFFFu;
    /// The line-break style of a document whose line breaks are written back as they were
    /// read, each of its own kind: no conversion (see replaceLineBreaks).
    static constexpr qsizetype KeepLineBreaks = -1;

    static EncodingManager& sharedEncodingManager();

    EncodingManager();

    /// The offered encodings in menu order, separators included; built on first use.
    /// Safe to call from a worker thread that detects a large file's encoding.
    QList<quint64> encodingList();
    void setEncodingList(const QList<quint64>& encodingList);
    /// The encodings offered after the list (Windows-1251, KOI8-R, UTF-32, …), in menu order
    /// with separators between groups; none of them is in encodingList().
    static QList<quint64> otherEncodingList();
    /// What detection may answer: encodingList(), a separator, then otherEncodingList().
    QList<quint64> offeredEncodings();
    /// The title of the group of other encodings in menus and pop-ups.
    static QString otherEncodingsTitle() { return QStringLiteral("Other Encodings"); }

    /// The encoding of a file's bytes, or all ones when the file cannot be read, is empty,
    /// or decodes in no offered encoding. `priority` prefers the Japanese encodings.
    quint64 automaticDistinctionEncodingWithContentsOfURL(const QUrl& url, bool priority);

    /// The same detection, keeping the text it decoded, so that opening a file decodes it
    /// once. `lineBreaks` is the scan of that text.
    DecodedContents automaticDistinctionWithContentsOfURL(const QUrl& url, bool priority);
    DecodedContents automaticDistinctionWithData(QByteArray data, bool priority);

    /// Reads a file in `encoding`, or detects it when `encoding` is all ones: what a
    /// document's reading needs in one pass over the file. A file with a line of more than
    /// `lineByteLimit` bytes (when not negative) is not decoded at all (see `longLine`).
    DecodedContents contentsOfURL(const QUrl& url, quint64 encoding, bool priority,
                                  qint64 lineByteLimit = -1);
    /// The same for a file's bytes, already read.
    DecodedContents contentsOfData(QByteArray data, quint64 encoding, bool priority,
                                   qint64 lineByteLimit = -1);
    /// Reads a regular file whole, in one read where its size allows; false when it is not
    /// a regular file or reading it fails.
    static bool readWholeFile(const QUrl& url, QByteArray& data);
    /// The first line of `data` longer than `limit` bytes, lines ending at LF, CR or CR LF:
    /// its number from 1 and its length; none when there is no such line.
    static std::optional<std::pair<qsizetype, qint64>> lineLongerThan(QByteArrayView data,
                                                                      qint64 limit);
    /// The same for a text, in characters.
    static std::optional<std::pair<qsizetype, qint64>> lineLongerThan(QStringView text,
                                                                      qint64 limit);

    // Line breaks

    /// The style of a file read in `encoding`: 2 when it has a CRLF anywhere, else 1 when
    /// it has a CR, else 0 when it has an LF, else NSNotFound (also when it does not decode).
    qsizetype scanLineBreaks(const QUrl& url, quint64 encoding);
    /// The same scan over a text already decoded.
    static qsizetype scanLineBreaks(QStringView text);
    /// The text with every LF, CR and CRLF written in style `lineBreaks`; any other style
    /// changes nothing. U+2028, U+2029 and NEL are not line breaks and stay as they are.
    QString replaceLineBreaks(qsizetype lineBreaks, const QString& string) const;
    /// Counts the line breaks of each kind; a CR followed by an LF is one CRLF.
    static LineBreakCounts countLineBreaks(QStringView text);
    /// Whether a decoded file looks like something other than text, and why.
    static NonTextReason nonTextReason(QStringView text);

    /// "OS X / Unix (LF)", … for menus and pop-ups; empty outside 0…2.
    static QString lineBreaksLongTitle(qsizetype lineBreaks);
    /// "OS X/Unix(LF)", … for the status line; empty outside 0…2.
    static QString lineBreaksShortTitle(qsizetype lineBreaks);
    /// What the status line and the information pane say of a document's style: the short
    /// title, or "Line breaks as read" for KeepLineBreaks.
    static QString lineBreaksStatusTitle(qsizetype lineBreaks);

    const QString& lineFeed() const { return _lineFeed; }
    const QString& carrigeReturn() const { return _carrigeReturn; }
    const QString& carrigeReturn_lineFeed() const { return _carrigeReturn_lineFeed; }

private:
    QMutex _encodingListLock;
    QList<quint64> _encodingList;
    bool _hasEncodingList = false;
    QString _lineFeed;
    QString _carrigeReturn;
    QString _carrigeReturn_lineFeed;
};
