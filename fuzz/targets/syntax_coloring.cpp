// A syntax definition and a text, both from the input, coloured and listed for the function
// pop-up. The definition comes first, one entry a line, up to a line "--"; the text follows:
//   i                      case-insensitive
//   c CHARACTERS           the definition's character set
//   CATEGORY w WORD        a word of a category (Keywords, Comments …)
//   CATEGORY r PATTERN     a regular expression of a category
//   CATEGORY b START<tab>END   a block of a category
//   F PATTERN<tab>KIND<tab>LEVEL<tab>BOLD   a function-list entry
// Runaway patterns must end at the regular-expression time limit.
#include "FuzzTarget.h"
#include "platform/Regex.h"
#include "syntax/FunctionMenu.h"
#include "syntax/SyntaxColoringEngine.h"
#include "syntax/SyntaxManager.h"

#include <QStringList>
#include <QVariantMap>

namespace {

QVariantMap definitionFrom(const QStringList& lines)
{
    QVariantMap definition;
    QVariantList functions;
    for (const QString& line : lines) {
        if (line == u"i") {
            definition.insert(QStringLiteral("CaseInsensitive"), true);
        } else if (line.startsWith(u"c ")) {
            definition.insert(QStringLiteral("CharacterSet"), line.mid(2));
        } else if (line.startsWith(u"F ")) {
            const QStringList fields = line.mid(2).split(u'\t');
            QVariantMap entry{{QStringLiteral("regexPattern"), fields.value(0)}};
            if (fields.size() > 1) {
                entry.insert(QStringLiteral("KeyType"), fields[1]);
            }
            if (fields.size() > 2) {
                entry.insert(QStringLiteral("IndentationLevel"), fields[2].toLongLong());
            }
            if (fields.size() > 3) {
                entry.insert(QStringLiteral("BoldType"), fields[3] == u"1");
            }
            functions.append(entry);
        } else {
            const qsizetype space = line.indexOf(u' ');
            if (space < 0 || space + 2 >= line.size() || line[space + 2] != u' ') {
                continue;
            }
            const QString category = line.left(space);
            const QChar kind = line[space + 1];
            const QString argument = line.mid(space + 3);
            QVariantList entries = definition.value(category).toList();
            if (kind == u'w') {
                entries.append(argument);
            } else if (kind == u'r') {
                entries.append(QVariantMap{{QStringLiteral("regexPattern"), argument},
                                           {QStringLiteral("regularExpression"), true}});
            } else if (kind == u'b') {
                const QStringList ends = argument.split(u'\t');
                entries.append(QVariantMap{{QStringLiteral("startStr"), ends.value(0)},
                                           {QStringLiteral("endStr"), ends.value(1)}});
            }
            definition.insert(category, entries);
        }
    }
    if (!functions.isEmpty()) {
        definition.insert(QStringLiteral("FunctionDefinition"), functions);
    }
    return definition;
}

} // namespace

TESSARAN_FUZZ_TARGET(syntax_coloring)
{
    // Runaway patterns end at the time limit however low it is; a low one lets the fuzzer
    // try many of them a second instead of a few.
    static const bool lowLimit = (Regex::setInitialTimeLimit(50), true);
    Q_UNUSED(lowLimit);
    const QString input = QString::fromUtf8(reinterpret_cast<const char*>(data), qsizetype(size));
    QStringList lines = input.split(u'\n');
    const qsizetype end = lines.indexOf(QStringLiteral("--"));
    if (end < 0) {
        return;
    }
    const QString text = lines.mid(end + 1).join(u'\n');
    lines = lines.mid(0, end);
    const QVariantMap definition = definitionFrom(lines);

    SyntaxColoringEngine engine(definition);
    const SyntaxColoring whole = engine.coloringRange(text, Range(0, text.size()));
    // An edit in the middle, told to the engine, then the visible part coloured again.
    if (!text.isEmpty()) {
        const qsizetype middle = text.size() / 2;
        const QString edited = text.left(middle) + QStringLiteral("*/\"x") + text.mid(middle);
        engine.textDidChange(middle, 0, 4);
        engine.coloringRange(edited, Range(middle / 2, edited.size() - middle / 2));
    }
    Q_UNUSED(whole);

    SyntaxManager& manager = SyntaxManager::sharedSyntaxManager();
    const std::optional<QVariantList> functions =
        manager.makeFunctionDefinitionWithString(text, definition);
    const FunctionMenu menu(functions, text, QStringLiteral("main"));
    Q_UNUSED(menu.items());
}
