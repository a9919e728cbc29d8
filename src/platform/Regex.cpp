#include "platform/Regex.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>

#include <atomic>
#include <memory>

struct Regex::Compiled {
    std::unique_ptr<icu::RegexPattern> pattern;
};

namespace {

uint32_t icuFlags(unsigned options)
{
    uint32_t flags = 0;
    if (options & Regex::CaseInsensitive) {
        flags |= UREGEX_CASE_INSENSITIVE;
    }
    if (options & Regex::AllowCommentsAndWhitespace) {
        flags |= UREGEX_COMMENTS;
    }
    if (options & Regex::IgnoreMetacharacters) {
        flags |= UREGEX_LITERAL;
    }
    if (options & Regex::DotMatchesLineSeparators) {
        flags |= UREGEX_DOTALL;
    }
    if (options & Regex::AnchorsMatchLines) {
        flags |= UREGEX_MULTILINE;
    }
    if (options & Regex::UseUnixLineSeparators) {
        flags |= UREGEX_UNIX_LINES;
    }
    if (options & Regex::UseUnicodeWordBoundaries) {
        flags |= UREGEX_UWORD;
    }
    return flags;
}

} // namespace

Regex::Regex(const QString& pattern, unsigned options)
    : _patternText(pattern)
{
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError{};
    const icu::UnicodeString text(reinterpret_cast<const UChar*>(pattern.utf16()),
                                  int32_t(pattern.size()));
    std::unique_ptr<icu::RegexPattern> compiled(
        icu::RegexPattern::compile(text, icuFlags(options), parseError, status));
    if (U_FAILURE(status) || !compiled) {
        _errorString = QStringLiteral("%1 at offset %2")
                           .arg(QString::fromLatin1(u_errorName(status)))
                           .arg(parseError.offset);
        return;
    }
    _pattern = new Compiled{std::move(compiled)};
}

namespace {
std::atomic<int> initialLimit{Regex::DefaultTimeLimit};
}

void Regex::setInitialTimeLimit(int steps)
{
    initialLimit = steps;
}

int Regex::initialTimeLimit()
{
    return initialLimit;
}

Regex::~Regex()
{
    delete _pattern;
}

Regex::Regex(Regex&& other) noexcept
    : _pattern(std::exchange(other._pattern, nullptr))
    , _patternText(std::move(other._patternText))
    , _errorString(std::move(other._errorString))
    , _timeLimit(other._timeLimit)
{}

Regex& Regex::operator=(Regex&& other) noexcept
{
    if (this != &other) {
        delete _pattern;
        _pattern = std::exchange(other._pattern, nullptr);
        _patternText = std::move(other._patternText);
        _errorString = std::move(other._errorString);
        _timeLimit = other._timeLimit;
    }
    return *this;
}

int Regex::captureGroupCount() const
{
    if (!_pattern) {
        return 0;
    }
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(_pattern->pattern->matcher(status));
    return U_SUCCESS(status) ? matcher->groupCount() : 0;
}

Regex::Status Regex::forEachMatchInLines(QStringView text, Range range,
                                         const std::function<bool(const Match&)>& visit) const
{
    return search(text, range, true, visit);
}

Regex::Status Regex::forEachMatch(QStringView text, const std::function<bool(const Match&)>& visit,
                                  Range range) const
{
    return search(text, range, false, visit);
}

Regex::Status Regex::search(QStringView text, Range range, bool seeAround,
                            const std::function<bool(const Match&)>& visit) const
{
    if (!_pattern) {
        return Status::InvalidPattern;
    }
    UErrorCode status = U_ZERO_ERROR;
    UText* utext = utext_openUChars(nullptr, reinterpret_cast<const UChar*>(text.utf16()),
                                    text.size(), &status);
    std::unique_ptr<icu::RegexMatcher> matcher(_pattern->pattern->matcher(status));
    if (U_FAILURE(status)) {
        utext_close(utext);
        return Status::Error;
    }
    matcher->reset(utext);
    if (!range.isNotFound()) {
        const qsizetype start = qBound(qsizetype(0), range.location, text.size());
        const qsizetype end = qBound(start, range.max(), text.size());
        matcher->region(start, end, status);
        if (seeAround) {
            matcher->useTransparentBounds(true);
            matcher->useAnchoringBounds(false);
        }
    }
    matcher->setTimeLimit(_timeLimit, status);

    Status result = Status::Ok;
    Match match;
    const int groups = matcher->groupCount();
    match.groups.resize(size_t(groups) + 1);
    while (U_SUCCESS(status) && matcher->find(status)) {
        for (int g = 0; g <= groups; ++g) {
            const int64_t start = matcher->start64(g, status);
            if (start < 0) {
                match.groups[size_t(g)] = Range::notFound();
            } else {
                match.groups[size_t(g)] = Range(start, matcher->end64(g, status) - start);
            }
        }
        if (U_FAILURE(status) || !visit(match)) {
            break;
        }
    }
    if (status == U_REGEX_TIME_OUT) {
        result = Status::TimeLimit;
    } else if (U_FAILURE(status)) {
        result = Status::Error;
    }
    utext_close(utext);
    return result;
}

std::vector<Regex::Match> Regex::matches(QStringView text, Range range, Status* status) const
{
    std::vector<Match> result;
    const Status s = forEachMatch(
        text,
        [&result](const Match& m) {
            result.push_back(m);
            return true;
        },
        range);
    if (status) {
        *status = s;
    }
    return result;
}

bool Regex::firstMatch(QStringView text, Match* match) const
{
    bool found = false;
    forEachMatch(text, [&](const Match& m) {
        found = true;
        if (match) {
            *match = m;
        }
        return false;
    });
    return found;
}
