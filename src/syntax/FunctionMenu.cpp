#include "syntax/FunctionMenu.h"

#include "document/TextSnapshot.h"
#include "platform/StringTextSource.h"

#include <QVariantMap>

namespace {

FunctionMenu::Item titled(const QString& title)
{
    FunctionMenu::Item item;
    item.title = title;
    return item;
}

FunctionMenu::Item separator()
{
    FunctionMenu::Item item;
    item.isSeparator = true;
    return item;
}

// "IndentationLevel" is stored as the editor wrote it: a number or a string of digits. A
// string counts by its leading integer, as the platform reads one; anything else is 0.
int integerValue(const QVariant& value)
{
    if (value.typeId() != QMetaType::QString) {
        bool ok = false;
        const int level = value.toInt(&ok);
        return ok ? level : 0;
    }
    const QString text = value.toString().trimmed();
    qsizetype end = 0;
    if (end < text.size() && (text[end] == u'-' || text[end] == u'+')) {
        ++end;
    }
    while (end < text.size() && text[end].isDigit() && text[end].unicode() < 128) {
        ++end;
    }
    bool ok = false;
    const int level = text.left(end).toInt(&ok);
    return ok ? level : 0;
}

} // namespace

const QStringList& FunctionMenu::kindNames()
{
    static const QStringList names = {
        QStringLiteral("None"),  QStringLiteral("Class"),    QStringLiteral("Category"),
        QStringLiteral("Event"), QStringLiteral("Function"), QStringLiteral("Method"),
        QStringLiteral("Macro"), QStringLiteral("Property"), QStringLiteral("Script"),
        QStringLiteral("Type"),  QStringLiteral("Constant"),
    };
    return names;
}

FunctionMenu::Kind FunctionMenu::kindForName(const QString& name)
{
    const qsizetype index = kindNames().indexOf(name);
    return index < 0 ? Kind::Unknown : Kind(index);
}

int FunctionMenu::indentationLevelOf(const QVariant& value)
{
    return integerValue(value);
}

FunctionMenu::FunctionMenu(const std::optional<QVariantList>& definitions, QStringView text,
                           const QString& previousTitle)
{
    if (!definitions || definitions->isEmpty()) {
        _items.push_back(titled(noSymbolTitle()));
        return;
    }
    std::vector<Definition> found;
    found.reserve(size_t(definitions->size()));
    for (const QVariant& value : *definitions) {
        const QVariantMap item = value.toMap();
        Definition definition;
        definition.rangeString = item.value(QStringLiteral("RangeString")).toString();
        definition.range = NSRangeFromString(definition.rangeString);
        definition.bold = item.value(QStringLiteral("BoldType")).toBool();
        definition.indentationLevel = integerValue(item.value(QStringLiteral("IndentationLevel")));
        if (item.contains(QStringLiteral("KeyType"))) {
            definition.hasKind = true;
            definition.kind = kindForName(item.value(QStringLiteral("KeyType")).toString());
        }
        found.push_back(definition);
    }
    StringTextSource source(text);
    addDefinitions(found, source, previousTitle);
}

FunctionMenu
FunctionMenu::fromDefinitions(const std::optional<std::vector<Definition>>& definitions,
                              TextSource& text, const QString& previousTitle)
{
    FunctionMenu menu;
    if (!definitions || definitions->empty()) {
        menu._items.push_back(titled(noSymbolTitle()));
    } else {
        menu.addDefinitions(*definitions, text, previousTitle);
    }
    return menu;
}

void FunctionMenu::addDefinitions(const std::vector<Definition>& definitions, TextSource& text,
                                  const QString& previousTitle)
{
    _items.reserve(definitions.size() + 2);
    _items.push_back(titled(noSymbolTitle()));
    _items.push_back(separator());
    bool reselected = false;
    for (const Definition& definition : definitions) {
        const Range range = definition.range;
        if (range.location < 0 || range.length < 0 || range.max() > text.size()) {
            if (_items.size() < 2) {
                _items.clear();
                _items.push_back(titled(noSymbolTitle()));
            }
            break;
        }
        Item item = titled(text.view(range.location, range.max()).toString());
        if (item.title == QStringLiteral("-")) {
            _items.push_back(separator());
            continue;
        }
        item.bold = definition.bold;
        item.rangeString =
            definition.rangeString.isNull() ? NSStringFromRange(range) : definition.rangeString;
        item.indentationLevel = definition.indentationLevel;
        item.hasKind = definition.hasKind;
        item.kind = definition.kind;
        const bool reselect = !reselected && !previousTitle.isNull() && item.title == previousTitle;
        _items.push_back(std::move(item));
        // The first item of the pop-up with the title chosen before is selected again.
        if (reselect) {
            reselected = true;
            for (size_t i = 0; i < _items.size(); ++i) {
                if (!_items[i].isSeparator && _items[i].title == previousTitle) {
                    _selectedIndex = int(i);
                    break;
                }
            }
        }
    }
}

Range FunctionMenu::rangeToSelect(const Item& item, const TextSnapshot& text)
{
    if (item.isSeparator || item.rangeString.isEmpty()) {
        return Range::notFound();
    }
    return lineRangeForRange(text, NSRangeFromString(item.rangeString));
}

Range FunctionMenu::lineRangeForRange(const TextSnapshot& text, Range range)
{
    const qsizetype n = text.length();
    const qsizetype location = qBound(qsizetype(0), range.location, n);
    const qsizetype last = range.length > 0 ? qBound(location, range.max() - 1, n) : location;
    const qsizetype start = text.lineStart(text.lineAt(location));
    // The line feed ending the last line belongs to it.
    const qsizetype lastLine = text.lineAt(last);
    const qsizetype end =
        last >= n || lastLine + 1 >= text.lineCount() ? n : text.lineStart(lastLine + 1);
    return {start, end - start};
}
