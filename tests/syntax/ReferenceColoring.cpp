#include "ReferenceColoring.h"

#include "platform/Regex.h"
#include "platform/Scanner.h"

#include <QSet>

#include <algorithm>

namespace {

// What the original objects raise when a value has the wrong type or is missing; each
// pass catches it where the pass's own error guard stands.
struct Failure {
};

QString stringOrFail(const QVariant& value)
{
    if (value.typeId() != QMetaType::QString) {
        throw Failure{};
    }
    return value.toString();
}
QVariantList listOrFail(const QVariant& value)
{
    if (value.typeId() != QMetaType::QVariantList) {
        throw Failure{};
    }
    return value.toList();
}
QVariantMap mapOrFail(const QVariant& value)
{
    if (value.typeId() != QMetaType::QVariantMap) {
        throw Failure{};
    }
    return value.toMap();
}

struct Painter {
    std::vector<int>& cells;
    // Like the colour store, a range reaching past the text is cut at its end.
    void set(qsizetype location, qsizetype length, int category)
    {
        const qsizetype n = qsizetype(cells.size());
        for (qsizetype i = std::max(qsizetype(0), location); i < std::min(n, location + length);
             ++i) {
            cells[size_t(i)] = category;
        }
    }
};

void syntaxWordColoring(const QString& s, const QString& word, const QSet<char16_t>* w, Range r,
                        int category, bool caseInsensitive, Painter& painter)
{
    Scanner scanner(s);
    scanner.setCaseSensitive(!caseInsensitive);
    qsizetype start = 0;
    if (w) {
        start = s.size();
        for (qsizetype i = 0; i < s.size(); ++i) {
            if (w->contains(s[i].unicode())) {
                start = i;
                break;
            }
        }
    }
    scanner.setScanLocation(start);
    auto glued = [&](qsizetype i) {
        return w && !Scanner::isWhitespaceOrNewline(s[i]) && w->contains(s[i].unicode());
    };
    while (!scanner.isAtEnd()) {
        scanner.scanUpToString(word);
        const qsizetype l = scanner.scanLocation();
        if (!scanner.scanString(word)) {
            break;
        }
        if (l > 0 && glued(l - 1)) {
            continue;
        }
        if (l + word.size() < s.size() && glued(l + word.size())) {
            continue;
        }
        painter.set(l + r.location, word.size(), category);
        scanner.setScanLocation(l + 1);
    }
}

void syntaxRegularExpressionColoring(const QString& s, Range r, int category, const QVariant& array,
                                     bool caseInsensitive, Painter& painter)
{
    if (!array.isValid()) {
        return;
    }
    try {
        for (const QVariant& item : listOrFail(array)) {
            const QVariantMap entry = mapOrFail(item);
            if (!entry.contains(QStringLiteral("regularExpression"))) {
                continue;
            }
            const Regex regex(stringOrFail(entry.value(QStringLiteral("regexPattern"))),
                              caseInsensitive ? 17 : 16);
            if (!regex.isValid()) {
                continue;
            }
            const Regex::Status status = regex.forEachMatch(s, [&](const Regex::Match& m) {
                painter.set(m.range().location + r.location, m.range().length, category);
                return true;
            });
            if (status == Regex::Status::TimeLimit || status == Regex::Status::Error) {
                throw Failure{};
            }
        }
    } catch (const Failure&) {
    }
}

void syntaxBlockColoring(const QString& x, int category, const QVariant& array, Painter& painter)
{
    if (!array.isValid()) {
        return;
    }
    try {
        for (const QVariant& item : listOrFail(array)) {
            const QVariantMap entry = mapOrFail(item);
            if (entry.contains(QStringLiteral("regularExpression"))) {
                continue;
            }
            if (!entry.contains(QStringLiteral("startStr")) &&
                !entry.contains(QStringLiteral("endStr"))) {
                continue;
            }
            Scanner scanner(x);
            while (!scanner.isAtEnd()) {
                const qsizetype turnStart = scanner.scanLocation();
                scanner.scanUpToString(stringOrFail(entry.value(QStringLiteral("startStr"))));
                const qsizetype s = scanner.scanLocation();
                const QString end = stringOrFail(entry.value(QStringLiteral("endStr")));
                scanner.scanUpToString(end);
                const qsizetype e = scanner.scanLocation();
                painter.set(s, e - s + end.size(), category);
                if (e == turnStart) {
                    // The loop cannot move on from here: the category's block pass ends.
                    throw Failure{};
                }
            }
        }
    } catch (const Failure&) {
    }
}

} // namespace

std::vector<int> ReferenceColoring::color(const QVariantMap& dictionary, const QString& text,
                                          Range range, std::vector<int> cells)
{
    if (cells.empty()) {
        cells.assign(size_t(text.size()), Untouched);
    }
    const qsizetype from = qBound(qsizetype(0), range.location, text.size());
    const qsizetype to = qBound(from, range.max(), text.size());
    if (from == to) {
        return cells;
    }
    const Range r(from, to - from);
    const QString s = text.mid(r.location, r.length);
    std::fill(cells.begin() + from, cells.begin() + to, Cleared);
    Painter painter{cells};
    try {
        QSet<char16_t> w;
        const bool hasW = dictionary.contains(QStringLiteral("CharacterSet"));
        if (hasW) {
            for (QChar c : stringOrFail(dictionary.value(QStringLiteral("CharacterSet")))) {
                w.insert(c.unicode());
            }
        }
        const bool c = dictionary.value(QStringLiteral("CaseInsensitive")).toBool();
        for (int category = 0; category < SyntaxColoring::CategoryCount; ++category) {
            const QString key = SyntaxColoring::keyForCategory(SyntaxColoring::Category(category));
            if (!dictionary.contains(key)) {
                continue;
            }
            const QVariant array = dictionary.value(key);
            switch (category) {
            case SyntaxColoring::Blockwords:
            case SyntaxColoring::Comments:
                syntaxRegularExpressionColoring(s, r, category, array, c, painter);
                syntaxBlockColoring(text, category, array, painter);
                break;
            case SyntaxColoring::Keywords:
            case SyntaxColoring::Commands:
            case SyntaxColoring::Values:
                for (const QVariant& item : listOrFail(array)) {
                    try {
                        syntaxWordColoring(s, stringOrFail(item), hasW ? &w : nullptr, r, category,
                                           c, painter);
                    } catch (const Failure&) {
                    }
                }
                break;
            default:
                syntaxRegularExpressionColoring(s, r, category, array, c, painter);
                break;
            }
        }
    } catch (const Failure&) {
    }
    return cells;
}

std::vector<SyntaxColoring::Run> ReferenceColoring::runs(const std::vector<int>& cells)
{
    std::vector<SyntaxColoring::Run> result;
    for (size_t i = 0; i < cells.size();) {
        size_t j = i + 1;
        while (j < cells.size() && cells[j] == cells[i]) {
            ++j;
        }
        if (cells[i] >= 0) {
            result.push_back({qsizetype(i), qsizetype(j - i), SyntaxColoring::Category(cells[i])});
        }
        i = j;
    }
    return result;
}
