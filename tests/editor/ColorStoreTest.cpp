#include "editor/ColorStore.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

// The store's behaviour spelled out one character at a time. Each character carries the
// identity of its run (0: uncoloured), so that two runs of one colour stay two runs.
struct Reference {
    std::vector<int> runOf;
    std::vector<QRgb> colorOfRun{0};

    explicit Reference(qsizetype length)
        : runOf(length, 0)
    {}

    void set(QRgb color, qsizetype from, qsizetype to)
    {
        const qsizetype size = qsizetype(runOf.size());
        from = std::clamp<qsizetype>(from, 0, size);
        to = std::clamp<qsizetype>(to, from, size);
        if (from == to) {
            return;
        }
        // What is left of a run on the right of the range is a run of its own.
        if (to < size && runOf[to] != 0 && runOf[to] == runOf[to - 1]) {
            const int old = runOf[to];
            colorOfRun.push_back(colorOfRun[old]);
            for (qsizetype i = to; i < size && runOf[i] == old; ++i) {
                runOf[i] = int(colorOfRun.size() - 1);
            }
        }
        int run = 0;
        if (color != 0) {
            colorOfRun.push_back(color);
            run = int(colorOfRun.size() - 1);
        }
        std::fill(runOf.begin() + from, runOf.begin() + to, run);
    }
    // Inserted text belongs to the run holding both the character before the edit and the
    // last removed character (or, when nothing is removed, the character after it).
    void edit(qsizetype position, qsizetype removed, qsizetype added)
    {
        const qsizetype size = qsizetype(runOf.size());
        int run = 0;
        if (position > 0 && runOf[position - 1] != 0) {
            const qsizetype probe = removed > 0 ? position + removed - 1 : position;
            if (probe < size && runOf[probe] == runOf[position - 1]) {
                run = runOf[position - 1];
            }
        }
        runOf.erase(runOf.begin() + position, runOf.begin() + position + removed);
        runOf.insert(runOf.begin() + position, added, run);
    }
    std::vector<QRgb> colors() const
    {
        std::vector<QRgb> result;
        for (int run : runOf) {
            result.push_back(colorOfRun[run]);
        }
        return result;
    }
};

std::vector<QRgb> expand(const ColorStore& store)
{
    std::vector<QRgb> colors(store.textLength(), 0);
    qsizetype previousEnd = 0;
    for (const ColorStore::Run& run : store.runs(0, store.textLength())) {
        EXPECT_GE(run.location, previousEnd) << "runs overlap or are out of order";
        EXPECT_GT(run.length, 0);
        previousEnd = run.location + run.length;
        std::fill(colors.begin() + run.location, colors.begin() + run.location + run.length,
                  run.color);
    }
    return colors;
}

TEST(ColorStore, SettingReplacesAndRemovingSplitsRuns)
{
    ColorStore store(20);
    store.setColor(1, {2, 10});
    store.setColor(2, {5, 3});
    store.removeColor({10, 5});
    const std::vector<ColorStore::Run> expected = {{2, 3, 1}, {5, 3, 2}, {8, 2, 1}};
    EXPECT_EQ(store.runs(0, 20), expected);
    // A query clips to its range and starts with the run reaching into it.
    const std::vector<ColorStore::Run> clipped = {{6, 2, 2}, {8, 1, 1}};
    EXPECT_EQ(store.runs(6, 9), clipped);
    // A range past the text is clipped to it.
    store.setColor(3, {18, 100});
    EXPECT_EQ(store.runs(15, 20), (std::vector<ColorStore::Run>{{18, 2, 3}}));
}

TEST(ColorStore, RandomEditsAgreeWithCharacterByCharacterReference)
{
    std::mt19937 random(20261123);
    for (int round = 0; round < 20; ++round) {
        const qsizetype length = 50 + random() % 200;
        ColorStore store(length);
        Reference reference(length);
        for (int step = 0; step < 400; ++step) {
            const qsizetype size = store.textLength();
            const qsizetype a = random() % (size + 1);
            const qsizetype b = a + random() % (size - a + 1);
            switch (random() % 5) {
            case 4: {
                // A pass over [a, b): runs in text order, now and then one laid over another.
                std::vector<ColorStore::Run> runs;
                reference.set(0, a, b);
                for (qsizetype at = a - 2; at < b + 2;) {
                    const qsizetype length = 1 + random() % 5;
                    const QRgb color = 1 + random() % 3;
                    runs.push_back({at, length, color});
                    reference.set(color, std::max(at, a), std::min(at + length, b));
                    at += std::max<qsizetype>(1, length - (random() % 4 == 0 ? 2 : 0) +
                                                     qsizetype(random() % 3));
                }
                store.replaceColors({a, b - a}, runs);
                break;
            }
            case 0:
            case 1: {
                const QRgb color = 1 + random() % 3;
                store.setColor(color, {a, b - a});
                reference.set(color, a, b);
                break;
            }
            case 2:
                store.removeColor({a, b - a});
                reference.set(0, a, b);
                break;
            default: {
                const qsizetype added = random() % 6;
                store.contentsChange(a, b - a, added);
                reference.edit(a, b - a, added);
                break;
            }
            }
            ASSERT_EQ(expand(store), reference.colors()) << "round " << round << " step " << step;
        }
    }
}

} // namespace
