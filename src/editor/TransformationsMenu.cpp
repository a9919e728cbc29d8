#include "editor/TransformationsMenu.h"

#include "editor/TextView.h"

#include <QCoreApplication>
#include <QMenu>

namespace {

struct Item {
    const char* title;
    void (TextView::*command)(QObject*);
};

// A null title is a separator.
const Item kItems[] = {
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange to Entity Reference"),
     &TextView::exchangeToEntityReference},
    {nullptr, nullptr},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange to Upper Case"), &TextView::uppercaseWord},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange to Lower Case"), &TextView::lowercaseWord},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange to Capitalize"), &TextView::capitalizeWord},
    {nullptr, nullptr},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange to Fullwidth"),
     &TextView::exchangeToFullwidth},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange to Halfwidth"),
     &TextView::exchangeToHalfwidth},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange Hiragana to Katakana"),
     &TextView::exchangeHiraganaToKatakana},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange Hiragana to Latin"),
     &TextView::exchangeHiraganaToLatin},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange Katakana to Hiragana"),
     &TextView::exchangeKatakanaToHiragana},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange Katakana to Latin"),
     &TextView::exchangeKatakanaToLatin},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange Latin to Hiragana"),
     &TextView::exchangeLatinToHiragana},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange Latin to Katakana"),
     &TextView::exchangeLatinToKatakana},
    {nullptr, nullptr},
    {QT_TRANSLATE_NOOP("TransformationsMenu", "Exchange Mandarin to Pingyin"),
     &TextView::exchangeMandarinToPingyin},
};

} // namespace

void TransformationsMenu::addItems(QMenu* menu, const std::function<TextView*()>& target)
{
    menu->setTitle(QMenu::tr("Transformations"));
    for (const Item& item : kItems) {
        if (!item.title) {
            menu->addSeparator();
            continue;
        }
        const auto command = item.command;
        menu->addAction(QCoreApplication::translate("TransformationsMenu", item.title), menu,
                        [target, command] {
                            if (TextView* view = target()) {
                                (view->*command)(view);
                            }
                        });
    }
}
