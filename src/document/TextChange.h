#pragma once

#include <QMetaType>
#include <QtGlobal>

/// One change of a text store's text, exactly: at `position`, `charsRemoved` units gave way
/// to `charsAdded` units. In lines: the old lines firstLine … firstLine + linesRemoved became
/// the new lines firstLine … firstLine + linesAdded (the line feeds removed and added); the
/// lines after them only moved.
struct TextChange {
    qsizetype position = 0;
    qsizetype charsRemoved = 0;
    qsizetype charsAdded = 0;
    qsizetype firstLine = 0;
    qsizetype linesRemoved = 0;
    qsizetype linesAdded = 0;
    /// The store's revision once the change is made.
    quint64 revision = 0;

    bool operator==(const TextChange&) const = default;
};

Q_DECLARE_METATYPE(TextChange)
