#pragma once

#include "syntax/FunctionDefinitionIndex.h"

#include <QFutureWatcher>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QVariantMap>

#include <memory>
#include <optional>
#include <vector>

class TextStore;
class TextMirror;

/// The function definitions of one document for its window's pop-up, kept in step with the
/// document's edits so that opening the pop-up reads only what changed. The first reading,
/// and one after a change the size of a file (a load, a paste), runs on a worker over a copy
/// of the text once the changes have settled; the edits made meanwhile are replayed on its
/// result.
class FunctionPopUpDefinitions : public QObject
{
    Q_OBJECT

public:
    FunctionPopUpDefinitions(TextStore* document, const QVariantMap& syntaxDictionary,
                             QObject* parent = nullptr);
    ~FunctionPopUpDefinitions() override;

    /// Whether these are the definitions of `document` by `syntaxDictionary`.
    bool serves(const TextStore* document, const QVariantMap& syntaxDictionary) const;
    /// The definitions in the text now, as SyntaxManager::makeFunctionDefinitionWithString()
    /// finds them; waits for a reading under way.
    std::optional<std::vector<FunctionMenu::Definition>> definitions();
    /// Whether the definitions are at hand: no reading of the whole text is waiting or under
    /// way.
    bool isReady() const;
    /// Starts a reading of the whole text now that waits for the changes to settle.
    void readNow();
    /// How many readings of the whole text on a worker have started.
    int builds() const { return _builds; }
    /// Characters read on this thread since the definitions were made.
    qint64 scannedCharacters() const { return _scanned; }

Q_SIGNALS:
    /// A reading on the worker ended and no other is waiting.
    void ready();

private:
    void textDidChange(qsizetype location, qsizetype removed, qsizetype added);
    void startBuild();
    void buildDidEnd();
    /// Whether the changes not yet read are better read by a worker.
    bool pendingIsLarge() const;

    struct Edit {
        qsizetype location;
        qsizetype removed;
        qsizetype added;
    };
    using Result = std::shared_ptr<FunctionDefinitionIndex>;
    QPointer<TextStore> _document;
    TextMirror* _mirror;
    QVariantMap _syntaxDictionary;
    std::unique_ptr<FunctionDefinitionIndex> _index;
    QFutureWatcher<Result> _build;
    bool _building = false;
    /// Waits for large changes to settle (a large file goes in piece by piece).
    QTimer _buildTimer;
    std::vector<Edit> _editsDuringBuild;
    int _builds = 0;
    qint64 _scanned = 0;
};
