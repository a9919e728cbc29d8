#pragma once

#include "platform/Range.h"
#include "platform/SearchSettings.h"

#include <QColor>
#include <QObject>
#include <QPointer>
#include <QString>

#include <vector>

class Document;
class LayoutManager;
class QTimer;
class TextView;

/// The application's one search engine. It keeps the search and replacement strings and
/// the option flags that every window shares, finds and highlights occurrences in a pane's
/// text, selects the next or previous one, replaces one or all, and carries the go-to
/// state. Every operation on text takes a layout manager and acts on its first text view.
class SearchManager : public QObject
{
    Q_OBJECT

public:
    static SearchManager& sharedSearchManager();

    /// Starts with the options of `settings`.
    explicit SearchManager(const SearchSettings& settings = {});

    // Strings and flags shared by every window.
    void searchTextFieldDidChange(const QString& searchString, const QString& replaceString);
    QString searchString() const { return _searchString; }
    QString replaceString() const { return _replaceString; }
    const std::vector<Range>& searchMatchesList() const { return _searchMatchesList; }
    bool replaceAndFindNext() const { return _replaceAndFindNext; }
    void setReplaceAndFindNext(bool value) { setOption(_replaceAndFindNext, value); }
    bool replaceAll() const { return _replaceAll; }
    void setReplaceAll(bool value) { setOption(_replaceAll, value); }
    bool caseSensitive() const { return _caseSensitive; }
    void setCaseSensitive(bool value) { setOption(_caseSensitive, value); }
    bool regularExpressions() const { return _regularExpressions; }
    void setRegularExpressions(bool value) { setOption(_regularExpressions, value); }
    bool previous() const { return _previous; }
    void setPrevious(bool value) { setOption(_previous, value); }
    /// Only occurrences that cut no word in two count, in both modes.
    bool wholeWord() const { return _wholeWord; }
    void setWholeWord(bool value) { setOption(_wholeWord, value); }
    /// Some text carries the engine's background colour.
    bool backgroundHighlight() const { return _backgroundHighlight; }
    void setBackgroundHighlight(bool value) { _backgroundHighlight = value; }
    /// True while the engine itself is changing a text, so that the window does not take
    /// its replacements for the user's edits.
    bool isReplacing() const { return _isReplacing; }

    /// The label without a count for the current mode.
    QString findLabel() const;

    // Searching.
    QString findStringWithLayoutManager(LayoutManager* layoutManager);
    QString findNextWithLayoutManager(LayoutManager* layoutManager);
    QString findPreviousWithLayoutManager(LayoutManager* layoutManager);
    QString searchString(const QString& searchString, bool previous, LayoutManager* layoutManager);

    // Replacing. Each replacement is one undoable step, "Replace" or "Replace All".
    QString replaceStringWithLayoutManager(LayoutManager* layoutManager);
    QString replaceAndFindNextWithLayoutManager(LayoutManager* layoutManager);
    QString replaceAndFindPreviousWithLayoutManager(LayoutManager* layoutManager);
    void replacingString(const QString& replaceString, LayoutManager* layoutManager);
    void replacingAllStringWithLayoutManager(LayoutManager* layoutManager);

    static std::vector<Range> findAllString(const QString& string, const QString& findString,
                                            bool caseSensitive);
    static std::vector<Range> findRegularExpressionOfAllString(const QString& string,
                                                               const QString& pattarn,
                                                               bool caseSensitive, bool multiLine);
    static Range selectedMatchingRange(const std::vector<Range>& ranges, Range selectRange,
                                       bool previous, QStringView allString);

    // Go to line.
    void gotoTextFieldDidChange(const QString& gotoString);
    QString gotoString() const { return _gotoString; }
    qsizetype gotoPosition() const { return _gotoPosition; }
    const std::vector<Range>& gotoRangePosition() const { return _gotoRangePosition; }
    QColor selectColor() const { return _selectColor; }
    /// Paints the lines the go-to description names and scrolls to one of them; an action
    /// repeated with the same description steps to the next component's lines.
    void gotoLine(TextView* textView);
    Range selectLinesUsingDescription(const QString& component, LayoutManager* layoutManager);
    static bool parseLineDescription(const QString& component, qint64* fromLineSpec,
                                     qint64* toLineSpec, qint64* relative);
    static bool getRange(Range* range, TextView* textView, qint64 fromLineSpec, qint64 toLineSpec,
                         qint64 relative);

    /// The colour of found occurrences: the selection's background, lightened by half.
    static QColor highlightColor();
    /// The text of `document` as its panes show it, kept between searches while the text does
    /// not change: copying 20 MB out of a document costs more than searching it, and Find
    /// Next is pressed again and again. The copy is let go a few seconds after its last use.
    QString textOf(Document* document);

Q_SIGNALS:
    /// One of the five flags with a setter changed: every search pane shows them.
    void optionsChanged();

private:
    void setOption(bool& option, bool value);
    /// Keeps the highlighted state true to what `layoutManager`'s document shows: others
    /// (an edit, a change of wrapping or of the settings) take the highlights away too.
    void followHighlights(LayoutManager* layoutManager);
    void highlightsRemoved();

    QString _searchString;
    QString _replaceString;
    std::vector<Range> _searchMatchesList;
    bool _replaceAndFindNext = false;
    bool _replaceAll = false;
    bool _caseSensitive = false;
    bool _regularExpressions = false;
    bool _previous = false;
    bool _wholeWord = false;
    bool _allowMultiLine = false;
    bool _backgroundHighlight = false;
    bool _isReplacing = false;

    // The text and the revision of it that the last search painted, so that finding the next
    // occurrence of the same string in an unchanged text does not paint everything again.
    QPointer<Document> _paintedDocument;
    int _paintedRevision = -1;
    // The text whose highlights the engine's highlighted state speaks of.
    QPointer<Document> _highlightedDocument;

    QPointer<Document> _cachedDocument;
    QString _cachedText;
    bool _cachedTextIsCurrent = false;
    QMetaObject::Connection _cachedTextChanged;
    QTimer* _cacheExpiry = nullptr;

    QString _gotoString;
    qsizetype _gotoPosition = 0;
    std::vector<Range> _gotoRangePosition;
    QColor _selectColor;
};
