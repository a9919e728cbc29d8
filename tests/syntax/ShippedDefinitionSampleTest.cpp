// Each shipped definition on a short program of its language: the words, literals and
// comments get the colours a reader expects, words inside longer words stay plain, and
// the function list names the program's definitions. Every colouring is also checked
// against the step-by-step model.
#include "SyntaxTestSupport.h"
#include "syntax/FunctionMenu.h"
#include "syntax/SyntaxManager.h"

#include <gtest/gtest.h>

using namespace SyntaxTestSupport;

namespace {

struct Expectation {
    const char* token; // its first occurrence in the sample
    char letter;       // the picture letter every character of it gets ('.' for none)
};

struct Sample {
    const char* definition;
    const char* text;
    std::vector<Expectation> colours;
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
     "#include <stdio.h>\n"
     "/* entry */\n"
     "int main(void) { printf(\"%d // no\", 0x1F); }\n",
     {{"#include <stdio.h>", 'P'},
      {"/* entry */", 'C'},
      {"int", 'K'},
      {"main", '.'},
      {"void", 'K'},
      {"printf", '.'},
      {"\"%d ", 'S'},
      {"// no\", 0x1F); }", 'C'}},
     {"main"}},
    {"C++",
     "#include <vector>\n"
     "namespace app {\n"
     "template <typename T> class Box : public Base {\n"
     "public:\n"
     "    int size() const { return n; }\n"
     "};\n"
     "std::string Box::name(int i) {\n"
     "    auto s = u8\"x\"; char c = 'a'; int n = 1'000'000; // note\n"
     "    return nullptr;\n"
     "}\n"
     "}\n",
     {{"#include <vector>", 'P'},
      {"namespace", 'K'},
      {"public", 'K'},
      {"std", 'X'},
      {"u8\"x\"", 'S'},
      {"'a'", 'H'},
      {"1'000'000", 'N'},
      {"// note", 'C'},
      {"nullptr", 'V'}},
     {"app", "Box", "size", "Box::name"}},
    {"Objective C",
     "#import <Foundation/Foundation.h>\n"
     "@interface Foo : NSObject\n"
     "@property (nonatomic) NSString *name;\n"
     "- (void)run:(int)n;\n"
     "@end\n"
     "@implementation Foo (Extra)\n"
     "#pragma mark - Actions\n"
     "- (void)run:(int)n {\n"
     "    NSLog(@\"%d\", n); self.name = nil; return YES;\n"
     "}\n"
     "@end\n",
     {{"#import <Foundation/Foundation.h>", 'P'},
      {"@interface", 'K'},
      {"nonatomic", 'K'},
      {"NSString", 'X'},
      {"@\"%d\"", 'S'},
      {"self", 'K'},
      {"nil", 'V'},
      {"YES", 'V'}},
     {"Foo", "name", "Foo (Extra)", "-", "Actions", "- (void)run:(int)n"}},
    {"Java",
     "package demo;\n"
     "@FunctionalInterface\n"
     "public sealed class Shape permits Circle {\n"
     "    private final int size = 0x1F;\n"
     "    public Shape(int size) {\n"
     "        this.size = size; // set\n"
     "    }\n"
     "    public static <T> List<T> items(String name) throws IOException {\n"
     "        var text = \"\"\"\n"
     "            block\"\"\";\n"
     "        return null;\n"
     "    }\n"
     "}\n"
     "record Point(int x, int y) {}\n",
     {{"package", 'K'},
      {"@FunctionalInterface", 'P'},
      {"sealed", 'K'},
      {"0x1F", 'N'},
      {"// set", 'C'},
      {"List", 'X'},
      {"\"\"\"\n            block\"\"\"", 'S'},
      {"null", 'V'}},
     {"Shape", "Shape", "items", "Point"}},
    {"JavaScript",
     "'use strict';\n"
     "import { a } from './a.js';\n"
     "export default class Widget extends Base {\n"
     "  static #count = 0;\n"
     "  async load(url) {\n"
     "    const re = /ab+c/gi; // find\n"
     "    return await fetch(`${url}?q=1`) ?? null;\n"
     "  }\n"
     "}\n"
     "const add = (x, y) => x + y;\n"
     "function* gen() { yield 42n; }\n",
     {{"'use strict'", 'P'},
      {"class", 'K'},
      {"/ab+c/gi", 'H'},
      {"// find", 'C'},
      {"await", 'K'},
      {"`${url}?q=1`", 'S'},
      {"null", 'V'},
      {"42n", 'N'}},
     {"Widget", "load", "add", "gen"}},
    {"PHP",
     "<?php\n"
     "namespace App;\n"
     "#[Attribute]\n"
     "final class User extends Model {\n"
     "    const LIMIT = 10;\n"
     "    public function __construct(private array $list = []) {\n"
     "        $this->list = array_map('trim', $list); // clean\n"
     "    }\n"
     "}\n"
     "function helper($class) { return NULL; }\n"
     "echo <<<EOT\n"
     "Hello\n"
     "EOT;\n"
     "?>\n",
     {{"<?php", 'P'},
      {"#[Attribute]", 'P'},
      {"final", 'K'},
      {"$list", '.'},
      {"$this", 'V'},
      {"array_map", 'X'},
      {"'trim'", 'S'},
      {"// clean", 'C'},
      {"$class", '.'},
      {"NULL", 'V'},
      {"<<<EOT\nHello\nEOT", 'S'}},
     {"App", "User", "LIMIT", "__construct", "helper"}},
    {"Perl",
     "#!/usr/bin/perl\n"
     "package My::Module;\n"
     "use strict;\n"
     "my %opts = (size => 0x10);\n"
     "sub run {\n"
     "    my ($self, @args) = @_;\n"
     "    print \"Hello\\n\" if $self =~ /^h/i; # greet\n"
     "    return scalar @args;\n"
     "}\n"
     "\n"
     "=head1 NAME\n"
     "\n"
     "Docs here\n"
     "\n"
     "=cut\n"
     "\n"
     "1;\n",
     {{"#!/usr/bin/perl", 'P'},
      {"package", 'K'},
      {"my", 'K'},
      {"0x10", 'N'},
      {"@_", 'V'},
      {"print", 'X'},
      {"\"Hello\\n\"", 'S'},
      {"/^h/i", 'H'},
      {"# greet", 'C'},
      {"scalar", 'X'},
      {"=head1 NAME\n\nDocs here\n\n=cut", 'C'}},
     {"My::Module", "run"}},
    {"Ruby",
     "# frozen_string_literal: true\n"
     "module Shapes\n"
     "  class Circle < Base\n"
     "    attr_reader :radius\n"
     "    MAX = 10\n"
     "    def initialize(radius)\n"
     "      @radius = radius || 1.5\n"
     "    end\n"
     "    def self.unit? = new(1)\n"
     "    def area\n"
     "      return nil unless defined?(@radius)\n"
     "      \"r=#{@radius}\" # note\n"
     "    end\n"
     "  end\n"
     "end\n"
     "=begin\n"
     "doc\n"
     "=end\n",
     {{"# frozen_string_literal: true", 'C'},
      {"module", 'K'},
      {"attr_reader", 'X'},
      {":radius", 'H'},
      {"1.5", 'N'},
      {"nil", 'V'},
      {"defined?", 'K'},
      {"\"r=#{@radius}\"", 'S'},
      {"# note", 'C'},
      {"=begin\ndoc\n=end", 'C'}},
     {"Shapes", "Circle", "radius", "MAX", "initialize", "self.unit?", "area"}},
    {"ShellScript",
     "#!/bin/sh\n"
     "# prepare\n"
     "set -e\n"
     "NAME=\"world\"\n"
     "greet() {\n"
     "    local who=${1:-$NAME}\n"
     "    if [ -n \"$who\" ]; then echo \"hi $who\" >&2; fi\n"
     "}\n"
     "function cleanup {\n"
     "    rm -f /tmp/x.$$ 2>/dev/null\n"
     "}\n"
     "cat <<EOF\n"
     "body\n"
     "EOF\n"
     "find . -type f --help\n",
     {{"#!/bin/sh", 'P'},
      {"# prepare", 'C'},
      {"set", 'X'},
      {"\"world\"", 'S'},
      {"local", 'X'},
      {"${1:-$NAME}", 'H'},
      {"if", 'K'},
      {"echo", 'X'},
      {"fi", 'K'},
      {"$$", 'H'},
      {"2", 'N'},
      {"<<EOF\nbody\nEOF", 'S'},
      {"-type", '.'},
      {"--help", '.'}},
     {"greet", "cleanup"}},
    {"SQL",
     "-- schema\n"
     "CREATE TABLE IF NOT EXISTS users (\n"
     "  id SERIAL PRIMARY KEY,\n"
     "  name VARCHAR(40) NOT NULL DEFAULT 'n''a'\n"
     ");\n"
     "create or replace function add_one(i integer) returns integer as $$\n"
     "  select i + 1;\n"
     "$$ language sql;\n"
     "/* done */\n"
     "SELECT count(*) FROM \"users\" WHERE id > 10;\n",
     {{"-- schema", 'C'},
      {"CREATE", 'K'},
      {"SERIAL", 'X'},
      {"name", '.'},
      {"NULL", 'V'},
      {"'n''a'", 'S'},
      {"create", 'K'},
      {"$$\n  select i + 1;\n$$", 'S'},
      {"/* done */", 'C'},
      {"count", 'X'},
      {"\"users\"", 'H'},
      {"10", 'N'}},
     {"users", "add_one"}},
    {"CCS",
     "@import url(\"base.css\");\n"
     "/* layout */\n"
     ".card > a:hover, .card:focus {\n"
     "  color: #fff;\n"
     "  margin: -4px 1.5em;\n"
     "  display: none !important;\n"
     "  -webkit-transition: opacity .3s;\n"
     "}\n"
     "@media (max-width: 600px) {\n"
     "  body { font-family: \"Helvetica\", sans-serif; }\n"
     "}\n",
     {{"@import", 'P'},
      {"url", 'X'},
      {"\"base.css\"", 'S'},
      {"/* layout */", 'C'},
      {":hover", 'H'},
      {"color", 'K'},
      {"#fff", 'N'},
      {"-4px", 'N'},
      {"1.5em", 'N'},
      {"none", 'V'},
      {"!important", 'V'},
      {"-webkit-transition", '.'},
      {".3s", 'N'},
      {"max-width", 'K'},
      {"sans-serif", 'V'}},
     {".card > a:hover, .card:focus", "@media (max-width: 600px)", "body"}},
    {"XML",
     "<?xml version=\"1.0\"?>\n"
     "<!DOCTYPE note SYSTEM \"note.dtd\">\n"
     "<xsl:stylesheet version=\"1.0\" xmlns:xsl=\"http://www.w3.org/1999/XSL/Transform\">\n"
     "  <!-- a comment -->\n"
     "  <xsl:template match=\"/\">\n"
     "    <p id=\"intro\">Fish &amp; chips<![CDATA[ <raw> ]]></p>\n"
     "  </xsl:template>\n"
     "</xsl:stylesheet>\n",
     {{"<?xml version=\"1.0\"?>", 'P'},
      {"<!DOCTYPE note SYSTEM \"note.dtd\">", 'P'},
      {"xsl:stylesheet", 'K'},
      {"xmlns:xsl", 'V'},
      {"\"http://www.w3.org/1999/XSL/Transform\"", 'S'},
      {"<!-- a comment -->", 'C'},
      {"<p", 'B'},
      {"&amp;", 'H'},
      {"<![CDATA[ <raw> ]]>", 'S'}},
     {"/", "intro"}},
    {"Haskell",
     "{-# LANGUAGE GADTs #-}\n"
     "module Main where\n"
     "import qualified Data.Map as M\n"
     "-- | entry\n"
     "data Shape = Circle Double | Square Double deriving Show\n"
     "class Container f where\n"
     "  empty :: f a\n"
     "instance Show a => Container [] where\n"
     "area :: Shape -> Double\n"
     "area (Circle r) = pi * r ^ 2\n"
     "main = putStrLn \"hi\" >> print 'x' >> print (foldl' (+) 0 [1, 2.5e3])\n"
     "x --> y = x\n",
     {{"{-# LANGUAGE GADTs #-}", 'C'},
      {"module", 'K'},
      {"qualified", 'K'},
      {"-- | entry", 'C'},
      {"Double", 'X'},
      {"deriving", 'K'},
      {"putStrLn", 'X'},
      {"\"hi\"", 'S'},
      {"'x'", 'H'},
      {"foldl'", '.'},
      {"2.5e3", 'N'},
      {"-->", '.'}},
     {"Main", "Shape", "Container", "empty", "Container []", "area"}},
    {"AppleScript",
     "use scripting additions\n"
     "property greeting : \"Hello\"\n"
     "(* block\n"
     "   comment *)\n"
     "on run\n"
     "\tTell application \"Finder\" to activate\n"
     "\tdisplay dialog greeting & \" world\" -- say it\n"
     "\tset x to 3.5 * pi\n"
     "\tif x is missing value then return\n"
     "end run\n"
     "to sayHello(name)\n"
     "\ttry\n"
     "\t\tlog name\n"
     "\ton error msg\n"
     "\tend try\n"
     "end sayHello\n",
     {{"use scripting additions", 'P'},
      {"property", 'K'},
      {"\"Hello\"", 'S'},
      {"(* block\n   comment *)", 'C'},
      {"Tell", 'K'},
      {"activate", 'X'},
      {"display dialog", 'X'},
      {"-- say it", 'C'},
      {"3.5", 'N'},
      {"pi", 'V'},
      {"missing value", 'V'},
      {"log", 'X'}},
     {"greeting", "run", "sayHello"}},
    {"Plain Text",
     "int main() { return 0; } // \"x\" /* y */\n",
     {{"int main() { return 0; } // \"x\" /* y */", '.'}},
     {}},
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
    const QString text = QString::fromUtf8(sample.text);
    const std::string picture = colour(definition, text);
    for (const Expectation& expectation : sample.colours) {
        const QString token = QString::fromUtf8(expectation.token);
        const qsizetype at = text.indexOf(token);
        ASSERT_GE(at, 0) << expectation.token;
        EXPECT_EQ(picture.substr(size_t(at), size_t(token.size())),
                  std::string(size_t(token.size()), expectation.letter))
            << expectation.token;
    }
    EXPECT_EQ(functionTitles(definition, text), sample.functions);
}

namespace {

std::string sampleName(const testing::TestParamInfo<Sample>& info)
{
    std::string name;
    for (const char* c = info.param.definition; *c; ++c) {
        name += std::isalnum(static_cast<unsigned char>(*c)) ? *c : (*c == '+' ? 'p' : '_');
    }
    return name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Languages, ShippedDefinitionSample, testing::ValuesIn(samples),
                         sampleName);
