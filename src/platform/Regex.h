#pragma once

#include "platform/Range.h"

#include <QString>
#include <QStringView>

#include <functional>
#include <memory>
#include <vector>

/// An ICU regular expression over UTF-16 text. The option bits are the editor's own
/// numbering, used throughout (search, colouring, scripts):
class Regex
{
public:
    enum Option : unsigned {
        CaseInsensitive = 1,
        AllowCommentsAndWhitespace = 2,
        IgnoreMetacharacters = 4,
        DotMatchesLineSeparators = 8,
        AnchorsMatchLines = 16,
        UseUnixLineSeparators = 32,
        UseUnicodeWordBoundaries = 64,
    };

    /// Why a search ended early.
    enum class Status { Ok, InvalidPattern, TimeLimit, Error };

    /// The match engine's time limit, in ICU's steps (a few milliseconds each at most):
    /// a pathological pattern stops with Status::TimeLimit instead of freezing the editor.
    static constexpr int DefaultTimeLimit = 2000;
    /// The limit expressions made from now on start with: DefaultTimeLimit, unless a test or
    /// a fuzz target lowers it to reach the paths of runaway patterns quickly.
    static void setInitialTimeLimit(int steps);
    static int initialTimeLimit();

    Regex() = default;
    Regex(const QString& pattern, unsigned options);
    ~Regex();
    Regex(Regex&&) noexcept;
    Regex& operator=(Regex&&) noexcept;

    bool isValid() const { return _pattern != nullptr; }
    /// ICU's description of why the pattern does not compile, with its offset.
    QString errorString() const { return _errorString; }
    int captureGroupCount() const;
    QString pattern() const { return _patternText; }
    void setTimeLimit(int steps) { _timeLimit = steps; }

    /// One match: every group's range, group 0 first. A group that did not take part
    /// has location NSNotFound.
    struct Match {
        std::vector<Range> groups;
        Range range() const { return groups.front(); }
    };

    /// Calls `visit` for each match within `range` of `text` (the whole text when the
    /// range is not found), in order, until it returns false. The text is not copied.
    Status forEachMatch(QStringView text, const std::function<bool(const Match&)>& visit,
                        Range range = Range::notFound()) const;
    /// Calls `visit` for each match that starts within `range` and ends by its end, found as
    /// a search of the whole text would find it: lookaround, word boundaries and line anchors
    /// see the text around the range. For a pattern whose matches never hold a line break
    /// and a range of whole lines, these are the whole text's matches in those lines.
    Status forEachMatchInLines(QStringView text, Range range,
                               const std::function<bool(const Match&)>& visit) const;
    /// All matches within `range` (the whole text by default).
    std::vector<Match> matches(QStringView text, Range range = Range::notFound(),
                               Status* status = nullptr) const;
    /// The first match, if any.
    bool firstMatch(QStringView text, Match* match) const;

private:
    Status search(QStringView text, Range range, bool seeAround,
                  const std::function<bool(const Match&)>& visit) const;

    struct Compiled;
    Compiled* _pattern = nullptr;
    QString _patternText;
    QString _errorString;
    int _timeLimit = initialTimeLimit();
};
