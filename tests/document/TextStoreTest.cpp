#include "document/TextStore.h"

#include "document/TextBuilder.h"
#include "document/TextChunkIterator.h"

#include <QCoreApplication>
#include <QFuture>
#include <QPromise>
#include <QUndoStack>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <random>
#include <thread>
#include <vector>

namespace {

TextSnapshot built(QStringView text)
{
    TextBuilder builder;
    builder.append(text);
    return builder.finish();
}

qsizetype lineFeeds(QStringView text)
{
    return text.count(u'\n');
}

qsizetype modelLineStart(const QString& text, qsizetype line)
{
    qsizetype at = 0;
    for (; line > 0 && at < text.size(); ++at) {
        line -= text[at] == u'\n';
    }
    return at;
}

// Everything a reader of the text sees, compared with the model.
void expectReadsLike(const TextSnapshot& text, const QString& model, std::mt19937& random)
{
    QString why;
    ASSERT_TRUE(text.checkStructure(&why)) << why.toStdString();
    ASSERT_EQ(text.string(), model);
    const auto anywhere = [&] {
        return std::uniform_int_distribution<qsizetype>(0, model.size())(random);
    };

    for (int i = 0; i < 4; ++i) {
        const qsizetype from = anywhere();
        QString forward;
        qsizetype expectedStart = from;
        for (TextChunkIterator chunks(text, from); !chunks.atEnd(); chunks.next()) {
            ASSERT_EQ(chunks.start(), expectedStart);
            ASSERT_FALSE(chunks.chunk().isEmpty());
            forward += chunks.chunk();
            expectedStart = chunks.end();
        }
        EXPECT_EQ(forward, model.mid(from));
        QString backward;
        for (TextChunkIterator chunks(text, from, TextChunkIterator::Backward); !chunks.atEnd();
             chunks.next()) {
            backward.prepend(chunks.chunk());
            ASSERT_EQ(chunks.start(), from - backward.size());
        }
        EXPECT_EQ(backward, model.left(from));
    }
}

struct RandomEdits {
    const char* name;
    qsizetype initialLength;
    int operations;
    int checkEvery;
    /// Edits of thousands of units, now and then: whole chunks and branches come and go.
    bool large;
};

TEST(TextStoreTest, RandomEditsReadLikeAPlainString)
{
    // Line feeds, surrogate pairs and lone halves, the separators that are not line breaks,
    // CR and NUL; edits land anywhere, and on and around the chunks' edges half the time.
    const QString pieces[] = {u"a"_qs,      u"b"_qs,      u" "_qs,      u"\n"_qs,
                              u"\n"_qs,     u"😀"_qs,      u"\xD83D"_qs, u"\xDE00"_qs,
                              u"\x2028"_qs, u"\x0085"_qs, u"\r"_qs,     QString(1, QChar(0))};
    const RandomEdits cases[] = {
        {"short text, edits of a few units", 0, 4000, 250, false},
        {"a tree three levels deep, edits large and small", 1'500'000, 1000, 250, true},
    };
    for (const RandomEdits& test : cases) {
        SCOPED_TRACE(test.name);
        std::mt19937 random(20240611);
        const auto number = [&](qsizetype low, qsizetype high) {
            return std::uniform_int_distribution<qsizetype>(low, high)(random);
        };
        const auto randomText = [&](qsizetype length) {
            QString text;
            while (text.size() < length) {
                text += pieces[number(0, std::size(pieces) - 1)];
            }
            return text;
        };

        QString model = randomText(test.initialLength);
        qsizetype modelLineFeeds = lineFeeds(model);
        TextStore store;
        store.setLoadedText(built(model));
        if (test.initialLength > 0) {
            ASSERT_GE(store.text().root()->height, 3);
        }
        std::vector<TextChange> changes;
        QObject::connect(&store, &TextStore::contentsChange,
                         [&changes](const TextChange& change) { changes.push_back(change); });

        for (int op = 1; op <= test.operations; ++op) {
            qsizetype position = number(0, model.size());
            if (number(0, 1) == 0) {
                std::vector<qsizetype> edges{0};
                for (TextChunkIterator chunks(store.text(), 0); !chunks.atEnd(); chunks.next()) {
                    edges.push_back(chunks.end());
                }
                position =
                    qBound(qsizetype(0),
                           edges[size_t(number(0, qsizetype(edges.size()) - 1))] + number(-2, 2),
                           model.size());
            }
            const bool large = test.large && number(0, 20) == 0;
            const qsizetype removed =
                number(0, 2) == 0 ? 0 : qMin(model.size() - position, number(0, large ? 40000 : 6));
            const QString added = number(0, 2) == 1 && removed > 0
                                      ? QString()
                                      : randomText(number(1, large ? 20000 : 6));

            const TextChange expected{position,
                                      removed,
                                      added.size(),
                                      lineFeeds(QStringView(model).first(position)),
                                      lineFeeds(QStringView(model).sliced(position, removed)),
                                      lineFeeds(added),
                                      store.revision() + 1};
            changes.clear();
            ASSERT_TRUE(store.replace(position, removed, added));
            model.replace(position, removed, added);
            modelLineFeeds += expected.linesAdded - expected.linesRemoved;
            ASSERT_EQ(changes.size(), 1u);
            ASSERT_EQ(changes[0], expected);

            const TextSnapshot& text = store.text();
            ASSERT_EQ(text.length(), model.size());
            ASSERT_EQ(text.lineCount(), modelLineFeeds + 1);
            const qsizetype at = number(0, model.size());
            ASSERT_EQ(text.lineAt(at), lineFeeds(QStringView(model).first(at))) << at;
            ASSERT_EQ(text.at(at), at < model.size() ? model[at] : QChar());
            const qsizetype line = number(0, text.lineCount() - 1);
            const qsizetype start = modelLineStart(model, line);
            ASSERT_EQ(text.lineStart(line), start) << line;
            const qsizetype end = model.indexOf(u'\n', start);
            ASSERT_EQ(text.line(line), model.mid(start, end < 0 ? -1 : end - start));
            ASSERT_EQ(text.columnAt(at), at - modelLineStart(model, text.lineAt(at)));
            const Range range(number(0, model.size()), number(0, 200));
            ASSERT_EQ(text.text(range), model.mid(range.location, range.length));

            if (op % test.checkEvery == 0) {
                expectReadsLike(text, model, random);
            }
        }
        // A range outside the text changes nothing.
        const quint64 revision = store.revision();
        EXPECT_FALSE(store.replace(model.size() + 1, 0, u"x"_qs));
        EXPECT_FALSE(store.remove(model.size() - 1, 2));
        EXPECT_FALSE(store.remove(-1, 1));
        EXPECT_EQ(store.revision(), revision);
        EXPECT_EQ(store.text().string(), model);
    }
}

TEST(TextStoreTest, ChunkEdgesNeverSplitASurrogatePair)
{
    // Edits that join text across chunks, or overfill one, bring surrogate halves together
    // at a chunk's edge.
    const QString high(QChar(0xD83D));
    const QString low(QChar(0xDE00));
    const auto run = [](qsizetype count, char16_t c) { return QString(count, QChar(c)); };
    const QString full = run(4095, u'a') + high + low + run(5000, u'b'); // a chunk is "a…a"
    struct Edit {
        const char* name;
        QString text;
        qsizetype position;
        qsizetype length;
        QString added;
    };
    const Edit edits[] = {
        {"removal that brings a high and a low together from chunks apart",
         run(3000, u'a') + high + run(6000, u'm') + low + run(3000, u'b'),
         3001,
         6000,
         {}},
        {"text starting with a low half pasted after a lone high",
         run(3000, u'a') + high + run(3000, u'b'), 3001, 0, low + run(5000, u'm')},
        {"text ending with a high half pasted before a low",
         run(3000, u'a') + low + run(3000, u'b'), 3000, 0, run(5000, u'm') + high},
        {"removal of what follows a high at a chunk's end",
         run(4094, u'a') + high + u"x"_qs + low + run(5000, u'b'),
         4095,
         1,
         {}},
        {"insertion between the halves of a pair in a full chunk", full, 4096, 0, u"x"_qs},
        {"a high half typed before a low at a chunk's start",
         run(4096, u'a') + low + run(5000, u'b'), 4096, 0, high},
        {"a pair replaced by its halves swapped", full, 4095, 2, low + high},
    };
    for (const Edit& edit : edits) {
        SCOPED_TRACE(edit.name);
        TextStore store;
        store.setLoadedText(built(edit.text));
        ASSERT_TRUE(store.replace(edit.position, edit.length, edit.added));
        QString expected = edit.text;
        expected.replace(edit.position, edit.length, edit.added);
        QString why;
        EXPECT_TRUE(store.text().checkStructure(&why)) << why.toStdString();
        EXPECT_EQ(store.text().string(), expected);
        store.undo();
        EXPECT_EQ(store.text().string(), edit.text);
        EXPECT_TRUE(store.text().checkStructure(&why)) << why.toStdString();
    }
}

TEST(TextStoreTest, UndoAndRedoGiveBackEveryTextExactly)
{
    std::mt19937 random(7);
    const auto number = [&](qsizetype low, qsizetype high) {
        return std::uniform_int_distribution<qsizetype>(low, high)(random);
    };
    QString model;
    for (int i = 0; i < 3000; ++i) {
        model += i % 7 == 0 ? u"\n"_qs : i % 11 == 0 ? u"😀"_qs : u"word "_qs;
    }
    TextStore store;
    store.setLoadedText(built(model));
    std::vector<QString> texts{model};
    // Each change, undo and redo included, names exactly what turned the text before it
    // into the text after it.
    TextSnapshot previous = store.text();
    int changes = 0;
    QObject::connect(&store, &TextStore::contentsChange, [&](const TextChange& change) {
        const QString before = previous.string();
        const QString after = store.text().string();
        EXPECT_EQ(change.revision, previous.revision() + 1);
        EXPECT_EQ(store.text().revision(), change.revision);
        EXPECT_EQ(after.size(), before.size() - change.charsRemoved + change.charsAdded);
        EXPECT_EQ(QStringView(after).first(change.position),
                  QStringView(before).first(change.position));
        EXPECT_EQ(QStringView(after).sliced(change.position + change.charsAdded),
                  QStringView(before).sliced(change.position + change.charsRemoved));
        EXPECT_EQ(change.firstLine, lineFeeds(QStringView(before).first(change.position)));
        EXPECT_EQ(change.linesRemoved,
                  lineFeeds(QStringView(before).sliced(change.position, change.charsRemoved)));
        EXPECT_EQ(change.linesAdded,
                  lineFeeds(QStringView(after).sliced(change.position, change.charsAdded)));
        previous = store.text();
        ++changes;
    });
    for (int step = 0; step < 300; ++step) {
        // Some steps are blocks of several edits, some large (over 64 K units: undone from the
        // text before, not from a copy), some with replacements of several ranges at once.
        const bool large = step % 25 == 0;
        const int edits = number(0, 3) == 0 || large ? int(number(2, 5)) : 1;
        store.beginEditBlock(QStringLiteral("Step %1").arg(step));
        for (int e = 0; e < edits; ++e) {
            qsizetype position = number(0, model.size());
            if (step % 7 == 3 && e == 1 && model.size() > position + 8) {
                const std::vector<Range> ranges{
                    {position, 2}, {position + 4, 1}, {position + 7, 1}};
                store.replaceRanges(ranges, u"RR"_qs);
                for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
                    model.replace(range->location, range->length, u"RR"_qs);
                }
                continue;
            }
            if (large && e == 0) {
                position = number(0, model.size() / 4);
            }
            const qsizetype length =
                qMin(model.size() - position, number(0, large && e == 0 ? 90000 : 4));
            const QString added = QString(int(number(0, step % 40 == 0 ? 70000 : 4)), u'z') + u'\n';
            store.replace(position, length, added);
            model.replace(position, length, added);
        }
        store.endEditBlock();
        texts.push_back(model);
    }
    ASSERT_EQ(store.undoStack()->count(), 300);
    EXPECT_EQ(store.undoStack()->undoText(), u"Step 299"_qs);
    EXPECT_TRUE(store.isModified());

    for (size_t i = texts.size() - 1; i > 0; --i) {
        store.undo();
        ASSERT_EQ(store.text().string(), texts[i - 1]) << "undo to " << i - 1;
    }
    EXPECT_FALSE(store.isModified());
    for (size_t i = 1; i < texts.size(); ++i) {
        store.redo();
        ASSERT_EQ(store.text().string(), texts[i]) << "redo to " << i;
    }
    EXPECT_GT(changes, 1200);
    QString why;
    EXPECT_TRUE(store.text().checkStructure(&why)) << why.toStdString();
}

TEST(TextStoreTest, TypingMergesIntoStepsTheWayUsersExpect)
{
    // Each action: type text at a position at a time (ms), or something else; then the
    // texts that undo gives back, step by step.
    enum Kind { Type, Backspace, Delete, Paste, Jump, Save, Block };
    struct Action {
        Kind kind;
        qsizetype position = 0;
        QString text;
        qint64 time = 0;
    };
    struct Case {
        const char* name;
        QString start;
        std::vector<Action> actions;
        std::vector<QString> undone;
    };
    const auto typed = [](QString text, qsizetype from, qint64 time) {
        std::vector<Action> actions;
        for (const QChar c : text) {
            actions.push_back({Type, from++, QString(c), time});
            time += 150;
        }
        return actions;
    };
    const auto join = [](std::vector<std::vector<Action>> parts) {
        std::vector<Action> all;
        for (auto& part : parts) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    };
    const std::vector<Case> cases = {
        {"a word and its blank are one step",
         {},
         typed(u"hello world"_qs, 0, 0),
         {u"hello "_qs, {}}},
        {"a pause starts a new step",
         {},
         join({typed(u"abc"_qs, 0, 0), typed(u"def"_qs, 3, 5000)}),
         {u"abc"_qs, {}}},
        {"a caret jump starts a new step",
         {},
         join({typed(u"abc"_qs, 0, 0), {{Jump, 0, {}, 0}}, typed(u"def"_qs, 3, 600)}),
         {u"abc"_qs, {}}},
        {"typing elsewhere starts a new step",
         {},
         join({typed(u"abc"_qs, 0, 0), typed(u"X"_qs, 1, 500)}),
         {u"abc"_qs, {}}},
        {"backspaces merge, and so do deletes",
         u"abcdef"_qs,
         {{Backspace, 5, {}, 0},
          {Backspace, 4, {}, 100},
          {Backspace, 3, {}, 200},
          {Delete, 0, {}, 300},
          {Delete, 0, {}, 400}},
         {u"abc"_qs, u"abcdef"_qs}},
        {"a paste is a step of its own",
         {},
         join({typed(u"ab"_qs, 0, 0), {{Paste, 2, u"PASTE"_qs, 200}}, typed(u"cd"_qs, 7, 300)}),
         {u"abPASTE"_qs, u"ab"_qs, {}}},
        {"typing after a save does not merge into the saved step",
         {},
         join({typed(u"ab"_qs, 0, 0), {{Save, 0, {}, 0}}, typed(u"cd"_qs, 2, 400)}),
         {u"ab"_qs, {}}},
        {"an edit block is one step",
         u"one two"_qs,
         {{Block, 0, {}, 0}, {Type, 0, u"x"_qs, 0}},
         {u"ONE TWO"_qs, u"one two"_qs}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        TextStore store;
        store.setLoadedText(built(test.start));
        qint64 now = 0;
        store.setClock([&now] { return now; });
        for (const Action& action : test.actions) {
            now = action.time;
            switch (action.kind) {
            case Type:
                store.insert(action.position, action.text, u"Typing"_qs,
                             TextStore::EditKind::Typing);
                break;
            case Backspace:
            case Delete:
                store.remove(action.position, 1, u"Delete"_qs, TextStore::EditKind::Typing);
                break;
            case Paste:
                store.insert(action.position, action.text, u"Paste"_qs);
                break;
            case Jump:
                store.breakTyping();
                break;
            case Save:
                store.setClean();
                break;
            case Block:
                store.beginEditBlock(u"Upper Case"_qs);
                store.replace(0, 3, u"ONE"_qs);
                store.replace(4, 3, u"TWO"_qs);
                store.endEditBlock();
                EXPECT_EQ(store.undoStack()->undoText(), u"Upper Case"_qs);
                break;
            }
        }
        ASSERT_EQ(store.undoStack()->count(), qsizetype(test.undone.size()))
            << store.text().string().toStdString();
        for (const QString& text : test.undone) {
            store.undo();
            EXPECT_EQ(store.text().string(), text);
        }
    }
}

TEST(TextStoreTest, ModifiedUntilUndoReachesTheSavedText)
{
    TextStore store;
    std::vector<bool> signalled;
    QObject::connect(&store, &TextStore::modificationChanged,
                     [&signalled](bool modified) { signalled.push_back(modified); });
    store.setLoadedText(built(u"saved"_qs));
    EXPECT_FALSE(store.isModified());
    store.insert(5, u" one"_qs);
    store.insert(9, u" two"_qs);
    EXPECT_TRUE(store.isModified());
    store.setClean();
    EXPECT_FALSE(store.isModified());
    store.undo();
    EXPECT_TRUE(store.isModified());
    store.redo();
    EXPECT_FALSE(store.isModified());
    EXPECT_EQ(store.text().string(), u"saved one two"_qs);
    // A new edit after undoing past the saved point leaves it out of reach.
    store.undo();
    store.insert(0, u">"_qs);
    EXPECT_TRUE(store.isModified());
    store.undo();
    EXPECT_TRUE(store.isModified());
    // Loading gives a clean text with no history.
    store.setLoadedText(built(u"reloaded"_qs));
    EXPECT_FALSE(store.isModified());
    EXPECT_FALSE(store.canUndo());
    EXPECT_EQ(signalled, (std::vector<bool>{true, false, true, false, true, false}));
}

TEST(TextStoreTest, ALoadingTextGrowsAtItsEndAndEditsWaitForTheRest)
{
    const QString whole = u"first part\nsecond part\nthe end"_qs;
    const qsizetype startLength = 11;
    TextStore store;
    std::vector<TextChange> changes;
    std::vector<bool> loading;
    QObject::connect(&store, &TextStore::contentsChange,
                     [&changes](const TextChange& change) { changes.push_back(change); });
    QObject::connect(&store, &TextStore::loadingChanged,
                     [&loading](bool now) { loading.push_back(now); });

    // The rest comes from another thread, some time after the edit asks for it.
    QPromise<TextSnapshot> promise;
    promise.start();
    store.setLoadingText(built(QStringView(whole).first(startLength)), promise.future());
    EXPECT_TRUE(store.isLoading());
    EXPECT_EQ(store.text().string(), whole.first(startLength));
    std::thread rest([&promise, &whole] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        promise.addResult(built(whole));
        promise.finish();
    });
    // A position beyond the start is one in the whole text.
    EXPECT_TRUE(store.insert(whole.size(), u"!"_qs));
    rest.join();
    EXPECT_FALSE(store.isLoading());
    EXPECT_EQ(store.text().string(), whole + u'!');
    ASSERT_EQ(changes.size(), 3u);
    EXPECT_EQ(changes[1].position, startLength);
    EXPECT_EQ(changes[1].charsRemoved, 0);
    EXPECT_EQ(changes[1].charsAdded, whole.size() - startLength);
    EXPECT_EQ(changes[1].linesAdded, 1);
    EXPECT_EQ(loading, (std::vector<bool>{true, false}));
    // The rest went in as read, not as an edit: undo takes back the typing only.
    store.undo();
    EXPECT_EQ(store.text().string(), whole);
    EXPECT_FALSE(store.isModified());
    EXPECT_FALSE(store.canUndo());

    // Ready before anyone asks: it goes in on the next turn of the event loop.
    store.setLoadingText(built(u"a\n"_qs), QtFuture::makeReadyFuture(built(u"a\nb"_qs)));
    EXPECT_EQ(store.text().string(), u"a\n"_qs);
    QCoreApplication::processEvents();
    EXPECT_FALSE(store.isLoading());
    EXPECT_EQ(store.text().string(), u"a\nb"_qs);

    // Another text in its place drops the rest of the old one.
    QPromise<TextSnapshot> dropped;
    dropped.start();
    store.setLoadingText(built(u"old"_qs), dropped.future());
    store.setLoadedText(built(u"new"_qs));
    EXPECT_FALSE(store.isLoading());
    dropped.addResult(built(u"old and more"_qs));
    dropped.finish();
    QCoreApplication::processEvents();
    EXPECT_EQ(store.text().string(), u"new"_qs);
    EXPECT_EQ(loading, (std::vector<bool>{true, false, true, false, true, false}));
}

} // namespace

TEST(TextStoreTest, SnapshotsStayAsTheyWereWhileAWorkerReadsThem)
{
    // Autosave and loading read snapshots on workers while the user types on: each snapshot
    // must keep reading as the text it was taken from, whatever the edits do to the chunks.
    QString model;
    for (int i = 0; model.size() < 1'000'000; ++i) {
        model += QStringLiteral("line %1 of the text, 😀 and more\n").arg(i);
    }
    TextStore store;
    store.setLoadedText(built(model));
    struct Job {
        TextSnapshot text;
        QString expected;
    };
    std::vector<Job> jobs;
    jobs.reserve(32);
    jobs.push_back({store.text(), model});
    std::atomic<size_t> published{1};
    std::atomic<bool> done{false};
    std::atomic<int> mismatches{0};
    std::atomic<int> reads{0};
    std::thread worker([&] {
        while (!done || reads < 8) {
            const Job& job = jobs[published.load(std::memory_order_acquire) - 1];
            const qsizetype middle = job.text.lineCount() / 2;
            mismatches += job.text.string() == job.expected &&
                                  job.text.line(middle) ==
                                      job.expected.section(u'\n', int(middle), int(middle))
                              ? 0
                              : 1;
            ++reads;
        }
    });
    std::mt19937 random(3);
    for (int i = 0; i < 3000; ++i) {
        const qsizetype at = std::uniform_int_distribution<qsizetype>(0, model.size())(random);
        const qsizetype removed = i % 5 == 0 ? qMin<qsizetype>(40, model.size() - at) : 0;
        const QString added = i % 3 == 0 ? u"line 0 \n"_qs : u"x"_qs;
        store.replace(at, removed, added);
        model.replace(at, removed, added);
        if (i % 100 == 99 && jobs.size() < jobs.capacity()) {
            jobs.push_back({store.text(), model});
            published.store(jobs.size(), std::memory_order_release);
        }
    }
    done = true;
    worker.join();
    EXPECT_EQ(mismatches.load(), 0);
    EXPECT_EQ(jobs.front().text.string(), jobs.front().expected);
}
