// The engine against the step-by-step model, on many seeded random texts, definitions and
// edits. The pools are small on purpose, so that keywords, blocks and patterns collide
// often: words inside longer words, case variants, comments inside strings, blocks that
// open above the coloured range, blocks that overlap, words at the edges of the range.
#include "SyntaxTestSupport.h"
#include "platform/TextSource.h"

#include <QFile>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <random>

using namespace SyntaxTestSupport;

namespace {

class Generator
{
public:
    explicit Generator(unsigned seed)
        : _random(seed)
    {}

    int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(_random); }
    bool chance(int percent) { return below(100) < percent; }
    template <typename T> const T& pick(const std::vector<T>& pool)
    {
        return pool[size_t(below(int(pool.size())))];
    }

    QString text(int tokens)
    {
        static const std::vector<QString> pool = {
            "if",         "If",      "IF",     "int",    "print",      "int_max",    "xint",
            "a-a",        "#if",     "a",      "aa",     "in",         "new",        "t_",
            " ",          " ",       " ",      "\n",     "\n",         "\t",         "(",
            ")",          "{",       "}",      "/*",     "*/",         "//",         "\"",
            "'",          "<!--",    "-->",    "<",      ">",          "#",          "-",
            "0",          "42",      "b",      "ab",     "x",          "y",          "\u017F",
            "\u00E9",     "\u00C9",  "\u00DF", "\u2028", "\U0001F600", "\U00010400", "\U00010428",
            "\"s // t\"", "/* c */", "'c'",    "begin",  "END"};
        QString result;
        for (int i = 0; i < tokens; ++i) {
            result += pick(pool);
        }
        return result;
    }

    QVariantList wordList()
    {
        static const std::vector<QVariant> pool = {
            "if", "\U00010400", "a\U00010428", "int", "IF", "in",     "a",
            "aa", "a-a",        "#if",         " x",  "",   "\u00E9", "\u017Ft",
            "t_", "print",      "new",         "x y", "ab", "b",      7};
        QVariantList result;
        for (int i = below(5); i > 0; --i) {
            result.append(pick(pool));
        }
        return result;
    }

    QVariantList entries(bool withBlocks)
    {
        static const std::vector<QString> patterns = {
            "[0-9]+", "\"[^\"\\n]*\"", "'.'", "//.*$",  "^#\\w*", "(",    "\\bi\\w*",
            "a|",     "^\\s*\\w",      "b+$", "[(){}]", "e.",     "\\Bn", "<[^>]*>",
        };
        static const std::vector<std::pair<QString, QString>> blocks = {
            {"/*", "*/"}, {"<!--", "-->"},  {"#", "\n"}, {"ab", "b"}, {"new", "new"},
            {"(", ")"},   {"\"", "\""},     {"x", ""},   {"", "y"},   {" a", "b"},
            {"{", "}"},   {"begin", "end"}, {"-", "--"}, {"*", "/"},
        };
        QVariantList result;
        for (int i = below(4); i > 0; --i) {
            const int kind = below(20);
            if (kind < 9) {
                result.append(pattern(pick(patterns)));
            } else if (withBlocks && kind < 18) {
                const auto& [start, end] = pick(blocks);
                result.append(block(start, end));
            } else if (kind == 18) {
                result.append(QVariantMap{{"regularExpression", true}});
            } else if (withBlocks) {
                result.append(QVariantMap{{"startStr", QStringLiteral("<")}});
            } else {
                result.append(QStringLiteral("not an entry"));
            }
        }
        return result;
    }

    QVariantMap definition()
    {
        QVariantMap result;
        switch (below(8)) {
        case 0:
            break;
        case 1:
            result["CharacterSet"] = QString();
            break;
        case 2:
            result["CharacterSet"] = QStringLiteral("abcdefghijklmnopqrstuvwxyz");
            break;
        case 3:
            result["CharacterSet"] = Letters + QStringLiteral(" -");
            break;
        case 4:
            // Accented and astral letters count as word characters too.
            result["CharacterSet"] =
                Letters + QString::fromUtf8("\xC3\xA9\xC3\x89\xF0\x90\x90\x80\xF0\x90\x90\xA8");
            break;
        default:
            result["CharacterSet"] = Letters;
            break;
        }
        result["CaseInsensitive"] = chance(50);
        for (int c = 0; c < SyntaxColoring::CategoryCount; ++c) {
            if (chance(30)) {
                continue;
            }
            const QString key = SyntaxColoring::keyForCategory(SyntaxColoring::Category(c));
            if (c >= SyntaxColoring::Keywords && c <= SyntaxColoring::Values) {
                result[key] = chance(2) ? QVariant(QStringLiteral("if")) : QVariant(wordList());
            } else {
                const bool blocks =
                    c == SyntaxColoring::Blockwords || c == SyntaxColoring::Comments;
                result[key] = entries(blocks);
            }
        }
        return result;
    }

    Range range(qsizetype length)
    {
        if (length == 0 || chance(20)) {
            return {0, length};
        }
        const qsizetype start = below(int(length));
        return {start, below(int(length - start)) + 1};
    }

private:
    std::mt19937 _random;
};

// The text handed out in pieces of three units (a pair kept whole), as a store of tiny chunks
// would: readers that walk it piece by piece meet delimiters cut in two everywhere.
class ScatteredText final : public TextSource
{
public:
    explicit ScatteredText(const QString& text)
        : _text(text)
    {}

    qsizetype size() const override { return _text.size(); }
    QStringView view(qsizetype from, qsizetype to) override
    {
        return QStringView(_text).sliced(from, to - from);
    }
    QStringView piece(qsizetype from, qsizetype to) override
    {
        qsizetype end = std::min(to, (from / 3 + 1) * 3);
        if (end < to && _text[end - 1].isHighSurrogate() && _text[end].isLowSurrogate()) {
            ++end;
        }
        return QStringView(_text).sliced(from, end - from);
    }

private:
    const QString& _text;
};

void expectSame(const QVariantMap& definition, const QString& text, const SyntaxColoring& coloring,
                Range range, const char* when)
{
    const auto expected =
        ReferenceColoring::runs(ReferenceColoring::color(definition, text, range));
    ASSERT_EQ(coloring.runs(), expected)
        << when << "\ntext: " << text.toStdString() << "\nrange: " << range.location << "+"
        << range.length << "\ndefinition: "
        << QJsonDocument::fromVariant(definition).toJson(QJsonDocument::Compact).toStdString();
}

} // namespace

TEST(SyntaxColoringDifferential, FullAndPartialColouringMatchTheModel)
{
    Generator random(20261123);
    for (int round = 0; round < 1500; ++round) {
        const QVariantMap definition = random.definition();
        const QString text = random.text(random.below(60));
        const Range range = random.range(text.size());
        SyntaxColoringEngine engine(definition);
        expectSame(definition, text, engine.coloringRange(text, range), range, "first colouring");
        if (HasFatalFailure()) {
            return;
        }
    }
}

TEST(SyntaxColoringDifferential, RecolouringAfterEditsMatchesTheModel)
{
    Generator random(4242);
    for (int round = 0; round < 400; ++round) {
        const QVariantMap definition = random.definition();
        QString text = random.text(random.below(120));
        SyntaxColoringEngine engine(definition);
        engine.coloringRange(text, Range(0, text.size()));
        // The same edits made to a document, coloured through its store.
        ColouredDocument copy(text, definition);
        ScatteredText scatteredText(text);
        SyntaxColoringEngine scattered(definition);
        scattered.coloringRange(scatteredText, Range(0, text.size()));
        // A colouring kept by its caller shows the text it was made for, whatever edits
        // the engine follows afterwards (outside its short range, by its blocks).
        SyntaxColoring kept = engine.coloringRange(text, Range(0, 1));
        std::vector<SyntaxColoring::Run> keptRuns = kept.runs();
        for (int edit = 0; edit < 12; ++edit) {
            // Sometimes several edits arrive before the next colouring.
            for (int burst = random.chance(25) ? 3 : 1; burst > 0; --burst) {
                const qsizetype at = random.below(int(text.size()) + 1);
                const qsizetype removed =
                    random.chance(50)
                        ? random.below(int(std::min<qsizetype>(8, text.size() - at)) + 1)
                        : 0;
                const QString inserted =
                    random.chance(70) ? random.text(random.below(3)) : QString();
                text.replace(at, removed, inserted);
                engine.textDidChange(at, removed, inserted.size());
                scattered.textDidChange(at, removed, inserted.size());
                copy.replace(at, removed, inserted);
            }
            const Range range = random.range(text.size());
            expectSame(definition, text, engine.coloringRange(text, range), range, "after an edit");
            ASSERT_EQ(kept.runs(), keptRuns) << "a colouring handed out earlier changed";
            if (random.chance(30)) {
                kept = engine.coloringRange(text, Range(0, 1));
                keptRuns = kept.runs();
            }
            ASSERT_EQ(copy.store.text().string(), text);
            expectSame(definition, text, copy.engine.coloringRange(copy.source, range), range,
                       "through the document's store");
            expectSame(definition, text, scattered.coloringRange(scatteredText, range), range,
                       "through a text in small pieces");
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST(SyntaxColoringDifferential, ATextChangedBehindTheEnginesBackIsRescanned)
{
    const QVariantMap definition{{"Comments", QVariantList{block("/*", "*/")}}};
    SyntaxColoringEngine engine(definition);
    engine.coloringRange(QStringLiteral("/* a */ b"), Range(0, 9));
    const QString changed = QStringLiteral("b /* a */ c");
    expectSame(definition, changed, engine.coloringRange(changed, Range(0, 1)), Range(0, 1),
               "without being told");
}

namespace {

// The given runs cut to `window`.
std::vector<SyntaxColoring::Run> clipped(const std::vector<SyntaxColoring::Run>& runs, Range window)
{
    std::vector<SyntaxColoring::Run> result;
    for (const SyntaxColoring::Run& run : runs) {
        const qsizetype start = std::max(run.location, window.location);
        const qsizetype end = std::min(run.max(), window.max());
        if (start < end) {
            result.push_back({start, end - start, run.category});
        }
    }
    return result;
}

} // namespace

TEST(SyntaxColoringDifferential, AWindowOfTheColouringIsTheColouringCutToTheWindow)
{
    Generator random(77);
    for (int round = 0; round < 300; ++round) {
        const QVariantMap definition = random.definition();
        const QString text = random.text(random.below(60));
        SyntaxColoringEngine engine(definition);
        const SyntaxColoring coloring = engine.coloringRange(text, random.range(text.size()));
        const Range window = random.range(text.size());
        ASSERT_EQ(coloring.runsInRange(window), clipped(coloring.runs(), window))
            << text.toStdString();
    }
}

namespace {

// A real file edited with the delimiters and words of its language.
void typeInto(const QString& path, const QString& definitionName, std::vector<QString> typed)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    typed.insert(typed.end(), {"x", "\n", " ", "'", "\""});
    expectTypingMatchesModel(shipped(definitionName), QString::fromUtf8(file.readAll()), typed, 120,
                             path.toStdString());
}

} // namespace

TEST(SyntaxColoringDifferential, TypingInRealFilesMatchesTheModel)
{
    // Files this machine is likely to hold; one that is missing is passed over.
    typeInto("/usr/include/elf.h", "C", {"/*", "*/", "//", "int ", "#define X 1\n", "/* a */"});
    typeInto("/usr/lib/python3.11/textwrap.py", "Python",
             {"\"\"\"", "'''", "#", "def f():\n", "class C:\n"});
    typeInto("/usr/share/doc/base-passwd/users-and-groups.html", "HTML",
             {"<!--", "-->", "<div>", "</div>", "href=", "=\"a\"", "&amp;", "<?", "?>"});
}
