#include "window/FunctionPopUp.h"

#include "editor/FindIndicator.h"
#include "editor/TextMirror.h"
#include "editor/TextView.h"

#include <QFontDatabase>
#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QStandardItemModel>
#include <QStyledItemDelegate>

namespace {

constexpr int IndentationWidth = 12;

// Draws separators as lines and indents items by their level; the rest is the style's.
class FunctionItemDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override
    {
        if (isSeparator(index)) {
            const int y = option.rect.center().y();
            painter->save();
            painter->setPen(QColor(0, 0, 0, 70));
            painter->drawLine(option.rect.left() + 4, y, option.rect.right() - 4, y);
            painter->restore();
            return;
        }
        QStyleOptionViewItem indented = option;
        const int level = std::max(0, index.data(FunctionPopUp::IndentationRole).toInt());
        indented.rect.adjust(level * IndentationWidth, 0, 0, 0);
        QStyledItemDelegate::paint(painter, indented, index);
    }

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        if (isSeparator(index)) {
            return {10, 7};
        }
        QSize size = QStyledItemDelegate::sizeHint(option, index);
        size.rwidth() +=
            std::max(0, index.data(FunctionPopUp::IndentationRole).toInt()) * IndentationWidth;
        return size;
    }

private:
    static bool isSeparator(const QModelIndex& index)
    {
        return index.data(Qt::AccessibleDescriptionRole).toString() == u"separator";
    }
};

struct KindStyle {
    QChar letter;
    QColor color;
};

KindStyle styleOfKind(FunctionMenu::Kind kind)
{
    using Kind = FunctionMenu::Kind;
    switch (kind) {
    case Kind::None:
        return {u'•', QColor(128, 128, 128)};
    case Kind::Class:
        return {u'C', QColor(142, 68, 173)};
    case Kind::Category:
        return {u'G', QColor(155, 89, 182)};
    case Kind::Event:
        return {u'E', QColor(211, 84, 0)};
    case Kind::Function:
        return {u'F', QColor(41, 128, 185)};
    case Kind::Method:
        return {u'M', QColor(22, 160, 133)};
    case Kind::Macro:
        return {u'#', QColor(192, 57, 43)};
    case Kind::Property:
        return {u'P', QColor(39, 174, 96)};
    case Kind::Script:
        return {u'S', QColor(243, 156, 18)};
    case Kind::Type:
        return {u'T', QColor(52, 73, 94)};
    case Kind::Constant:
        return {u'K', QColor(127, 140, 141)};
    case Kind::Unknown:
        break;
    }
    return {QChar(), QColor()};
}

} // namespace

FunctionPopUp::FunctionPopUp(QWidget* parent)
    : QComboBox(parent)
{
    setItemDelegate(new FunctionItemDelegate(this));
    setIconSize(QSize(14, 14));
    addItem(FunctionMenu::noSymbolTitle());
}

QIcon FunctionPopUp::imageForKind(FunctionMenu::Kind kind)
{
    static QHash<int, QIcon> images;
    const auto found = images.constFind(int(kind));
    if (found != images.cend()) {
        return *found;
    }
    const KindStyle style = styleOfKind(kind);
    QIcon icon;
    if (!style.letter.isNull()) {
        for (const int size : {14, 28}) {
            QPixmap image(size, size);
            image.fill(Qt::transparent);
            QPainter painter(&image);
            painter.setRenderHint(QPainter::Antialiasing);
            QPainterPath shape;
            const QRectF box(0.5, 0.5, size - 1.0, size - 1.0);
            shape.addRoundedRect(box, size / 4.0, size / 4.0);
            painter.fillPath(shape, style.color);
            painter.setPen(style.color.darker(130));
            painter.drawPath(shape);
            QFont font = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
            font.setBold(true);
            font.setPixelSize(size * 10 / 14);
            painter.setFont(font);
            painter.setPen(Qt::white);
            painter.drawText(box, Qt::AlignCenter, QString(style.letter));
            painter.end();
            icon.addPixmap(image);
        }
    }
    images.insert(int(kind), icon);
    return icon;
}

void FunctionPopUp::setFunctionMenu(const FunctionMenu& menu)
{
    clear();
    QFont bold = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    bold.setBold(true);
    bold.setPixelSize(11);
    for (const FunctionMenu::Item& item : menu.items()) {
        if (item.isSeparator) {
            insertSeparator(count());
            continue;
        }
        addItem(item.hasKind ? imageForKind(item.kind) : QIcon(), item.title);
        const int index = count() - 1;
        if (item.bold) {
            setItemData(index, bold, Qt::FontRole);
        }
        if (!item.rangeString.isEmpty()) {
            setItemData(index, item.rangeString, RangeStringRole);
        }
        setItemData(index, item.indentationLevel, IndentationRole);
    }
    setCurrentIndex(menu.selectedIndex());
}

void FunctionPopUp::reduceToItem(int index)
{
    if (index < 0 || index >= count()) {
        return;
    }
    const QString title = itemText(index);
    const QIcon image = itemIcon(index);
    const QVariant range = itemData(index, RangeStringRole);
    clear();
    addItem(image, title);
    setItemData(0, range, RangeStringRole);
    setCurrentIndex(0);
}

void FunctionPopUp::updateFunctionDefinitionList(TextView* textView)
{
    if (!textView) {
        return;
    }
    const QString previous = currentText();
    const std::optional<QVariantList> definitions = textView->makeFunctionDefinition();
    const QString text =
        definitions ? TextMirror::mirrorOfDocument(textView->document())->string() : QString();
    setFunctionMenu(FunctionMenu(definitions, text, previous));
}

void FunctionPopUp::selectedFunctionDefinitionItem(TextView* textView, int index)
{
    if (!textView || index < 0 || index >= count()) {
        return;
    }
    // Typing goes on in the text, not in the pop-up.
    textView->setFocus(Qt::OtherFocusReason);
    QTextCursor cursor = textView->textCursor();
    if (itemText(index) == FunctionMenu::noSymbolTitle()) {
        cursor.setPosition(cursor.selectionStart());
        textView->setTextCursor(cursor);
        return;
    }
    const QString& text = TextMirror::mirrorOfDocument(textView->document())->string();
    const Range range = FunctionMenu::lineRangeForRange(
        text, NSRangeFromString(itemData(index, RangeStringRole).toString()));
    // The end first, then back to the start: the view scrolls to the definition's first line.
    cursor.setPosition(int(range.max()));
    cursor.setPosition(int(range.location), QTextCursor::KeepAnchor);
    textView->setTextCursor(cursor);
    textView->ensureCursorVisible();
    FindIndicator::showFindIndicatorForRange(textView, range);
    reduceToItem(index);
}

void FunctionPopUp::showPopup()
{
    Q_EMIT willPopUp();
    QComboBox::showPopup();
}
