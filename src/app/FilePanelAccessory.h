#pragma once

class QComboBox;
class QFileDialog;

/// The accessory of the open and save panels: the encoding pop-up, for saving the line-break
/// pop-up too, and "Hide extension". They go below the panel's own fields.
struct FilePanelAccessory {
    QComboBox* textEncodingPopUp = nullptr;
    QComboBox* lineBreakPopUp = nullptr;

    /// Adds the pop-ups to `panel`; none for a panel without a grid layout of its own.
    static FilePanelAccessory add(QFileDialog& panel, bool withLineBreaks);
    /// Adds "Hide extension", checked when `hidden`: the name field then shows the file's name
    /// without its extension, which the panel adds back when the name is confirmed without one.
    static void addHideExtensionBox(QFileDialog& panel, bool hidden);
};
