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

struct Expectation {
    const char* token; // its first occurrence in the sample
    char letter;       // the picture letter every character of it gets ('.' for none)
};

struct Sample {
    const char* definition;
    const char* file;
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
     "C.txt",
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
     "Cpp.txt",
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
     "ObjectiveC.txt",
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
     "Java.txt",
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
     "JavaScript.txt",
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
     "PHP.txt",
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
     "Perl.txt",
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
     "Ruby.txt",
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
     "ShellScript.txt",
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
     "SQL.txt",
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
     "CCS.txt",
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
     "XML.txt",
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
     "Haskell.txt",
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
     "AppleScript.txt",
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
    {"Plain Text", "PlainText.txt", {{"int main() { return 0; } // \"x\" /* y */", '.'}}, {}},
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
