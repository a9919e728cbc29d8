#pragma once

#include "ReferenceColoring.h"
#include "platform/PropertyList.h"
#include "syntax/SyntaxColoring.h"
#include "syntax/SyntaxColoringEngine.h"

#include <QString>
#include <QVariantMap>

#include <gtest/gtest.h>

#include <cctype>
#include <initializer_list>
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
