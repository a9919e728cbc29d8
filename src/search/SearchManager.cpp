#include "search/SearchManager.h"

#include "document/Document.h"
#include "editor/FindIndicator.h"
#include "editor/LayoutManager.h"
#include "editor/TextView.h"
#include "platform/SharedInstance.h"
#include "search/SearchEngine.h"

#include <QGuiApplication>
#include <QPalette>
#include <QTimer>

namespace {

const QString kPlainLabel = QStringLiteral("Find String :");
const QString kRegularExpressionLabel = QStringLiteral("ICU-comaptible :");

/// `color` moved halfway toward white.
QColor highlightWithLevel(const QColor& color, qreal level)
{
    const QColor rgb = color.toRgb();
    return QColor::fromRgbF(float(rgb.redF() + (1 - rgb.redF()) * level),
                            float(rgb.greenF() + (1 - rgb.greenF()) * level),
                            float(rgb.blueF() + (1 - rgb.blueF()) * level), rgb.alphaF());
}

/// Paints `ranges` over what the background layer already holds.
void paintRanges(LayoutManager* layoutManager, const std::vector<Range>& ranges,
                 const QColor& color)
{
    if (!layoutManager->hasBackgroundHighlights()) {
        layoutManager->setBackgroundHighlights(QList<Range>(ranges.begin(), ranges.end()), color);
        return;
    }
    for (const Range& range : ranges) {
        layoutManager->addBackgroundHighlight(color, range);
    }
}

} // namespace

SearchManager& SearchManager::sharedSearchManager()
{
    return SharedInstance<SearchManager>::object();
}

SearchManager::SearchManager(const SearchSettings& settings)
    : _replaceAndFindNext(settings.replaceAndFindNext)
    , _replaceAll(settings.replaceAll)
    , _caseSensitive(settings.caseSensitive)
    , _regularExpressions(settings.regularExpression)
    , _previous(settings.previous)
    , _wholeWord(settings.wholeWord)
    , _allowMultiLine(settings.allowMultiLine)
{
    _selectColor = QColor::fromRgbF(0.4f, 0.8f, 1.0f, 0.2f);
    _cacheExpiry = new QTimer(this);
    _cacheExpiry->setSingleShot(true);
    _cacheExpiry->setInterval(5000);
    connect(_cacheExpiry, &QTimer::timeout, this, [this] {
        _cachedText = QString();
        _cachedTextIsCurrent = false;
    });
}

void SearchManager::searchTextFieldDidChange(const QString& searchString,
                                             const QString& replaceString)
{
    _searchString = searchString;
    _replaceString = replaceString;
}

void SearchManager::setOption(bool& option, bool value)
{
    if (option != value) {
        option = value;
        Q_EMIT optionsChanged();
    }
}

void SearchManager::followHighlights(LayoutManager* layoutManager)
{
    _highlightedDocument = layoutManager->document();
    connect(layoutManager, &LayoutManager::backgroundHighlightsRemoved, this,
            &SearchManager::highlightsRemoved, Qt::UniqueConnection);
}

void SearchManager::highlightsRemoved()
{
    // Another window's highlights, left from an earlier search, say nothing of this one's.
    const auto* layoutManager = qobject_cast<const LayoutManager*>(sender());
    if (layoutManager && layoutManager->document() != _highlightedDocument) {
        return;
    }
    // Nothing is highlighted to replace any more, and the next search paints again.
    _backgroundHighlight = false;
    _paintedDocument = nullptr;
    _paintedRevision = -1;
}

QString SearchManager::findLabel() const
{
    return _regularExpressions ? kRegularExpressionLabel : kPlainLabel;
}

QColor SearchManager::highlightColor()
{
    return highlightWithLevel(
        QGuiApplication::palette().color(QPalette::Active, QPalette::Highlight), 0.5);
}

QString SearchManager::textOf(Document* document)
{
    if (document != _cachedDocument) {
        disconnect(_cachedTextChanged);
        _cachedDocument = document;
        _cachedTextIsCurrent = false;
        _cachedTextChanged = connect(document, &Document::contentsChange, this,
                                     [this] { _cachedTextIsCurrent = false; });
    }
    if (!_cachedTextIsCurrent) {
        _cachedText = QString(); // not two copies at once
        _cachedText = document->storedText();
        _cachedTextIsCurrent = true;
    }
    _cacheExpiry->start();
    return _cachedText;
}

// Occurrences --------------------------------------------------------------------------

std::vector<Range> SearchManager::findAllString(const QString& string, const QString& findString,
                                                bool caseSensitive)
{
    return SearchEngine::findAllString(string, findString, caseSensitive);
}

std::vector<Range> SearchManager::findRegularExpressionOfAllString(const QString& string,
                                                                   const QString& pattarn,
                                                                   bool caseSensitive,
                                                                   bool multiLine)
{
    return SearchEngine::findRegularExpressionOfAllString(string, pattarn, caseSensitive,
                                                          multiLine);
}

Range SearchManager::selectedMatchingRange(const std::vector<Range>& ranges, Range selectRange,
                                           bool previous, QStringView allString)
{
    return SearchEngine::selectedMatchingRange(ranges, selectRange, previous, allString);
}

QString SearchManager::searchString(const QString& searchString, bool previous,
                                    LayoutManager* layoutManager)
{
    TextView* textView = layoutManager ? layoutManager->firstTextView() : nullptr;
    Document* document = layoutManager ? layoutManager->document() : nullptr;
    if (!textView || !document) {
        return findLabel();
    }
    const QString text = textOf(document);
    std::vector<Range> ranges;
    QString label;
    if (_regularExpressions) {
        ranges = SearchEngine::findRegularExpressionOfAllString(text, searchString, _caseSensitive,
                                                                _allowMultiLine, _wholeWord);
        label = QStringLiteral("ICU-comaptible : %1 Matches").arg(qint64(ranges.size()));
    } else {
        ranges = SearchEngine::findAllString(text, searchString, _caseSensitive, _wholeWord);
        label = QStringLiteral("Find String : %1 Matches").arg(qint64(ranges.size()));
    }
    const bool painted = _backgroundHighlight && _paintedDocument == document &&
                         _paintedRevision == document->revision() && ranges == _searchMatchesList &&
                         layoutManager->hasBackgroundHighlights();
    _searchMatchesList = std::move(ranges);
    if (_searchMatchesList.empty()) {
        return label;
    }
    if (!painted) {
        paintRanges(layoutManager, _searchMatchesList, highlightColor());
        followHighlights(layoutManager);
        _paintedDocument = document;
        _paintedRevision = document->revision();
    }
    _backgroundHighlight = true;
    const Range chosen =
        selectedMatchingRange(_searchMatchesList, textView->selectedRange(), previous, text);
    if (!chosen.isNotFound()) {
        textView->setSelectedRange(chosen);
        textView->ensureCursorVisible();
        FindIndicator::showFindIndicatorForRange(textView, chosen);
    }
    return label;
}

QString SearchManager::findStringWithLayoutManager(LayoutManager* layoutManager)
{
    if (layoutManager) {
        layoutManager->removeBackgroundHighlights();
    }
    _backgroundHighlight = false;
    if (_searchString.isEmpty()) {
        return findLabel();
    }
    return searchString(_searchString, _previous, layoutManager);
}

QString SearchManager::findNextWithLayoutManager(LayoutManager* layoutManager)
{
    return _searchString.isEmpty() ? findLabel()
                                   : searchString(_searchString, false, layoutManager);
}

QString SearchManager::findPreviousWithLayoutManager(LayoutManager* layoutManager)
{
    return _searchString.isEmpty() ? findLabel() : searchString(_searchString, true, layoutManager);
}

// Replacing ----------------------------------------------------------------------------

void SearchManager::replacingString(const QString& replaceString, LayoutManager* layoutManager)
{
    TextView* textView = layoutManager ? layoutManager->firstTextView() : nullptr;
    Document* document = layoutManager ? layoutManager->document() : nullptr;
    if (!_backgroundHighlight || !textView || !document) {
        return;
    }
    const Range selection = textView->selectedRange();
    const bool wasReplacing = std::exchange(_isReplacing, true);
    document->replaceRanges({selection}, replaceString, QStringLiteral("Replace"));
    _isReplacing = wasReplacing;
    textView->setSelectedRange({selection.location, replaceString.size()});
}

void SearchManager::replacingAllStringWithLayoutManager(LayoutManager* layoutManager)
{
    Document* document = layoutManager ? layoutManager->document() : nullptr;
    if (!_backgroundHighlight || !document) {
        return;
    }
    const bool wasReplacing = std::exchange(_isReplacing, true);
    document->replaceRanges(_searchMatchesList, _replaceString, QStringLiteral("Replace All"));
    _isReplacing = wasReplacing;
    _backgroundHighlight = false;
}

QString SearchManager::replaceStringWithLayoutManager(LayoutManager* layoutManager)
{
    if (_replaceAll) {
        replacingAllStringWithLayoutManager(layoutManager);
    } else {
        replacingString(_replaceString, layoutManager);
    }
    if (_searchString.isEmpty() || _replaceAll) {
        return findLabel();
    }
    if (_replaceAndFindNext) {
        return searchString(_searchString, _previous, layoutManager);
    }
    return QString();
}

QString SearchManager::replaceAndFindNextWithLayoutManager(LayoutManager* layoutManager)
{
    replacingString(_replaceString, layoutManager);
    return _searchString.isEmpty() ? findLabel()
                                   : searchString(_searchString, false, layoutManager);
}

QString SearchManager::replaceAndFindPreviousWithLayoutManager(LayoutManager* layoutManager)
{
    replacingString(_replaceString, layoutManager);
    return _searchString.isEmpty() ? findLabel() : searchString(_searchString, true, layoutManager);
}

// Go to line ---------------------------------------------------------------------------

void SearchManager::gotoTextFieldDidChange(const QString& gotoString)
{
    _gotoString = gotoString;
    _gotoPosition = 0;
}

bool SearchManager::parseLineDescription(const QString& component, qint64* fromLineSpec,
                                         qint64* toLineSpec, qint64* relative)
{
    return SearchEngine::parseLineDescription(component, fromLineSpec, toLineSpec, relative);
}

bool SearchManager::getRange(Range* range, TextView* textView, qint64 fromLineSpec,
                             qint64 toLineSpec, qint64 relative)
{
    Document* document = textView ? textView->layoutManager()->document() : nullptr;
    if (!document) {
        return false;
    }
    return SearchEngine::getRange(range, sharedSearchManager().textOf(document),
                                  textView->selectedRange(), fromLineSpec, toLineSpec, relative);
}

Range SearchManager::selectLinesUsingDescription(const QString& component,
                                                 LayoutManager* layoutManager)
{
    TextView* textView = layoutManager ? layoutManager->firstTextView() : nullptr;
    Document* document = layoutManager ? layoutManager->document() : nullptr;
    if (!textView || !document) {
        return Range::notFound();
    }
    layoutManager->removeBackgroundHighlights();
    return SearchEngine::selectLinesUsingDescription(component, textOf(document),
                                                     textView->selectedRange());
}

void SearchManager::gotoLine(TextView* textView)
{
    LayoutManager* layoutManager = textView ? textView->layoutManager() : nullptr;
    Document* document = layoutManager ? layoutManager->document() : nullptr;
    if (!document) {
        return;
    }
    const QColor color = highlightWithLevel(_selectColor, 0.5);
    _gotoRangePosition.clear();
    if (_gotoString == u"start") {
        textView->scrollRangeToVisible({0, 0});
        return;
    }
    if (_gotoString == u"end") {
        textView->scrollRangeToVisible({document->length(), 0});
        return;
    }
    layoutManager->removeBackgroundHighlights();
    const QString text = textOf(document);
    const Range selection = textView->selectedRange();
    for (const QString& component : _gotoString.split(u':')) {
        _gotoRangePosition.push_back(
            SearchEngine::selectLinesUsingDescription(component, text, selection));
    }

    // A component that names no line is neither painted nor stepped to.
    std::vector<Range> named;
    std::copy_if(_gotoRangePosition.begin(), _gotoRangePosition.end(), std::back_inserter(named),
                 [](const Range& range) { return !range.isNotFound(); });
    const qsizetype n = qsizetype(_gotoRangePosition.size());
    if (named.empty()) {
        return;
    }
    layoutManager->setBackgroundHighlights(QList<Range>(named.begin(), named.end()), color);
    followHighlights(layoutManager);
    _backgroundHighlight = true;

    qsizetype shown = _gotoPosition < n ? _gotoPosition : 0;
    while (_gotoRangePosition[size_t(shown)].isNotFound()) {
        shown = (shown + 1) % n;
    }
    const Range range = _gotoRangePosition[size_t(shown)];
    textView->scrollRangeToVisible(range);
    FindIndicator::showFindIndicatorForRange(textView, range);
    if (n > 1) {
        _gotoPosition = shown + 1 > n - 1 ? 0 : shown + 1;
    }
}
