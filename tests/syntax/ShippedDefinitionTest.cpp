// The definitions the application ships, loaded from its resources and run over real
// files of this machine: every pattern compiles, no pass runs into the time limit and the
// function list is built without failing.
#include "SyntaxTestSupport.h"
#include "platform/PropertyList.h"
#include "syntax/SyntaxManager.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>

#include <gtest/gtest.h>

namespace {

QVariantMap shipped(const QString& name)
{
    return PropertyList::readDictionary(QStringLiteral(":/SyntaxDefinition/%1.plist").arg(name))
        .value_or(QVariantMap());
}

QStringList filesMatching(const QString& folder, const QString& nameFilter, bool recursive)
{
    QStringList result;
    QDirIterator it(folder, {nameFilter}, QDir::Files,
                    recursive ? QDirIterator::Subdirectories : QDirIterator::NoIteratorFlags);
    while (it.hasNext()) {
        result.append(it.next());
    }
    result.sort();
    return result;
}

// Every pattern of the definition compiles with the options its pass uses.
void expectPatternsCompile(const QVariantMap& definition)
{
    const unsigned options = definition.value("CaseInsensitive").toBool() ? 17u : 16u;
    for (int c = 0; c < SyntaxColoring::CategoryCount; ++c) {
        const QString key = SyntaxColoring::keyForCategory(SyntaxColoring::Category(c));
        for (const QVariant& entry : definition.value(key).toList()) {
            const QVariantMap map = entry.toMap();
            if (map.contains("regularExpression")) {
                const Regex regex(map.value("regexPattern").toString(), options);
                EXPECT_TRUE(regex.isValid())
                    << key.toStdString() << ": " << regex.errorString().toStdString();
            }
        }
    }
    for (const QVariant& entry : definition.value("FunctionDefinition").toList()) {
        const Regex regex(entry.toMap().value("regexPattern").toString(), 17);
        EXPECT_TRUE(regex.isValid()) << regex.errorString().toStdString();
    }
}

struct Totals {
    int files = 0;
    int functionItems = 0;
    std::array<qsizetype, SyntaxColoring::CategoryCount> coloured{};
};

Totals colourFiles(const QVariantMap& definition, const QStringList& paths)
{
    Totals totals;
    SyntaxManager manager;
    for (const QString& path : paths) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            continue;
        }
        QString text = QString::fromUtf8(file.readAll());
        text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
        text.replace(u'\r', u'\n');
        SyntaxColoringEngine engine(definition);
        const SyntaxColoring coloring = engine.coloringRange(text, Range(0, text.size()));
        EXPECT_FALSE(coloring.wasInterrupted()) << path.toStdString();
        for (const SyntaxColoring::Run& run : coloring.rangeRuns()) {
            totals.coloured[run.category] += run.length;
        }
        const auto items = manager.makeFunctionDefinitionWithString(text, definition);
        EXPECT_TRUE(items) << path.toStdString();
        totals.functionItems += items ? int(items->size()) : 0;
        ++totals.files;
    }
    return totals;
}

} // namespace

TEST(ShippedDefinitions, LoadFromTheResourcesUnderTheirOwnNames)
{
    for (const QString name : {"C", "Python", "HTML"}) {
        const QVariantMap definition = shipped(name);
        ASSERT_FALSE(definition.isEmpty()) << name.toStdString();
        EXPECT_EQ(definition.value("Name").toString(), name);
        EXPECT_FALSE(definition.value("Extensions").toStringList().isEmpty());
        expectPatternsCompile(definition);
    }
    EXPECT_TRUE(shipped("C").value("Extensions").toStringList().contains("h"));
    EXPECT_TRUE(shipped("Python").value("Extensions").toStringList().contains("py"));
    EXPECT_TRUE(shipped("HTML").value("Extensions").toStringList().contains("html"));
}

TEST(ShippedDefinitions, CColoursTheSystemHeaders)
{
    const QStringList paths = filesMatching("/usr/include", "*.h", false);
    if (paths.isEmpty()) {
        GTEST_SKIP() << "no headers in /usr/include";
    }
    const Totals totals = colourFiles(shipped("C"), paths);
    EXPECT_GT(totals.coloured[SyntaxColoring::Keywords], 0);
    EXPECT_GT(totals.coloured[SyntaxColoring::Comments], 0);
    EXPECT_GT(totals.coloured[SyntaxColoring::Preprocessor], 0);
    EXPECT_GT(totals.coloured[SyntaxColoring::Numbers], 0);
    EXPECT_GT(totals.functionItems, 0);
}

TEST(ShippedDefinitions, PythonColoursTheStandardLibrary)
{
    QStringList paths;
    for (const QString& folder : QDir("/usr/lib").entryList({"python3*"}, QDir::Dirs)) {
        paths += filesMatching("/usr/lib/" + folder, "*.py", false);
    }
    if (paths.isEmpty()) {
        GTEST_SKIP() << "no Python library on this machine";
    }
    const Totals totals = colourFiles(shipped("Python"), paths);
    EXPECT_GT(totals.coloured[SyntaxColoring::Keywords], 0);
    EXPECT_GT(totals.coloured[SyntaxColoring::Strings], 0);
    EXPECT_GT(totals.coloured[SyntaxColoring::Comments], 0);
    EXPECT_GT(totals.functionItems, 0);
}

TEST(ShippedDefinitions, HtmlColoursTheInstalledDocumentation)
{
    const QStringList paths = filesMatching("/usr/share/doc", "*.html", true);
    if (paths.isEmpty()) {
        GTEST_SKIP() << "no HTML documentation on this machine";
    }
    const Totals totals = colourFiles(shipped("HTML"), paths);
    EXPECT_GT(totals.coloured[SyntaxColoring::Keywords], 0);
    EXPECT_GT(totals.coloured[SyntaxColoring::Commands], 0);
    EXPECT_GT(totals.coloured[SyntaxColoring::Strings], 0);
    EXPECT_GT(totals.functionItems, 0);
}

TEST(ShippedDefinitions, TheCDefinitionColoursASmallProgramAsExpected)
{
    const QString text = QStringLiteral("#include <stdio.h>\n"
                                        "/* entry */\n"
                                        "int main(void) { printf(\"%d // no\", 0x1F); }\n");
    SyntaxColoringEngine engine(shipped("C"));
    const std::string picture = SyntaxTestSupport::picture(
        engine.coloringRange(text, Range(0, text.size())).runs(), text.size());
    EXPECT_EQ(picture.substr(0, 31), "PPPPPPPPPPPPPPPPPP.CCCCCCCCCCC.");
    // Two slashes inside a string begin a comment: the comment colour wins from there.
    EXPECT_EQ(picture.substr(31), "KKK......KKKK...........SSSSCCCCCCCCCCCCCCCC.");

    SyntaxManager manager;
    const auto items = manager.makeFunctionDefinitionWithString(text, shipped("C"));
    ASSERT_TRUE(items);
    ASSERT_EQ(items->size(), 1);
    EXPECT_EQ(items->at(0).toMap().value("RangeString").toString(), "{35, 4}");
    EXPECT_EQ(items->at(0).toMap().value("KeyType").toString(), "Function");
}
