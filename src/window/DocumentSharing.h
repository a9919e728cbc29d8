#pragma once

#include <QCoreApplication>
#include <QString>
#include <QUrl>

class Document;
class QMenu;
class QWidget;

/// Sharing a document's whole text: by e-mail (tag 0), message (1) or through the web share
/// address of Twitter (2), Facebook (3) or Sina Weibo (4).
class DocumentSharing
{
    Q_DECLARE_TR_FUNCTIONS(DocumentSharing)

public:
    /// Fills the sharing menu with those services: e-mail, messages, a separator, then the web
    /// services, each item with its tag.
    static void makeSharingMenu(QMenu* menu);
    /// The address that hands `text` to the sharing service of `tag`.
    static QUrl sharingURL(int tag, const QString& subject, const QString& text);
    /// Hands the whole text of `document` to the service of `tag`; a text too long for the
    /// service is refused with a message over `window`.
    static void share(int tag, const Document& document, QWidget* window);
};
