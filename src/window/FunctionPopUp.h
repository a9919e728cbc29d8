#pragma once

#include "syntax/FunctionMenu.h"

#include <QComboBox>
#include <QIcon>

class FunctionPopUpDefinitions;
class FunctionPopUpModel;
class TextView;

/// The window's function pop-up: shows the items of a FunctionMenu (bold titles,
/// indentation, separators, the image of each kind) and says when it is about to open, so
/// that the list is built then and not on every keystroke.
class FunctionPopUp : public QComboBox
{
    Q_OBJECT

public:
    /// The role holding an item's range in the platform's range notation.
    static constexpr int RangeStringRole = Qt::UserRole + 1;
    /// The role holding an item's indentation level.
    static constexpr int IndentationRole = Qt::UserRole + 2;

    explicit FunctionPopUp(QWidget* parent = nullptr);

    /// The image shown before the items of `kind`; a null icon for an unknown kind.
    static QIcon imageForKind(FunctionMenu::Kind kind);

    /// Replaces the items by `menu`'s and selects its selected item.
    void setFunctionMenu(const FunctionMenu& menu);
    /// Leaves only the item at `index` (its title and image), selected.
    void reduceToItem(int index);

    /// Rebuilds the list from `textView`'s text, keeping the selected title selected.
    void updateFunctionDefinitionList(TextView* textView);
    /// Starts reading the definitions of `textView`'s text by its syntax definition, so that
    /// the list is at hand when the pop-up opens; the list then follows the edits.
    void prepareFunctionDefinitions(TextView* textView);
    /// Chooses the item at `index` for `textView`: selects the whole lines of its
    /// definition, scrolls to them and flashes them, and leaves the item alone in the list.
    /// "No Symbol selected" takes the caret to the start of the selection.
    void selectedFunctionDefinitionItem(TextView* textView, int index);

    void showPopup() override;
    /// As wide as the title shown, with room for its image, and never narrower than the
    /// minimum contents length: not as wide as the longest of all the titles, which takes
    /// measuring each of the tens of thousands of a large file.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// Sent just before the list opens.
    void willPopUp();

private:
    /// The definitions of the text of `textView` by its definition, made on first request.
    FunctionPopUpDefinitions* definitionsOf(TextView* textView);

    FunctionPopUpModel* _model;
    /// Opens the list again once a large text's definitions are read.
    QMetaObject::Connection _whenRead;
    QString _chosenTitle;
    FunctionPopUpDefinitions* _definitions = nullptr;
};
