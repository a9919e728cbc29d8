// Each shipped definition on a short program of its language (tests/data/samples): the
// words, literals and comments get the colours a reader expects, words inside longer words
// stay plain, and the function list names the program's definitions. Every colouring is
// also checked against the step-by-step model.
#include "SyntaxTestSupport.h"
#include "TestSupport.h"
#include "syntax/FunctionMenu.h"
#include "syntax/SyntaxManager.h"

#include <gtest/gtest.h>

using namespace SyntaxTestSupport;

namespace {

struct Sample {
    const char* definition;
    const char* file;
    /// The picture letter every character of a token gets ('.' for none), a space, and the
    /// token, looked for at its first occurrence in the sample.
    std::vector<const char*> colours;
    QStringList functions;
};

QStringList functionTitles(const QVariantMap& definition, const QString& text)
{
    SyntaxManager manager;
    const FunctionMenu menu(manager.makeFunctionDefinitionWithString(text, definition), text);
    QStringList result;
    for (size_t i = 1; i < menu.items().size(); ++i) {
        const FunctionMenu::Item& item = menu.items()[i];
        if (i > 1 || !item.isSeparator) {
            result.append(item.isSeparator ? QStringLiteral("-") : item.title);
        }
    }
    return result;
}

const Sample samples[] = {
    // Two slashes inside a string begin a comment: the comment colour wins from there.
    {"C",
     "C.txt",
     {"P #include <stdio.h>", "C /* entry */", "K int", ". main", "K void", ". printf", "S \"%d ",
      "C // no\", 0x1F); }"},
     {"main"}},
    {"C++",
     "Cpp.txt",
     {"P #include <vector>", "K namespace", "K public", "X std", "S u8\"x\"", "H 'a'",
      "N 1'000'000", "C // note", "V nullptr"},
     {"app", "Box", "size", "Box::name"}},
    {"Objective C",
     "ObjectiveC.txt",
     {"P #import <Foundation/Foundation.h>", "K @interface", "K nonatomic", "X NSString",
      "S @\"%d\"", "K self", "V nil", "V YES"},
     {"Foo", "name", "Foo (Extra)", "-", "Actions", "- (void)run:(int)n"}},
    {"Java",
     "Java.txt",
     {"K package", "P @FunctionalInterface", "K sealed", "N 0x1F", "C // set", "X List",
      "S \"\"\"\n            block\"\"\"", "V null"},
     {"Shape", "Shape", "items", "Point"}},
    {"JavaScript",
     "JavaScript.txt",
     {"P 'use strict'", "K class", "H /ab+c/gi", "C // find", "K await", "S `${url}?q=1`", "V null",
      "N 42n"},
     {"Widget", "load", "add", "gen"}},
    {"PHP",
     "PHP.txt",
     {"P <?php", "P #[Attribute]", "K final", ". $list", "V $this", "X array_map", "S 'trim'",
      "C // clean", ". $class", "V NULL", "S <<<EOT\nHello\nEOT"},
     {"App", "User", "LIMIT", "__construct", "helper"}},
    {"Perl",
     "Perl.txt",
     {"P #!/usr/bin/perl", "K package", "K my", "N 0x10", "V @_", "X print", "S \"Hello\\n\"",
      "H /^h/i", "C # greet", "X scalar", "C =head1 NAME\n\nDocs here\n\n=cut"},
     {"My::Module", "run"}},
    {"Ruby",
     "Ruby.txt",
     {"C # frozen_string_literal: true", "K module", "X attr_reader", "H :radius", "N 1.5", "V nil",
      "K defined?", "S \"r=#{@radius}\"", "C # note", "C =begin\ndoc\n=end"},
     {"Shapes", "Circle", "radius", "MAX", "initialize", "self.unit?", "area"}},
    {"ShellScript",
     "ShellScript.txt",
     {"P #!/bin/sh", "C # prepare", "X set", "S \"world\"", "X local", "H ${1:-$NAME}", "K if",
      "X echo", "K fi", "H $$", "N 2", "S <<EOF\nbody\nEOF", ". -type", ". --help"},
     {"greet", "cleanup"}},
    {"SQL",
     "SQL.txt",
     {"C -- schema", "K CREATE", "X SERIAL", ". name", "V NULL", "S 'n''a'", "K create",
      "S $$\n  select i + 1;\n$$", "C /* done */", "X count", "H \"users\"", "N 10"},
     {"users", "add_one"}},
    {"CCS",
     "CCS.txt",
     {"P @import", "X url", "S \"base.css\"", "C /* layout */", "H :hover", "K color", "N #fff",
      "N -4px", "N 1.5em", "V none", "V !important", ". -webkit-transition", "N .3s", "K max-width",
      "V sans-serif"},
     {".card > a:hover, .card:focus", "@media (max-width: 600px)", "body"}},
    {"XML",
     "XML.txt",
     {"P <?xml version=\"1.0\"?>", "P <!DOCTYPE note SYSTEM \"note.dtd\">", "K xsl:stylesheet",
      "V xmlns:xsl", "S \"http://www.w3.org/1999/XSL/Transform\"", "C <!-- a comment -->", "B <p",
      "H &amp;", "S <![CDATA[ <raw> ]]>"},
     {"/", "intro"}},
    {"Haskell",
     "Haskell.txt",
     {"C {-# LANGUAGE GADTs #-}", "K module", "K qualified", "C -- | entry", "X Double",
      "K deriving", "X putStrLn", "S \"hi\"", "H 'x'", ". foldl'", "N 2.5e3", ". -->"},
     {"Main", "Shape", "Container", "empty", "Container []", "area"}},
    {"AppleScript",
     "AppleScript.txt",
     {"P use scripting additions", "K property", "S \"Hello\"", "C (* block\n   comment *)",
      "K Tell", "X activate", "X display dialog", "C -- say it", "N 3.5", "V pi", "V missing value",
      "X log"},
     {"greeting", "run", "sayHello"}},
    {"Plain Text", "PlainText.txt", {". int main() { return 0; } // \"x\" /* y */"}, {}},
};

void PrintTo(const Sample& sample, std::ostream* os)
{
    *os << sample.definition;
}

class ShippedDefinitionSample : public testing::TestWithParam<Sample>
{
};

} // namespace

TEST_P(ShippedDefinitionSample, ColoursAndListsTheProgram)
{
    const Sample& sample = GetParam();
    const QVariantMap definition = shipped(sample.definition);
    ASSERT_FALSE(definition.isEmpty());
    const QString text = QString::fromUtf8(TestSupport::readFile(
        QStringLiteral(TESSARAN_TEST_DATA "/samples/") + QLatin1String(sample.file)));
    ASSERT_FALSE(text.isEmpty());
    const std::string picture = colour(definition, text);
    for (const char* expectation : sample.colours) {
        const QString token = QString::fromUtf8(expectation + 2);
        const qsizetype at = text.indexOf(token);
        ASSERT_GE(at, 0) << expectation;
        EXPECT_EQ(picture.substr(size_t(at), size_t(token.size())),
                  std::string(size_t(token.size()), expectation[0]))
            << expectation;
    }
    EXPECT_EQ(functionTitles(definition, text), sample.functions);
}

INSTANTIATE_TEST_SUITE_P(Languages, ShippedDefinitionSample, testing::ValuesIn(samples),
                         [](const auto& info) { return testName(info.param.definition); });
