#include "window/FunctionPopUp.h"

#include "document/TextMirror.h"
#include "editor/FindIndicator.h"
#include "editor/TextView.h"
#include "window/FunctionPopUpDefinitions.h"
#include "window/FunctionPopUpModel.h"

#include <QApplication>
#include <QFontDatabase>
#include <QHash>
#include <QListView>
#include <QPainter>
#include <QPainterPath>
#include <QPointer>
#include <QProxyStyle>
#include <QStandardItemModel>
#include <QStyleOptionComboBox>
#include <QStyleOptionViewItem>
#include <QStyledItemDelegate>

#include <algorithm>
#include <functional>

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

// The list drops down under the pop-up with a few rows and a scroll bar. A style that
// pops the list up over the pop-up sizes it to all of its rows first, measuring every title:
// seconds for the tens of thousands of definitions of a large file.
class DropDownStyle : public QProxyStyle
{
public:
    using QProxyStyle::QProxyStyle;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returnData) const override
    {
        if (hint == QStyle::SH_ComboBox_Popup) {
            return 0;
        }
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

} // namespace

FunctionPopUp::FunctionPopUp(QWidget* parent)
    : QComboBox(parent)
    , _model(new FunctionPopUpModel(this))
{
    auto* style = new DropDownStyle;
    style->setParent(this);
    setStyle(style);
    setModel(_model);
    setItemDelegate(new FunctionItemDelegate(this));
    // Rows of one height: the list lays out a long list without asking each row.
    if (auto* list = qobject_cast<QListView*>(view())) {
        list->setUniformItemSizes(true);
    }
    setMaxVisibleItems(20);
    setIconSize(QSize(14, 14));
    setFunctionMenu(FunctionMenu(std::nullopt, QString()));
    connect(this, &QComboBox::currentIndexChanged, this, &QWidget::updateGeometry);
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
    _model->setItems(menu.items());
    setCurrentIndex(menu.selectedIndex());
    // Wide enough for the longest titles; measuring them all would take as long as the
    // rest of the opening.
    std::vector<std::pair<qsizetype, int>> lengths;
    lengths.reserve(menu.items().size());
    for (size_t i = 0; i < menu.items().size(); ++i) {
        lengths.push_back({menu.items()[i].title.size(), int(i)});
    }
    const size_t measured = std::min<size_t>(lengths.size(), 64);
    std::partial_sort(lengths.begin(), lengths.begin() + qsizetype(measured), lengths.end(),
                      std::greater<>());
    int width = 0;
    for (size_t k = 0; k < measured; ++k) {
        const QModelIndex index = _model->index(lengths[k].second);
        QStyleOptionViewItem option;
        option.initFrom(view());
        option.font = view()->font();
        option.decorationSize = iconSize();
        option.features |= QStyleOptionViewItem::HasDecoration;
        width = std::max(width, itemDelegate()->sizeHint(option, index).width());
    }
    view()->setMinimumWidth(std::min(width + 24, 900));
}

void FunctionPopUp::reduceToItem(int index)
{
    if (index < 0 || index >= count()) {
        return;
    }
    const FunctionMenu::Item& chosen = _model->items()[size_t(index)];
    FunctionMenu::Item item;
    item.title = chosen.title;
    item.hasKind = chosen.hasKind;
    item.kind = chosen.kind;
    item.rangeString = chosen.rangeString;
    _model->setItems({item});
    setCurrentIndex(0);
}

void FunctionPopUp::updateFunctionDefinitionList(TextView* textView)
{
    if (!textView) {
        return;
    }
    // While the list says it is reading, the title chosen before is the one to keep.
    if (!_model->isNotice()) {
        _chosenTitle = currentText();
    }
    const QString previous = _chosenTitle;
    FunctionPopUpDefinitions* definitions = definitionsOf(textView);
    if (!definitions) {
        setFunctionMenu(FunctionMenu(std::nullopt, QString()));
        return;
    }
    disconnect(_whenRead);
    if (!definitions->isReady()) {
        // A large text is read on a worker: rather than hold the window still until it is
        // done, the list opens at once saying so, and opens again with the definitions.
        definitions->readNow();
        _model->setNotice(tr("Reading…"));
        setCurrentIndex(0);
        _whenRead = connect(definitions, &FunctionPopUpDefinitions::ready, this,
                            [this, textView = QPointer<TextView>(textView)] {
                                disconnect(_whenRead);
                                if (!textView) {
                                    return;
                                }
                                if (view()->isVisible()) {
                                    hidePopup();
                                    showPopup();
                                } else {
                                    updateFunctionDefinitionList(textView);
                                }
                            });
        return;
    }
    setFunctionMenu(FunctionMenu::fromDefinitions(
        definitions->definitions(), *TextMirror::mirrorOfStore(textView->textStore()), previous));
}

void FunctionPopUp::prepareFunctionDefinitions(TextView* textView)
{
    if (textView) {
        definitionsOf(textView);
    }
}

FunctionPopUpDefinitions* FunctionPopUp::definitionsOf(TextView* textView)
{
    const QVariantMap& dictionary = textView->syntaxDictionary();
    if (dictionary.isEmpty()) {
        delete _definitions;
        _definitions = nullptr;
        return nullptr;
    }
    if (!_definitions || !_definitions->serves(textView->textStore(), dictionary)) {
        delete _definitions;
        _definitions = new FunctionPopUpDefinitions(textView->textStore(), dictionary, this);
    }
    return _definitions;
}

void FunctionPopUp::selectedFunctionDefinitionItem(TextView* textView, int index)
{
    if (!textView || index < 0 || index >= count()) {
        return;
    }
    // Typing goes on in the text, not in the pop-up.
    textView->setFocus(Qt::OtherFocusReason);
    if (itemText(index) == FunctionMenu::noSymbolTitle()) {
        textView->setSelectedRange({textView->selectedRange().location, 0});
        return;
    }
    const Range range = FunctionMenu::lineRangeForRange(
        TextMirror::mirrorOfStore(textView->textStore())->snapshot(),
        NSRangeFromString(itemData(index, RangeStringRole).toString()));
    // The end first, then back to the start: the view scrolls to the definition's first line.
    textView->setSelection(range.max(), range.location);
    textView->ensureCursorVisible();
    FindIndicator::showFindIndicatorForRange(textView, range);
    reduceToItem(index);
}

QSize FunctionPopUp::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    const int characterWidth = metrics.horizontalAdvance(QLatin1Char('x'));
    const int textWidth = std::max(metrics.horizontalAdvance(currentText()),
                                   minimumContentsLength() * characterWidth);
    const QSize contents(textWidth + iconSize().width() + 4,
                         std::max({metrics.height(), iconSize().height(), 14}) + 2);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    return style()->sizeFromContents(QStyle::CT_ComboBox, &option, contents, this);
}

QSize FunctionPopUp::minimumSizeHint() const
{
    return sizeHint();
}

void FunctionPopUp::showPopup()
{
    Q_EMIT willPopUp();
    QComboBox::showPopup();
}
