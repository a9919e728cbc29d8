#pragma once

#include <QtGlobal>

/// What the application as a whole takes from the settings: how it starts and where the
/// documents it opens go.
struct ApplicationSettings {
    /// An untitled document when the editor starts with nothing to open.
    bool shouldOpenUntitledFile = false;
    /// New documents become tabs of one window.
    bool openDocumentsInTabs = false;
    /// The open panel's encoding; all ones for "Automatic".
    quint64 openDefaultsTextEncoding = 0;
    /// The shipped definitions and scripts are still to be installed.
    bool firstStartupApplication = false;

    bool operator==(const ApplicationSettings&) const = default;
};
