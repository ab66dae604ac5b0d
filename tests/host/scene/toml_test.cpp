// TOML texts as plain values.

#include "scene/toml_value.h"

#include "scene_fixture.h"

using namespace host;
using scene_test::ErrorOf;

namespace {

std::string Problem(const std::string& text) {
    return ErrorOf([&] { ParseToml("f.toml", text); });
}

} // namespace

TEST(Toml, ValuesKnowTheirLinesAndKinds) {
    const TomlValue v = ParseToml("f.toml", "a = 1\nb = -2.5\n[t]\nc = 'x'\nd = true\n[[l]]\ne = [1,\n 'two']\n");
    ASSERT_EQ(v.entries.size(), 4u);
    EXPECT_EQ(v.Find("a")->kind, TomlValue::kInteger);
    EXPECT_EQ(v.Find("a")->integer, 1);
    EXPECT_EQ(v.Find("a")->number, 1.0);
    EXPECT_EQ(v.Find("b")->line, 2);
    EXPECT_EQ(v.Find("b")->number, -2.5);
    EXPECT_EQ(v.Find("t")->Find("c")->text, "x");
    EXPECT_TRUE(v.Find("t")->Find("d")->flag);
    EXPECT_EQ(v.Find("t")->Find("d")->line, 5);
    ASSERT_EQ(v.Find("l")->items.size(), 1u);
    EXPECT_EQ(v.Find("l")->items[0].Find("e")->items[1].line, 8);
    EXPECT_EQ(v.Find("none"), nullptr);
}

TEST(Toml, EntriesStandInTheOrderOfTheText) {
    const TomlValue v = ParseToml("f.toml", "z = 1\na = 2\nm = 3\n");
    EXPECT_EQ(v.entries[0].first, "z");
    EXPECT_EQ(v.entries[1].first, "a");
    EXPECT_EQ(v.entries[2].first, "m");
}

TEST(Toml, CharactersOutsideAsciiStandInTextsAndCommentsOnly) {
    EXPECT_EQ(ParseToml("f.toml", "# \xc3\xa4\na = \"\xc3\xb6\"\nb = '''\n\xc3\xbc'''\n").Find("a")->text, "\xc3\xb6");
    const char* const line = "character outside ASCII, expected such characters in strings and comments only";
    EXPECT_EQ(Problem("a = 1\n\xc3\xa4 = 1\n"), std::string("f.toml:2: ") + line);
    EXPECT_EQ(Problem("a = \"\"\"\n\"\"\"\xc3\xa4\n"), std::string("f.toml:2: ") + line);
    EXPECT_EQ(Problem("a = 'x' \xa0\n"), std::string("f.toml:1: ") + line);
}

TEST(Toml, QuotesInsideOfValuesBeginNoText) {
    EXPECT_EQ(Problem("a = 1\nb = +\"\xc3\xa4\"\n").substr(0, 9), "f.toml:2:");
    EXPECT_EQ(Problem("a = 'x' 'y'\n").substr(0, 9), "f.toml:1:");
    EXPECT_EQ(Problem("a = 8|[[\"\"\"e\xef\xbb\xbf\n").substr(0, 9), "f.toml:1:");
    const TomlValue v = ParseToml("f.toml", "\"k\".'l' = [ 'x',\"y\"\n, \n\t'z' ]\r\n[\"t\"]\na={'b'=\t\"c\"}\n");
    EXPECT_EQ(v.Find("k")->Find("l")->items.size(), 3u);
    EXPECT_EQ(v.Find("t")->Find("a")->Find("b")->text, "c");
}

TEST(Toml, TextsKeepEveryCharacter) {
    // Of one to four bytes, spaces of other scripts among them, in all kinds of texts and in keys.
    const std::string all = "a~\xc2\x80\xc2\xa0\xc3\xa4\xdf\xbf\xe0\xa0\x80\xe3\x80\x80\xef\xae\xbb\xef\xbb\xbf\xef"
                            "\xbf\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbd";
    for (const std::string quote : {"\"", "'", "\"\"\"", "'''"})
        EXPECT_EQ(ParseToml("f.toml", "b = " + quote + all + quote).Find("b")->text, all) << quote;
    EXPECT_EQ(ParseToml("f.toml", "'" + all + "' = 1\n").entries.at(0).first, all);
    EXPECT_EQ(ParseToml("f.toml", "b = \"\\u00e4\\U0001F600\"\n").Find("b")->text, "\xc3\xa4\xf0\x9f\x98\x80");
    // Only spaces of ASCII go behind a backslash at a line's end.
    EXPECT_EQ(ParseToml("f.toml", "b = \"\"\"x\\ \n \n\xc2\xa0y\\\\\xc3\xa4\"\"\"\n").Find("b")->text,
              "x\xc2\xa0y\\\xc3\xa4");
    EXPECT_EQ(Problem("b = \"\"\"\nx\\\xef\xae\xbb\"\"\"\n").substr(0, 9), "f.toml:2:");
}

TEST(Toml, AByteOrderMarkMayComeFirst) {
    EXPECT_EQ(ParseToml("f.toml", "\xef\xbb\xbf\na = 1\n").Find("a")->integer, 1);
    EXPECT_EQ(Problem("\n\xef\xbb\xbf\na = 1\n"),
              "f.toml:2: character outside ASCII, expected such characters in strings and comments only");
}

TEST(Toml, WhatIsNoTextIsRefused) {
    EXPECT_EQ(Problem("a = 1\n# \xf1\x80\x82\x80\n"),
              "f.toml:2: character that Unicode does not have, expected others");
    // Cut off, longer than necessary, half of a pair, beyond the last one, alone.
    for (const std::string bad :
         {"\xc3", "\xc0\x80", "\xe0\x82\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\x80", "\xff"})
        EXPECT_EQ(Problem("a = \"" + bad + "\"\n").substr(0, 9), "f.toml:1:") << testing::PrintToString(bad);
}

TEST(Toml, SyntaxErrorsNameTheLine) {
    EXPECT_EQ(Problem("a = 1\nb = \n").substr(0, 9), "f.toml:2:");
    EXPECT_EQ(Problem("a = 1\na = 2\n").substr(0, 9), "f.toml:2:");
    EXPECT_EQ(Problem("[t\n").substr(0, 9), "f.toml:1:");
    EXPECT_EQ(Problem("a = " + std::string(100, '[')), "f.toml:1: nested too deeply, expected at most 64 levels");
}

TEST(Toml, ValuesOfCommandLines) {
    EXPECT_EQ(ParseTomlValue("1.5").number, 1.5);
    EXPECT_EQ(ParseTomlValue("[1, 2]").items.size(), 2u);
    EXPECT_TRUE(ParseTomlValue("true").flag);
    EXPECT_EQ(ParseTomlValue("\"quoted\"").text, "quoted");
    EXPECT_EQ(ParseTomlValue("bare word").text, "bare word");
    EXPECT_EQ(ParseTomlValue("1\nb = 2").text, "1\nb = 2");
}
