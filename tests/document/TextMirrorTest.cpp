#include "document/TextMirror.h"

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

// Random edits, undo and redo on a document: the copy, any stretch asked of it wherever the
// gap stands, and the changes it tells all agree with the document.
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
    QString told = mirror->text().toString();
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
    }
    EXPECT_EQ(mirror->text(), plain(document));
}

// Typing in the middle of a large text while the lines around the caret are read after
// each key (as colouring does) moves a few lines' worth, not the text after the caret.
TEST(TextMirror, AKeyInALargeTextMovesOnlyWhatLiesAroundIt)
{
    QTextDocument document;
    document.documentLayout();
    document.setPlainText(QString(QString(199, u'x') + u'\n').repeated(2000));
    TextMirror* mirror = TextMirror::mirrorOfDocument(&document);
    QTextCursor cursor(&document);
    cursor.setPosition(200'000);
    cursor.insertText(QStringLiteral("a")); // the gap comes to the caret once
    const qint64 before = mirror->movedCharacters();
    for (int key = 0; key < 50; ++key) {
        cursor.insertText(QStringLiteral("b"));
        const qsizetype caret = cursor.position();
        EXPECT_EQ(mirror->view(caret - 3000, caret + 3000).at(2999), u'b');
    }
    EXPECT_LT(mirror->movedCharacters() - before, 50 * 2 * 3000);
}
