#include "window/EncodingPopUp.h"

#include "document/EncodingManager.h"
#include "platform/StringEncoding.h"

#include <QComboBox>

void EncodingPopUp::makeEncodingOfPopUpMenu(QComboBox* popUp, const QList<quint64>& list,
                                            quint64 selectedEncoding, bool withAutomaticMenu)
{
    popUp->clear();
    const int offset = withAutomaticMenu ? 2 : 0;
    if (withAutomaticMenu) {
        popUp->addItem(QStringLiteral("Automatic"),
                       QVariant::fromValue(StringEncoding::NoEncoding));
        popUp->setItemData(0, -1, EncodingManager::TagRole);
        popUp->insertSeparator(1);
    }
    int selection = -1;
    for (qsizetype i = 0; i < list.size(); ++i) {
        const quint64 encoding = list[i];
        if (encoding == EncodingManager::Separator) {
            popUp->insertSeparator(popUp->count());
            continue;
        }
        popUp->addItem(StringEncoding::localizedNameOfStringEncoding(encoding),
                       QVariant::fromValue(encoding));
        popUp->setItemData(popUp->count() - 1, 0, EncodingManager::TagRole);
        if (selectedEncoding == StringEncoding::NoEncoding) {
            if (withAutomaticMenu) {
                selection = 0;
            }
        } else if (selectedEncoding == encoding) {
            selection = int(i) + offset;
        }
    }
    if (selection >= 0) {
        popUp->setCurrentIndex(selection);
    } else if (popUp->count() > 0) {
        popUp->setCurrentIndex(0);
    }
}

void EncodingPopUp::makeLineBreaksOfPopUpMenu(QComboBox* popUp, qsizetype selectLineBreaks)
{
    popUp->clear();
    for (int style = 0; style < 3; ++style) {
        popUp->addItem(EncodingManager::lineBreaksLongTitle(style), style);
        popUp->setItemData(style, style, EncodingManager::TagRole);
    }
    popUp->setCurrentIndex(selectLineBreaks >= 0 && selectLineBreaks < 3 ? int(selectLineBreaks)
                                                                         : -1);
}
