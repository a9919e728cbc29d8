#include "document/TextMirror.h"

#include "document/TextChunkIterator.h"

#include <QSet>
#include <QTextCursor>
#include <QTextDocument>

#include <gtest/gtest.h>

#include <random>

namespace {

QString plain(const QTextDocument& document)
{
    QString text = document.toRawText();
    text.replace(QChar::ParagraphSeparator, u'\n');
    return text;
}

} // namespace

// Random edits, undo and redo on a document: the copy, any stretch asked of it, and the
// changes it tells all agree with the document; a snapshot taken on the way stays the text
// it was.
TEST(TextMirror, FollowsEveryEditAndHandsOutAnyStretch)
{
    std::mt19937 random(20261124);
    auto below = [&](qsizetype n) {
        return std::uniform_int_distribution<qsizetype>(0, std::max<qsizetype>(n - 1, 0))(random);
    };
    const QStringList pieces = {"a",  "word ", "\n", "line\nbreak", "\t{}", QString(5000, u'x'),
                                "é€𝄞"};
    QTextDocument document;
    document.documentLayout(); // a document tells its changes only once it has a layout
    document.setPlainText(QStringLiteral("first line\nsecond line\n"));
    TextMirror* mirror = TextMirror::mirrorOfDocument(&document);
    ASSERT_EQ(mirror, TextMirror::mirrorOfDocument(&document));

    // What the signals say, applied to a model of their own.
    QString told = mirror->snapshot().string();
    TextSnapshot kept;
    QString keptText;
    QObject::connect(mirror, &TextMirror::textDidChange,
                     [&](qsizetype location, qsizetype removed, qsizetype added) {
                         told.replace(location, removed,
                                      mirror->view(location, location + added).toString());
                     });

    for (int step = 0; step < 800; ++step) {
        const qsizetype length = document.characterCount() - 1;
        switch (below(10)) {
        case 0:
            document.undo();
            break;
        case 1:
            document.redo();
            break;
        case 2: {
            // A paste at the very start, which Qt tells as a change of the whole text.
            QTextCursor cursor(&document);
            cursor.insertText(pieces[int(below(pieces.size()))]);
            break;
        }
        default: {
            QTextCursor cursor(&document);
            const qsizetype at = below(length + 1);
            cursor.setPosition(int(at));
            cursor.setPosition(int(std::min(length, at + below(12))), QTextCursor::KeepAnchor);
            cursor.insertText(below(4) == 0 ? QString() : pieces[int(below(pieces.size()))]);
        }
        }
        const QString expected = plain(document);
        ASSERT_EQ(mirror->size(), expected.size()) << "step " << step;
        for (int ask = 0; ask < 3; ++ask) {
            const qsizetype from = below(expected.size() + 1);
            const qsizetype to = from + below(expected.size() - from + 1);
            ASSERT_EQ(mirror->view(from, to), QStringView(expected).sliced(from, to - from))
                << "step " << step << " stretch " << from << "-" << to;
        }
        ASSERT_EQ(told, expected) << "step " << step;
        if (step % 50 == 0) {
            ASSERT_EQ(kept.string(), keptText) << "step " << step;
            QString why;
            ASSERT_TRUE(mirror->snapshot().checkStructure(&why)) << qPrintable(why);
            kept = mirror->snapshot();
            keptText = expected;
        }
    }
    EXPECT_EQ(mirror->snapshot().string(), plain(document));
}

// Typing in the middle of a large text while the lines around the caret are read after
// each key (as colouring does): a key makes one chunk anew and shares every other with the
// text before it, and only a stretch read across two chunks is copied.
TEST(TextMirror, AKeyInALargeTextCopiesOneChunk)
{
    QTextDocument document;
    document.documentLayout();
    document.setPlainText(QString(QString(199, u'x') + u'\n').repeated(2000));
    TextMirror* mirror = TextMirror::mirrorOfDocument(&document);
    const auto chunksOf = [](const TextSnapshot& text) {
        QSet<const QChar*> chunks;
        for (TextChunkIterator it(text, 0); !it.atEnd(); it.next()) {
            chunks.insert(it.chunk().data());
        }
        return chunks;
    };
    QTextCursor cursor(&document);
    cursor.setPosition(200'000);
    for (int key = 0; key < 50; ++key) {
        const TextSnapshot before = mirror->snapshot();
        const QSet<const QChar*> chunksBefore = chunksOf(before);
        cursor.insertText(QStringLiteral("b"));
        const QSet<const QChar*> chunksAfter = chunksOf(mirror->snapshot());
        EXPECT_GE(QSet<const QChar*>(chunksAfter).intersect(chunksBefore).size(),
                  chunksAfter.size() - 2);
        EXPECT_EQ(before.length() + 1, mirror->size());

        const qsizetype caret = cursor.position();
        const qint64 copied = mirror->copiedCharacters();
        EXPECT_EQ(mirror->at(caret - 1), u'b');
        const QStringView piece = mirror->piece(caret - 1, mirror->size());
        EXPECT_TRUE(piece.startsWith(u'b'));
        EXPECT_EQ(mirror->copiedCharacters(), copied);
        EXPECT_EQ(mirror->view(caret - 3000, caret + 3000).at(2999), u'b');
        EXPECT_LE(mirror->copiedCharacters() - copied, 6000);
    }
}
