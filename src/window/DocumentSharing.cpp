#include "window/DocumentSharing.h"

#include "document/Document.h"

#include <QAction>
#include <QDesktopServices>
#include <QIcon>
#include <QMenu>
#include <QMessageBox>

void DocumentSharing::makeSharingMenu(QMenu* menu)
{
    menu->clear();
    menu->setIcon(QIcon::fromTheme(QStringLiteral("document-send")));
    const auto add = [menu](const QString& title, const QString& icon, int tag) {
        QAction* item = menu->addAction(QIcon::fromTheme(icon), title);
        item->setProperty("tag", tag);
    };
    add(tr("Email"), QStringLiteral("mail-send"), 0);
    add(tr("Messages"), QStringLiteral("mail-message-new"), 1);
    menu->addSeparator();
    add(tr("Twitter"), QStringLiteral("internet-web-browser"), 2);
    add(tr("Facebook"), QStringLiteral("internet-web-browser"), 3);
    add(tr("Sina Weibo"), QStringLiteral("internet-web-browser"), 4);
}

QUrl DocumentSharing::sharingURL(int tag, const QString& subject, const QString& text)
{
    // E-mail goes to the user's mail program; the other services have web share addresses.
    static const char* const addresses[] = {"mailto:", "sms:", "https://twitter.com/intent/tweet",
                                            "https://www.facebook.com/sharer/sharer.php",
                                            "https://service.weibo.com/share/share.php"};
    static const char* const keys[] = {"body", "body", "text", "quote", "title"};
    if (tag < 0 || tag > 4) {
        return QUrl();
    }
    // Every character but the unreserved ones is percent-encoded, '+' and '&' included, so
    // no service reads a plus as a space or an ampersand as the end of the text.
    const auto item = [](const char* key, const QString& value) {
        return QString::fromLatin1(key) + u'=' +
               QString::fromLatin1(QUrl::toPercentEncoding(value));
    };
    QString query = item(keys[tag], text);
    if (tag == 0) {
        query = item("subject", subject) + u'&' + query;
    }
    QUrl url(QString::fromLatin1(addresses[tag]));
    url.setQuery(query, QUrl::StrictMode);
    return url;
}

void DocumentSharing::share(int tag, const Document& document, QWidget* window)
{
    // Mail and message programs take a text of some size through their address; web pages
    // only a short one.
    const QString text = document.string();
    const qsizetype limit = tag <= 1 ? 64 * 1024 : 4 * 1024;
    if (text.size() > limit) {
        QMessageBox alert(QMessageBox::Warning, QString(),
                          tr("The text is too long to share this way."), QMessageBox::Ok, window);
        alert.setInformativeText(tr("The whole text is shared, and this service takes at most %L1 "
                                    "characters. Send the file as an attachment instead.")
                                     .arg(limit));
        alert.setWindowModality(Qt::WindowModal);
        alert.exec();
        return;
    }
    QDesktopServices::openUrl(sharingURL(tag, document.displayName(), text));
}
