// The definitions the application ships, loaded from its resources and run over real
// files of this machine: every pattern compiles, no pass runs into the time limit, the
// function list is built, and the engine agrees with the step-by-step model while the
// files are edited.
#include "SyntaxTestSupport.h"
#include "app/DocumentController.h"
#include "syntax/FunctionMenu.h"
#include "syntax/SyntaxManager.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QHash>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <numeric>

using namespace SyntaxTestSupport;

namespace {

// Every pattern of the definition compiles with the options its pass uses; function
// entries name a kind the pop-up knows and have the group they list.
void expectPatternsCompile(const QString& name, const QVariantMap& definition)
{
    const unsigned options = definition.value("CaseInsensitive").toBool() ? 17u : 16u;
    for (int c = 0; c < SyntaxColoring::CategoryCount; ++c) {
        const QString key = SyntaxColoring::keyForCategory(SyntaxColoring::Category(c));
        if (c >= SyntaxColoring::Keywords && c <= SyntaxColoring::Values) {
            continue;
        }
        for (const QVariant& entry : definition.value(key).toList()) {
            const QVariantMap map = entry.toMap();
            if (map.contains("regularExpression")) {
                const Regex regex(map.value("regexPattern").toString(), options);
                EXPECT_TRUE(regex.isValid()) << name.toStdString() << " " << key.toStdString()
                                             << ": " << regex.errorString().toStdString();
            } else {
                EXPECT_FALSE(map.value("startStr").toString().isEmpty()) << name.toStdString();
                EXPECT_NE(map.value("startStr"), map.value("endStr")) << name.toStdString();
            }
        }
    }
    for (const QVariant& entry : definition.value("FunctionDefinition").toList()) {
        const QVariantMap map = entry.toMap();
        const Regex regex(map.value("regexPattern").toString(), 17);
        EXPECT_TRUE(regex.isValid())
            << name.toStdString() << ": " << regex.errorString().toStdString();
        EXPECT_GE(regex.captureGroupCount(), map.value("AllMatching").toBool() ? 0 : 1)
            << name.toStdString() << ": " << regex.pattern().toStdString();
        if (map.contains("KeyType")) {
            EXPECT_TRUE(FunctionMenu::kindNames().contains(map.value("KeyType").toString()))
                << name.toStdString() << ": " << map.value("KeyType").toString().toStdString();
        }
    }
}

} // namespace

TEST(ShippedDefinitions, AllLoadUnderTheirOwnNamesAndEveryPatternCompiles)
{
    QHash<QString, QString> owners; // extension -> definition
    for (const QString& name : DocumentController::shippedSyntaxNames()) {
        const QVariantMap definition = shipped(name);
        ASSERT_FALSE(definition.isEmpty()) << name.toStdString();
        EXPECT_EQ(definition.value("Name").toString(), name);
        EXPECT_FALSE(definition.value("CharacterSet").toString().isEmpty()) << name.toStdString();
        const QStringList extensions = definition.value("Extensions").toStringList();
        EXPECT_FALSE(extensions.isEmpty()) << name.toStdString();
        for (const QString& extension : extensions) {
            // The folder's order would otherwise decide which one a file gets.
            EXPECT_FALSE(owners.contains(extension))
                << extension.toStdString() << " in " << name.toStdString() << " and "
                << owners.value(extension).toStdString();
            owners.insert(extension, name);
        }
        expectPatternsCompile(name, definition);
    }
    for (const auto& [extension, name] :
         {std::pair{"c", "C"}, {"hpp", "C++"}, {"bash", "ShellScript"}, {"txt", "Plain Text"}}) {
        EXPECT_EQ(owners.value(extension), name) << extension;
    }
}

namespace {

struct Source {
    const char* folder; // a '*' in a part stands for any folder
    const char* nameFilter;
    bool recursive = false;
};

struct Language {
    const char* name;
    std::vector<Source> sources;
    std::vector<SyntaxColoring::Category> coloured;
    /// Files found through "*" must begin with a "#!" line naming such an interpreter.
    const char* interpreter = nullptr;
};

constexpr int MaxFiles = 12;
constexpr qint64 MaxFileSize = 160 * 1024;

QStringList expandedFolders(const QString& folder)
{
    QStringList result = {QString()};
    for (const QString& part : folder.split('/', Qt::SkipEmptyParts)) {
        QStringList next;
        for (const QString& parent : result) {
            if (!part.contains('*')) {
                next.append(parent + '/' + part);
                continue;
            }
            for (const QString& name : QDir(parent + '/').entryList({part}, QDir::Dirs)) {
                next.append(parent + '/' + name);
            }
        }
        result = next;
    }
    return result;
}

bool startsWithInterpreter(const QString& path, const QString& interpreter)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return false;
    }
    const QString line = QString::fromLatin1(file.readLine(128));
    static const QRegularExpression shebang(QStringLiteral("^#!\\s*\\S*/(?:env\\s+)?(\\w+)"));
    const QRegularExpressionMatch match = shebang.match(line);
    return match.hasMatch() && QRegularExpression(interpreter).match(match.captured(1)).hasMatch();
}

QStringList findFiles(const Language& language)
{
    QStringList result;
    for (const Source& source : language.sources) {
        for (const QString& folder : expandedFolders(source.folder)) {
            QDirIterator it(folder, {source.nameFilter}, QDir::Files,
                            source.recursive ? QDirIterator::Subdirectories
                                             : QDirIterator::NoIteratorFlags);
            while (it.hasNext() && result.size() < MaxFiles) {
                const QString path = it.next();
                const QFileInfo info(path);
                if (info.size() == 0 || info.size() > MaxFileSize || !info.isReadable()) {
                    continue;
                }
                if (language.interpreter && QString(source.nameFilter) == "*" &&
                    !startsWithInterpreter(path, language.interpreter)) {
                    continue;
                }
                result.append(path);
            }
        }
    }
    return result;
}

QString readText(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    QString text = QString::fromUtf8(file.readAll());
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(u'\r', u'\n');
    return text;
}

// What a person would type into a file of the language: its block and comment
// delimiters, quotes, words and line breaks.
std::vector<QString> typedStrings(const QVariantMap& definition)
{
    std::vector<QString> result = {"x", "\n", " ", "'", "\"", "#", "//", "--", "(", ")"};
    for (const char* key : {"Comments", "Blockwords"}) {
        for (const QVariant& entry : definition.value(key).toList()) {
            for (const char* end : {"startStr", "endStr"}) {
                if (entry.toMap().contains(end)) {
                    result.push_back(entry.toMap().value(end).toString());
                }
            }
        }
    }
    for (const char* key : {"Keywords", "Commands"}) {
        const QVariantList words = definition.value(key).toList();
        for (int i = 0; i < words.size() && i < 4; ++i) {
            result.push_back(words[i].toString() + ' ');
        }
    }
    return result;
}

void PrintTo(const Language& language, std::ostream* os)
{
    *os << language.name;
}

class ShippedDefinitionOnRealFiles : public testing::TestWithParam<Language>
{
};

} // namespace

TEST_P(ShippedDefinitionOnRealFiles, ColoursAndListsFunctionsWithinTheTimeLimit)
{
    const Language& language = GetParam();
    const QVariantMap definition = shipped(language.name);
    ASSERT_FALSE(definition.isEmpty());
    const QStringList paths = findFiles(language);
    if (paths.isEmpty()) {
        QStringList places;
        for (const Source& source : language.sources) {
            places.append(QStringLiteral("%1/%2").arg(source.folder, source.nameFilter));
        }
        GTEST_SKIP() << "no " << language.name << " files on this machine (looked for "
                     << places.join(", ").toStdString() << ")";
    }

    std::array<qsizetype, SyntaxColoring::CategoryCount> coloured{};
    int functionItems = 0;
    SyntaxManager manager;
    for (const QString& path : paths) {
        const QString text = readText(path);
        SyntaxColoringEngine engine(definition);
        const SyntaxColoring coloring = engine.coloringRange(text, Range(0, text.size()));
        EXPECT_FALSE(coloring.wasInterrupted()) << path.toStdString();
        for (const SyntaxColoring::Run& run : coloring.runs()) {
            coloured[run.category] += run.length;
        }
        const auto items = manager.makeFunctionDefinitionWithString(text, definition);
        if (definition.contains("FunctionDefinition")) {
            EXPECT_TRUE(items) << "the function list failed on " << path.toStdString();
            functionItems += items ? int(items->size()) : 0;
        }
    }
    for (SyntaxColoring::Category category : language.coloured) {
        EXPECT_GT(coloured[category], 0) << SyntaxColoring::keyForCategory(category).toStdString()
                                         << " in " << paths.join(", ").toStdString();
    }
    if (definition.contains("FunctionDefinition")) {
        EXPECT_GT(functionItems, 0) << paths.join(", ").toStdString();
    } else {
        // Plain text: nothing is coloured.
        EXPECT_EQ(std::accumulate(coloured.begin(), coloured.end(), qsizetype(0)), 0);
    }

    for (int i = 0; i < paths.size() && i < 2; ++i) {
        expectTypingMatchesModel(definition, readText(paths[i]), typedStrings(definition), 12,
                                 paths[i].toStdString());
        if (HasFatalFailure()) {
            return;
        }
    }
}

namespace {

using C = SyntaxColoring::Category;
const Language languages[] = {
    {"C", {{"/usr/include", "*.h"}}, {C::Keywords, C::Comments, C::Preprocessor, C::Numbers}},
    {"C++",
     {{"/usr/include/c++/*/bits", "*.h"}, {"/usr/include/c++", "*.h", true}},
     {C::Keywords, C::Comments, C::Preprocessor}},
    {"Objective C",
     {{"/usr/share/cmake*/Modules", "*.m"}, {"/usr/share/doc", "*.m", true}},
     {C::Keywords, C::Comments, C::Preprocessor}},
    {"Java",
     {{"/usr/share/doc", "*.java", true}, {"/usr/lib/jvm", "*.java", true}},
     {C::Keywords, C::Comments}},
    {"JavaScript",
     {{"/usr/share/javascript", "*.js", true},
      {"/usr/share/doc", "*.js", true},
      {"/usr/lib/node_modules/npm/lib", "*.js", true}},
     {C::Keywords, C::Strings, C::Comments}},
    {"PHP",
     {{"/usr/share/php", "*.php", true},
      {"/usr/share/doc", "*.php", true},
      {"/usr/lib/google-cloud-sdk/platform/google_appengine/php", "*.php", true}},
     {C::Keywords, C::Strings, C::Comments, C::Preprocessor}},
    {"Perl",
     {{"/usr/share/perl/*", "*.pm"}, {"/usr/share/perl5", "*.pm", true}},
     {C::Keywords, C::Commands, C::Strings, C::Comments}},
    {"Python", {{"/usr/lib/python3*", "*.py"}}, {C::Keywords, C::Strings, C::Comments}},
    {"Ruby",
     {{"/usr/lib/ruby", "*.rb", true}, {"/usr/share/ruby", "*.rb", true}},
     {C::Keywords, C::Strings, C::Comments}},
    {"ShellScript",
     {{"/usr/bin", "*"}, {"/etc", "*.sh", true}, {"/usr/share/doc", "*.sh", true}},
     {C::Keywords, C::Commands, C::Strings, C::Comments},
     "^(?:ba|da|k|z)?sh$"},
    {"SQL",
     {{"/usr/share/postgresql/*/extension", "*.sql"}, {"/usr/share/doc", "*.sql", true}},
     {C::Keywords, C::Comments}},
    {"CCS",
     {{"/usr/share/doc", "*.css", true}, {"/usr/share/javascript", "*.css", true}},
     {C::Keywords, C::Comments, C::Numbers}},
    {"HTML", {{"/usr/share/doc", "*.html", true}}, {C::Keywords, C::Commands, C::Strings}},
    {"XML",
     {{"/usr/share/sgml", "*.xsl", true}, {"/usr/share/xml", "*.xml", true}},
     {C::Blockwords, C::Strings}},
    {"Haskell",
     {{"/usr/share/doc", "*.hs", true}, {"/usr/lib/ghc", "*.hs", true}},
     {C::Keywords, C::Comments}},
    {"AppleScript", {{"/usr/share/doc", "*.applescript", true}}, {C::Keywords, C::Comments}},
    {"Plain Text", {{"/usr/share/doc", "*.txt", true}}, {}},
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Languages, ShippedDefinitionOnRealFiles, testing::ValuesIn(languages),
                         [](const auto& info) { return testName(info.param.name); });

TEST(ShippedDefinitions, NoPatternRunsIntoTheTimeLimitOnTextOfAnotherLanguage)
{
    // A file opened with the wrong definition, or a definition chosen by hand, must not
    // stop any pass: the patterns of every definition meet every other language here.
    QString mixed;
    for (const Language& language : languages) {
        const QStringList paths = findFiles(language);
        if (!paths.isEmpty()) {
            mixed += readText(paths.first()).left(24 * 1024);
        }
    }
    if (mixed.isEmpty()) {
        GTEST_SKIP() << "no source files on this machine";
    }
    SyntaxManager manager;
    for (const QString& name : DocumentController::shippedSyntaxNames()) {
        const QVariantMap definition = shipped(name);
        SyntaxColoringEngine engine(definition);
        EXPECT_FALSE(engine.coloringRange(mixed, Range(0, mixed.size())).wasInterrupted())
            << name.toStdString();
        if (definition.contains("FunctionDefinition")) {
            EXPECT_TRUE(manager.makeFunctionDefinitionWithString(mixed, definition))
                << name.toStdString();
        }
    }
}
