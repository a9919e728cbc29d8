#include "syntax/SyntaxManager.h"

#include "platform/Regex.h"
#include "platform/SharedInstance.h"
#include "syntax/SyntaxColoringEngine.h"

#include <algorithm>

namespace {

// Clears a guard on every way out of a pass.
class GuardScope
{
public:
    explicit GuardScope(bool& flag)
        : _flag(flag)
    {
        _flag = true;
    }
    ~GuardScope() { _flag = false; }
    GuardScope(const GuardScope&) = delete;
    GuardScope& operator=(const GuardScope&) = delete;

private:
    bool& _flag;
};

struct FunctionItem {
    qsizetype location;
    QVariantMap item;
};

} // namespace

SyntaxManager& SyntaxManager::sharedSyntaxManager()
{
    return SharedInstance<SyntaxManager>::object();
}

SyntaxManager::SyntaxManager(const SyntaxColors& colors)
{
    updatePreferences(colors);
}

void SyntaxManager::updatePreferences(const SyntaxColors& colors)
{
    _colors[SyntaxColoring::Blockwords] = colors.blockwords;
    _colors[SyntaxColoring::Keywords] = colors.keywords;
    _colors[SyntaxColoring::Commands] = colors.commands;
    _colors[SyntaxColoring::Values] = colors.values;
    _colors[SyntaxColoring::Numbers] = colors.numbers;
    _colors[SyntaxColoring::Strings] = colors.strings;
    _colors[SyntaxColoring::Characters] = colors.characters;
    _colors[SyntaxColoring::Preprocessor] = colors.preprocessor;
    _colors[SyntaxColoring::Comments] = colors.comments;
}

std::optional<SyntaxColoring> SyntaxManager::syntaxColoringRange(Range range, TextSource& text,
                                                                 SyntaxColoringEngine& engine)
{
    // Applying colours can report a text change that asks for colours again.
    if (_isEndlessLoop || range.length <= 0) {
        return std::nullopt;
    }
    GuardScope guard(_isEndlessLoop);
    return engine.coloringRange(text, range);
}

std::optional<QVariantList>
SyntaxManager::makeFunctionDefinitionWithString(QStringView string, const QVariantMap& dictionary)
{
    const QVariant definitions = dictionary.value(QStringLiteral("FunctionDefinition"));
    if (!definitions.isValid() || _isFunctionLoop) {
        return std::nullopt;
    }
    GuardScope guard(_isFunctionLoop);
    if (definitions.typeId() != QMetaType::QVariantList) {
        return std::nullopt;
    }

    std::vector<FunctionItem> found;
    for (const QVariant& value : definitions.toList()) {
        if (value.typeId() != QMetaType::QVariantMap) {
            return std::nullopt;
        }
        const QVariantMap entry = value.toMap();
        const QVariant pattern = entry.value(QStringLiteral("regexPattern"));
        if (pattern.typeId() != QMetaType::QString) {
            return std::nullopt;
        }
        // The function list ignores case whatever the definition says about its words.
        const Regex regex(pattern.toString(), Regex::CaseInsensitive | Regex::AnchorsMatchLines);
        if (!regex.isValid()) {
            continue;
        }
        const bool allMatching = entry.value(QStringLiteral("AllMatching")).toBool();
        const bool bold = entry.value(QStringLiteral("BoldType")).toBool();
        const bool hasKeyType = entry.contains(QStringLiteral("KeyType"));
        const QVariant keyType = entry.value(QStringLiteral("KeyType"));
        const QVariant indentation = entry.value(QStringLiteral("IndentationLevel"));
        bool failed = false;
        const Regex::Status status = regex.forEachMatch(string, [&](const Regex::Match& match) {
            if (!allMatching && match.groups.size() < 2) {
                failed = true;
                return false;
            }
            const Range range = allMatching ? match.groups[0] : match.groups[1];
            QVariantMap item{
                {QStringLiteral("RangeLocation"), qint64(range.location)},
                {QStringLiteral("RangeString"), NSStringFromRange(range)},
                {QStringLiteral("BoldType"), bold},
            };
            if (hasKeyType) {
                item.insert(QStringLiteral("KeyType"), keyType);
                item.insert(QStringLiteral("IndentationLevel"), indentation);
            }
            found.push_back({range.location, std::move(item)});
            return true;
        });
        if (failed || status != Regex::Status::Ok) {
            return std::nullopt;
        }
    }

    std::stable_sort(found.begin(), found.end(), [](const FunctionItem& a, const FunctionItem& b) {
        return a.location < b.location;
    });
    QVariantList result;
    result.reserve(qsizetype(found.size()));
    for (FunctionItem& item : found) {
        result.append(std::move(item.item));
    }
    return result;
}

std::optional<QStringList>
SyntaxManager::makeCompleteWordsFromSyntaxDictionary(const QVariantMap& dictionary)
{
    if (dictionary.isEmpty()) {
        return std::nullopt;
    }
    bool idle = false;
    if (!_isCompleteLoop.compare_exchange_strong(idle, true)) {
        return std::nullopt;
    }
    QStringList words;
    for (const char* key : {"Keywords", "Commands", "Values"}) {
        for (const QVariant& word : dictionary.value(QLatin1String(key)).toList()) {
            if (word.typeId() == QMetaType::QString) {
                words.append(word.toString());
            }
        }
    }
    _isCompleteLoop = false;
    return words;
}
