#pragma once

#include "platform/Range.h"
#include "platform/SyntaxColors.h"
#include "syntax/SyntaxColoring.h"

#include <QColor>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <array>
#include <atomic>
#include <optional>

class SyntaxColoringEngine;
class TextSource;

/// The application's one syntax manager: the colours of the nine categories, pushed from
/// the settings, the guards of the colouring, function-list and completion passes, and the
/// builder of the function list. The matching itself is done by each text's
/// SyntaxColoringEngine, which keeps what it found between edits.
class SyntaxManager
{
public:
    static SyntaxManager& sharedSyntaxManager();

    /// Colours with `colors` (none by default).
    explicit SyntaxManager(const SyntaxColors& colors = {});
    SyntaxManager(const SyntaxManager&) = delete;
    SyntaxManager& operator=(const SyntaxManager&) = delete;

    /// Takes up the nine colours of the settings (pushed when they change).
    void updatePreferences(const SyntaxColors& colors);

    QColor blockwordsColor() const { return _colors[SyntaxColoring::Blockwords]; }
    QColor keywordsColor() const { return _colors[SyntaxColoring::Keywords]; }
    QColor commandsColor() const { return _colors[SyntaxColoring::Commands]; }
    QColor valuesColor() const { return _colors[SyntaxColoring::Values]; }
    QColor numbersColor() const { return _colors[SyntaxColoring::Numbers]; }
    QColor stringsColor() const { return _colors[SyntaxColoring::Strings]; }
    QColor charactersColor() const { return _colors[SyntaxColoring::Characters]; }
    QColor preprocessorColor() const { return _colors[SyntaxColoring::Preprocessor]; }
    QColor commentsColor() const { return _colors[SyntaxColoring::Comments]; }
    /// The colour of a category; an invalid colour when the setting holds none.
    QColor colorForCategory(SyntaxColoring::Category category) const { return _colors[category]; }

    bool isEndlessLoop() const { return _isEndlessLoop; }
    bool isFunctionLoop() const { return _isFunctionLoop; }
    bool isCompleteLoop() const { return _isCompleteLoop; }
    void setIsCompleteLoop(bool running) { _isCompleteLoop = running; }

    /// Every string of the definition's "Keywords", "Commands" and "Values", in that order,
    /// duplicates kept. None without a definition or while another build runs; safe to call
    /// from any thread.
    std::optional<QStringList> makeCompleteWordsFromSyntaxDictionary(const QVariantMap& dictionary);

    /// Colours `range` of `text` with `engine`'s definition. None when the range is empty
    /// or a colouring pass is already running: then nothing changes.
    std::optional<SyntaxColoring> syntaxColoringRange(Range range, TextSource& text,
                                                      SyntaxColoringEngine& engine);

    /// The definitions the "FunctionDefinition" patterns of `dictionary` find in `string`,
    /// sorted by position (equal positions keep the order they were found in); none when
    /// there is nothing to look for, a build is running, or an entry fails (a match running
    /// into the regular-expression time limit counts as failing).
    std::optional<QVariantList> makeFunctionDefinitionWithString(QStringView string,
                                                                 const QVariantMap& dictionary);

private:
    std::array<QColor, SyntaxColoring::CategoryCount> _colors;
    bool _isEndlessLoop = false;
    bool _isFunctionLoop = false;
    std::atomic<bool> _isCompleteLoop = false;
};
