#pragma once

#include <QList>
#include <QtGlobal>

class QComboBox;

/// The pop-ups that offer encodings and line-break styles: in the open and save panels and
/// in the preferences. Each item carries its encoding or style as its data
/// (EncodingManager::RepresentedObjectRole) and its tag (EncodingManager::TagRole).
class EncodingPopUp
{
public:
    /// Refills `popUp` with `encodingList` (EncodingManager::encodingList()), optionally
    /// headed by "Automatic", and selects `selectedEncoding` (all ones selects "Automatic").
    static void makeEncodingOfPopUpMenu(QComboBox* popUp, const QList<quint64>& encodingList,
                                        quint64 selectedEncoding, bool withAutomaticMenu);
    /// Refills `popUp` with the three styles (tags 0, 1, 2) and selects `selectLineBreaks`;
    /// a style outside 0…2 leaves no item selected.
    static void makeLineBreaksOfPopUpMenu(QComboBox* popUp, qsizetype selectLineBreaks);
};
