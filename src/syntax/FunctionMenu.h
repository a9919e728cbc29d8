#pragma once

#include "platform/Range.h"

#include <QString>
#include <QStringList>
#include <QVariantList>

#include <optional>
#include <vector>

class TextSnapshot;
class TextSource;

/// The items of a window's function pop-up, built from the definition items of
/// SyntaxManager::makeFunctionDefinitionWithString without any widget: the pop-up shows
/// them as they are.
class FunctionMenu
{
public:
    /// The title of the first item, which selects nothing.
    static QString noSymbolTitle() { return QStringLiteral("No Symbol selected"); }
    /// The kinds of definitions, in the order the definitions' editor offers them; each
    /// names the image shown before its items.
    static const QStringList& kindNames();

    enum class Kind {
        Unknown = -1, // a "KeyType" with no image: the item shows none
        None,
        Class,
        Category,
        Event,
        Function,
        Method,
        Macro,
        Property,
        Script,
        Type,
        Constant,
    };
    static Kind kindForName(const QString& name);

    struct Item {
        QString title;
        bool isSeparator = false;
        bool bold = false;
        int indentationLevel = 0;
        /// Whether the definition item had a "KeyType"; only then does the item show an image.
        bool hasKind = false;
        Kind kind = Kind::Unknown;
        /// The definition's range in the platform's range notation ("{12, 4}").
        QString rangeString;
    };

    /// One definition found in the text, as a definition item describes it.
    struct Definition {
        Range range;
        bool bold = false;
        int indentationLevel = 0;
        bool hasKind = false;
        Kind kind = Kind::Unknown;
        /// The range as the definition item wrote it; made from `range` when null.
        QString rangeString;
    };
    /// The pop-up for `definitions` as the constructor makes it for definition items.
    /// Reads only the titles from `text`.
    static FunctionMenu fromDefinitions(const std::optional<std::vector<Definition>>& definitions,
                                        TextSource& text, const QString& previousTitle = QString());
    /// An "IndentationLevel" as stored: a number, or a string counted by its leading integer.
    static int indentationLevelOf(const QVariant& value);

    /// The pop-up for `text`: "No Symbol selected" alone when there are no definitions;
    /// else that item, a separator and one item per definition, a definition titled "-"
    /// becoming a separator. The list ends at the first definition that lies beyond the
    /// text (the text changed since the list was made). The item titled like
    /// `previousTitle` (the first such) is selected.
    FunctionMenu(const std::optional<QVariantList>& definitions, QStringView text,
                 const QString& previousTitle = QString());

    const std::vector<Item>& items() const { return _items; }
    /// The index of the selected item; 0 ("No Symbol selected") unless the previous title
    /// came back.
    int selectedIndex() const { return _selectedIndex; }

    /// What choosing `item` selects: the whole lines its definition touches, line ends
    /// included. Not found for "No Symbol selected" and separators (the caret then goes
    /// to the start of the selection).
    static Range rangeToSelect(const Item& item, const TextSnapshot& text);
    /// The lines `range` touches, their line ends included: found from the text's line counts,
    /// without reading the text.
    static Range lineRangeForRange(const TextSnapshot& text, Range range);

private:
    FunctionMenu() = default;
    void addDefinitions(const std::vector<Definition>& definitions, TextSource& text,
                        const QString& previousTitle);

    std::vector<Item> _items;
    int _selectedIndex = 0;
};
