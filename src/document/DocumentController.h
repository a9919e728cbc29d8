#pragma once

#include <QObject>
#include <QStringList>

/// The application's one document controller: it sets the application up at start and
/// tells a document how it is being read.
class DocumentController : public QObject
{
    Q_OBJECT

public:
    static DocumentController& sharedDocumentController();

    /// The start-up set-up, run once when the application has started: autosave interval,
    /// the open panel's default encoding, the reading flags, the support folders, and
    /// either the first-start installation or the restoration of the script library.
    void awakeFromNib();

    /// Seconds between autosaves of a modified document that has a file.
    qint64 autosavingDelay() const { return _autosavingDelay; }
    quint64 openDefaultsTextEncoding() const { return _openDefaultsTextEncoding; }

    /// The encoding chosen in the open panel's pop-up when it was confirmed; all ones for
    /// "Automatic".
    quint64 openPanelEncoding() const { return _openPanelEncoding; }
    void setOpenPanelEncoding(quint64 encoding) { _openPanelEncoding = encoding; }
    bool isOpenPanel() const { return _isOpenPanel; }
    void setIsOpenPanel(bool value) { _isOpenPanel = value; }
    bool isRevertTo() const { return _isRevertTo; }
    void setIsRevertTo(bool value) { _isRevertTo = value; }
    bool isReopen() const { return _isReopen; }
    void setIsReopen(bool value) { _isReopen = value; }

    /// The syntax definitions that ship with the application, in installation order.
    static const QStringList& shippedSyntaxNames();
    /// The example scripts that ship with the application: the in-process group, then
    /// the shell group; names with their file extensions.
    static const QStringList& shippedInProcessScripts();
    static const QStringList& shippedShellScripts();

private:
    explicit DocumentController(QObject* parent = nullptr);
    void installShippedResources();

    qint64 _autosavingDelay = 0;
    quint64 _openDefaultsTextEncoding = 0;
    quint64 _openPanelEncoding = ~quint64(0);
    bool _isOpenPanel = false;
    bool _isRevertTo = false;
    bool _isReopen = false;
};
