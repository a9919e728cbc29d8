#include "window/ReadingNotices.h"

#include "document/Document.h"
#include "window/DocumentWindow.h"

#include <QLocale>
#include <QStringList>

ReadingNotices::ReadingNotices(Document* document, DocumentWindow* window, QObject* parent)
    : QObject(parent)
    , _document(document)
    , _window(window)
{
    connect(document, &Document::contentsRead, this, &ReadingNotices::show);
    connect(document, &Document::documentInformationChanged, this,
            &ReadingNotices::updateLineBreaksBar);
    show();
}

void ReadingNotices::show()
{
    for (InformationBar* bar : {_nonTextBar.data(), _lineBreaksBar.data()}) {
        if (bar) {
            bar->dismiss();
        }
    }
    if (!_window) {
        return;
    }
    const QString name = _document->displayName();
    const NonTextReason reason = _document->nonTextReason();
    if (reason != NonTextReason::None && _document->isReadOnly()) {
        const QString why = reason == NonTextReason::NulCharacters
                                ? tr("“%1” does not look like a text file: it holds NUL bytes.")
                                : tr("“%1” does not look like a text file: it is largely made of "
                                     "control characters.");
        _nonTextBar = new InformationBar(
            InformationBar::Kind::Warning,
            why.arg(name) + u' ' +
                tr("It is open read-only, so that no stray key can change it. If you edit it "
                   "anyway, saving it converts none of its line breaks."));
        _nonTextBar->setObjectName(QStringLiteral("nonTextBar"));
        _nonTextBar->addButton(tr("Edit Anyway"), [this] { _document->editAnyway(); });
        _window->addInformationBar(_nonTextBar);
    }
    if (_document->lineBreaksAsRead().isMixed()) {
        _lineBreaksBar = new InformationBar(InformationBar::Kind::Information, QString());
        _lineBreaksBar->setObjectName(QStringLiteral("lineBreaksBar"));
        _window->addInformationBar(_lineBreaksBar);
        updateLineBreaksBar();
    }
}

void ReadingNotices::updateLineBreaksBar()
{
    if (!_lineBreaksBar) {
        return;
    }
    const LineBreakCounts counts = _document->lineBreaksAsRead();
    const QLocale locale;
    QStringList kinds;
    if (counts.lineFeeds > 0) {
        kinds << tr("%1 LF").arg(locale.toString(qlonglong(counts.lineFeeds)));
    }
    if (counts.carriageReturns > 0) {
        kinds << tr("%1 CR").arg(locale.toString(qlonglong(counts.carriageReturns)));
    }
    if (counts.carriageReturnLineFeeds > 0) {
        kinds << tr("%1 CRLF").arg(locale.toString(qlonglong(counts.carriageReturnLineFeeds)));
    }
    _lineBreaksBar->setMessage(
        tr("“%1” mixes line breaks of different kinds (%2). Saving will write every line break "
           "as %3, the style shown in the status line; Format ▸ Line Breaks chooses another.")
            .arg(_document->displayName(), kinds.join(QStringLiteral(", ")),
                 EncodingManager::lineBreaksStatusTitle(_document->documentLineBreaks())));
}
