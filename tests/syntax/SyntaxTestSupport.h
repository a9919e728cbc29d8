#pragma once

#include "ReferenceColoring.h"
#include "document/SnapshotTextSource.h"
#include "document/TextBuilder.h"
#include "document/TextStore.h"
#include "platform/PropertyList.h"
#include "syntax/SyntaxColoring.h"
#include "syntax/SyntaxColoringEngine.h"

#include <QString>
#include <QVariantMap>

#include <gtest/gtest.h>

#include <cctype>
#include <initializer_list>
#include <random>
#include <string>

/// Small builders for definitions and a readable picture of a colouring.
namespace SyntaxTestSupport {

inline QVariantMap pattern(const QString& regexPattern)
{
    return {{QStringLiteral("regularExpression"), true},
            {QStringLiteral("regexPattern"), regexPattern}};
}

inline QVariantMap block(const QString& start, const QString& end)
{
    return {{QStringLiteral("startStr"), start}, {QStringLiteral("endStr"), end}};
}

inline QVariantList words(std::initializer_list<const char*> list)
{
    QVariantList result;
    for (const char* word : list) {
        result.append(QString::fromUtf8(word));
    }
    return result;
}

/// A definition the application ships, read from its resources.
inline QVariantMap shipped(const QString& name)
{
    return PropertyList::readDictionary(QStringLiteral(":/SyntaxDefinition/%1.plist").arg(name))
        .value_or(QVariantMap());
}

inline const QString Letters =
    QStringLiteral("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_");

/// One letter per character: B blockword, K keyword, X command, V value, N number,
/// S string, H character, P preprocessor, C comment, '.' no colour from this call.
inline std::string picture(const std::vector<SyntaxColoring::Run>& runs, qsizetype length)
{
    static const char letters[] = "BKXVNSHPC";
    std::string result(size_t(length), '.');
    for (const SyntaxColoring::Run& run : runs) {
        for (qsizetype i = run.location; i < run.max(); ++i) {
            result[size_t(i)] = letters[run.category];
        }
    }
    return result;
}

/// Colours `range` with a fresh engine, checks that the step-by-step model agrees, and
/// returns the picture of everything painted.
inline std::string colour(const QVariantMap& definition, const QString& text, Range range)
{
    SyntaxColoringEngine engine(definition);
    const SyntaxColoring coloring = engine.coloringRange(text, range);
    const auto runs = coloring.runs();
    EXPECT_EQ(runs, ReferenceColoring::runs(ReferenceColoring::color(definition, text, range)))
        << "the engine and the model disagree on: " << text.toStdString();
    return picture(runs, text.size());
}

inline std::string colour(const QVariantMap& definition, const QString& text)
{
    return colour(definition, text, Range(0, text.size()));
}

/// A document's text coloured as a view colours it: the text is a store, which keeps it in
/// chunks, read through a snapshot of it, and the engine follows the store's changes.
struct ColouredDocument {
    ColouredDocument(const QString& text, const QVariantMap& definition)
        : engine(definition)
    {
        TextBuilder builder;
        builder.append(text);
        store.setLoadedText(builder.finish());
        source.setSnapshot(store.text());
        QObject::connect(&store, &TextStore::contentsChange, [this](const TextChange& change) {
            source.setSnapshot(store.text());
            engine.textDidChange(change.position, change.charsRemoved, change.charsAdded);
        });
        engine.coloringRange(source, Range(0, text.size()));
    }
    void replace(qsizetype at, qsizetype removed, const QString& inserted)
    {
        store.replace(at, removed, inserted);
    }

    TextStore store;
    SnapshotTextSource source;
    SyntaxColoringEngine engine;
};

/// Edits `text` at random places with strings from `typed`, as a person types, and holds the
/// recolouring of the lines around each edit to the model: of the text in one piece and of a
/// document's store, which keeps it in chunks. Scans that run on far past an edit read the
/// chunks where they lie and copy only what crosses from one to the next.
inline void expectTypingMatchesModel(const QVariantMap& definition, QString text,
                                     const std::vector<QString>& typed, int edits,
                                     const std::string& label)
{
    SyntaxColoringEngine engine(definition);
    engine.coloringRange(text, Range(0, text.size()));
    ColouredDocument copy(text, definition);
    std::mt19937 random(31337);
    const auto below = [&](qsizetype n) {
        return std::uniform_int_distribution<int>(0, int(n) - 1)(random);
    };
    for (int edit = 0; edit < edits; ++edit) {
        const qsizetype at = below(text.size());
        const qsizetype removed =
            below(100) < 40 ? below(std::min<qsizetype>(6, text.size() - at)) : 0;
        const QString inserted =
            below(100) < 85 ? typed[size_t(below(qsizetype(typed.size())))] : QString();
        text.replace(at, removed, inserted);
        engine.textDidChange(at, removed, inserted.size());
        copy.replace(at, removed, inserted);

        // About sixty lines around the edit, as a text view shows them.
        const qsizetype from = std::max<qsizetype>(0, at - 1500);
        const Range visible(from, std::min<qsizetype>(3000, text.size() - from));
        const auto expected =
            ReferenceColoring::runs(ReferenceColoring::color(definition, text, visible));
        ASSERT_EQ(engine.coloringRange(text, visible).runs(), expected)
            << label << " after edit " << edit;
        const qint64 copied = copy.source.copiedCharacters();
        ASSERT_EQ(copy.engine.coloringRange(copy.source, visible).runs(), expected)
            << label << " through the document's store, after edit " << edit;
        EXPECT_LT(copy.source.copiedCharacters() - copied, visible.length + text.size() / 64)
            << label;
    }
}

/// A definition's name as a test's: letters and digits, "+" as "p", the rest "_".
inline std::string testName(const char* name)
{
    std::string result;
    for (const char* c = name; *c; ++c) {
        result += std::isalnum(static_cast<unsigned char>(*c)) ? *c : (*c == '+' ? 'p' : '_');
    }
    return result;
}

} // namespace SyntaxTestSupport

inline void PrintTo(const SyntaxColoring::Run& run, std::ostream* os)
{
    *os << "{" << run.location << ", " << run.length << ", " << int(run.category) << "}";
}
