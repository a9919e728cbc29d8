#include "window/EncodingPopUp.h"

#include "document/EncodingManager.h"
#include "platform/StringEncoding.h"

#include <QComboBox>
#include <QStandardItemModel>

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
    const auto addEncoding = [&](quint64 encoding) {
        popUp->addItem(StringEncoding::localizedNameOfStringEncoding(encoding),
                       QVariant::fromValue(encoding));
        popUp->setItemData(popUp->count() - 1, 0, EncodingManager::TagRole);
        if (selectedEncoding == StringEncoding::NoEncoding) {
            if (withAutomaticMenu) {
                selection = 0;
            }
        } else if (selectedEncoding == encoding) {
            selection = popUp->count() - 1;
        }
    };
    for (const quint64 encoding : list) {
        if (encoding == EncodingManager::Separator) {
            popUp->insertSeparator(popUp->count());
        } else {
            addEncoding(encoding);
        }
    }
    Q_ASSERT(popUp->count() == list.size() + offset); // item indexes follow the list's
    // The other encodings follow under a heading of their own, as in the Encoding menu.
    popUp->insertSeparator(popUp->count());
    popUp->addItem(EncodingManager::otherEncodingsTitle());
    if (auto* model = qobject_cast<QStandardItemModel*>(popUp->model())) {
        model->item(popUp->count() - 1)->setEnabled(false);
    }
    for (const quint64 encoding : EncodingManager::otherEncodingList()) {
        if (encoding == EncodingManager::Separator) {
            popUp->insertSeparator(popUp->count());
        } else {
            addEncoding(encoding);
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
