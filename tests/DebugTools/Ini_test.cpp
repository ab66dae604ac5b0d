// Settings files: one table of readings, one of writings.
#include "DebugTools/platform/Ini.h"
#include "TestFiles.h"

#include <rapidcheck/gtest.h>

namespace {

struct IniTest : testing::Test {
    TempFolder folder;
    std::string path = folder.File("settings.ini");

    void Fill(std::string_view text) { ASSERT_TRUE(diag::FileWriteAtomic(path, text, diag::FileSync::kNo)); }
    std::string Read(const char* section, const char* key, const char* fallback = "(default)", size_t size = 100) {
        std::string buffer(size, '#');
        const size_t length = diag::ReadProfileString(section, key, fallback, buffer.data(), size, path.c_str());
        EXPECT_LT(length, size);
        EXPECT_EQ(buffer[length], '\0');
        return buffer.substr(0, length);
    }
};

struct ReadCase {
    const char* text;
    const char* section;
    const char* key;
    const char* expected;
};

constexpr ReadCase kReadCases[] = {
    {"[Test]\r\nTraceMode=1\r\n", "Test", "TraceMode", "1"},
    {"[Test]\nTraceMode=1\n", "Test", "TraceMode", "1"},
    {"[Test]\nTraceMode=1", "Test", "TraceMode", "1"},
    {"[Test]\nTraceMode=1\n", "tEST", "TRACEMODE", "1"},
    {"[Test]\nTraceMode=1\n", " Test ", "\tTraceMode ", "1"},
    {"  [ Test ]  \n \tTraceMode \t=  1 \t\n", "Test", "TraceMode", "1"},
    {"[Test] ; note\nTraceMode=1\n", "Test", "TraceMode", "1"},
    {"\xEF\xBB\xBF[Test]\nTraceMode=1\n", "Test", "TraceMode", "1"},
    // quotes: one matching pair
    {"[S]\nk=\"a b\"\n", "S", "k", "a b"},
    {"[S]\nk='a b'\n", "S", "k", "a b"},
    {"[S]\nk= \"  a \" \n", "S", "k", "  a "},
    {"[S]\nk=\"\"a\"\"\n", "S", "k", "\"a\""},
    {"[S]\nk=\"a'\n", "S", "k", "\"a'"},
    {"[S]\nk=\"\n", "S", "k", "\""},
    {"[S]\nk=\"\"\n", "S", "k", ""},
    {"[S]\nk=a\"b\"\n", "S", "k", "a\"b\""},
    // values as they stand
    {"[S]\nk=\n", "S", "k", ""},
    {"[S]\nk=a=b\n", "S", "k", "a=b"},
    {"[S]\nk=a ; b\n", "S", "k", "a ; b"},
    {"[S]\nk=[x]\n", "S", "k", "[x]"},
    {"[S]\nk=1.000000 0.500000 0.000000\n", "S", "k", "1.000000 0.500000 0.000000"},
    // comments
    {"[S]\n;k=1\n ; k=2\nk=3\n", "S", "k", "3"},
    {";[S]\n[S]\nk=3\n", "S", "k", "3"},
    // missing
    {"[S]\nk=1\n", "T", "k", "(default)"},
    {"[S]\nk=1\n", "S", "kk", "(default)"},
    {"[S]\nk\n", "S", "k", "(default)"},
    {"k=1\n[S]\n", "S", "k", "(default)"},
    {"", "S", "k", "(default)"},
    {"[S\nk=1\n", "S", "k", "(default)"},
    // a key counts only in its own section, and the first match counts
    {"[A]\nk=1\n[B]\nk=2\n", "B", "k", "2"},
    {"[A]\nx=1\n[B]\nk=2\n", "A", "k", "(default)"},
    {"[S]\nk=1\nk=2\n", "S", "k", "1"},
    {"[S]\na=1\n[T]\n[S]\nk=2\n", "S", "k", "(default)"},
    // no name beyond ASCII is folded
    {"[S]\n\xC4=1\n", "S", "\xE4", "(default)"},
};

TEST_F(IniTest, Readings) {
    for (const ReadCase& one : kReadCases) {
        Fill(one.text);
        EXPECT_EQ(Read(one.section, one.key), one.expected) << one.text;
    }
}

TEST_F(IniTest, MissingFileAndNullsGiveTheDefault) {
    EXPECT_EQ(Read("S", "k"), "(default)");
    EXPECT_EQ(Read("S", "k", nullptr), "");
    EXPECT_EQ(Read("S", "k", " x \t "), " x");
    EXPECT_EQ(Read("S", "k", "   "), "");
    Fill("[S]\nk=1\n");
    EXPECT_EQ(Read(nullptr, "k"), "(default)");
    EXPECT_EQ(Read("S", nullptr), "(default)");
}

TEST_F(IniTest, LongValuesAreCutToTheBuffer) {
    Fill("[S]\nk=abcdef\n");
    EXPECT_EQ(Read("S", "k", "", 7), "abcdef");
    EXPECT_EQ(Read("S", "k", "", 6), "abcde");
    EXPECT_EQ(Read("S", "k", "", 1), "");
    EXPECT_EQ(Read("S", "none", "default", 4), "def");
    char untouched = '#';
    EXPECT_EQ(diag::ReadProfileString("S", "k", "", &untouched, 0, path.c_str()), 0u);
    EXPECT_EQ(untouched, '#');
}

struct WriteCase {
    const char* before;
    const char* section;
    const char* key;
    const char* value;
    const char* after;
};

constexpr WriteCase kWriteCases[] = {
    // new content
    {"", "S", "k", "1", "[S]\r\nk=1\r\n"},
    {"", " S ", " k ", "", "[S]\r\nk=\r\n"},
    {"[A]\na=1\n", "S", "k", "1", "[A]\na=1\n[S]\nk=1\n"},
    {"[A]\na=1", "S", "k", "1", "[A]\na=1\n[S]\nk=1\n"},
    {"[A]\r\na=1", "A", "b", "2", "[A]\r\na=1\r\nb=2\r\n"},
    {"\xEF\xBB\xBF", "S", "k", "1", "\xEF\xBB\xBF[S]\r\nk=1\r\n"},
    // a changed value keeps place, neighbours, comments and the key as it was spelled
    {"; top\n[A]\n;x\nk = 1 \nj=2\n\n[B]\nk=5\n", "a", "K", "9", "; top\n[A]\n;x\nk=9\nj=2\n\n[B]\nk=5\n"},
    {"[A]\r\nk=1\r\n", "A", "k", "22", "[A]\r\nk=22\r\n"},
    {"[A]\nk=1\nk=2\n", "A", "k", "9", "[A]\nk=9\nk=2\n"},
    {"[A]\nk=1", "A", "k", "9", "[A]\nk=9"},
    // a new key goes below the last line of its section, above blank lines
    {"[A]\na=1\n\n[B]\nb=1\n", "A", "k", "2", "[A]\na=1\nk=2\n\n[B]\nb=1\n"},
    {"[A]\n[B]\nb=1\n", "A", "k", "2", "[A]\nk=2\n[B]\nb=1\n"},
    {"[A]\n; note\n\n", "A", "k", "2", "[A]\n; note\nk=2\n\n"},
    // deleting
    {"[A]\nk=1\nj=2\n", "A", "K", nullptr, "[A]\nj=2\n"},
    {"[A]\nk=1\nk=2\n", "A", "k", nullptr, "[A]\nk=2\n"},
    {"[A]\nk=1\n", "A", "j", nullptr, "[A]\nk=1\n"},
    {"[A]\nk=1\n", "B", "k", nullptr, "[A]\nk=1\n"},
    {"; top\n[A]\nk=1\n; in\n\n[B]\nb=1\n", "A", nullptr, nullptr, "; top\n[B]\nb=1\n"},
    {"[A]\nk=1\n[B]\nb=1", "b", nullptr, "ignored", "[A]\nk=1\n"},
    {"[A]\nk=1\n", "B", nullptr, nullptr, "[A]\nk=1\n"},
};

TEST_F(IniTest, Writings) {
    for (const WriteCase& one : kWriteCases) {
        Fill(one.before);
        EXPECT_TRUE(diag::WriteProfileString(one.section, one.key, one.value, path.c_str())) << one.before;
        EXPECT_EQ(Slurp(path), one.after) << one.before;
    }
    EXPECT_EQ(folder.FileCount(), 1u);
}

TEST_F(IniTest, WritingMakesAMissingFileAndDeletingDoesNot) {
    EXPECT_TRUE(diag::WriteProfileString("S", "k", nullptr, path.c_str()));
    EXPECT_TRUE(diag::WriteProfileString("S", nullptr, nullptr, path.c_str()));
    EXPECT_FALSE(diag::FileExists(path));
    EXPECT_TRUE(diag::WriteProfileString("S", "k", "v", path.c_str()));
    EXPECT_EQ(Slurp(path), "[S]\r\nk=v\r\n");
}

TEST_F(IniTest, RefusesWhatCouldNotBeReadBackAndWhatCannotBeWritten) {
    Fill("[S]\nk=1\n");
    EXPECT_FALSE(diag::WriteProfileString("S", "k", "1\n[T]", path.c_str()));
    EXPECT_FALSE(diag::WriteProfileString("S\r", "k", "1", path.c_str()));
    EXPECT_FALSE(diag::WriteProfileString("S", "k\n", "1", path.c_str()));
    EXPECT_FALSE(diag::WriteProfileString(nullptr, "k", "1", path.c_str()));
    EXPECT_FALSE(diag::WriteProfileString("S", "k", "1", folder.File("no/such/folder.ini").c_str()));
    EXPECT_EQ(Slurp(path), "[S]\nk=1\n");
}

TEST_F(IniTest, ThreadsThatWriteOneFileLoseNothing) {
    const char* sections[4] = {"S0", "S1", "S2", "S3"};
    diag::Thread threads[4];
    for (int t = 0; t < 4; ++t)
        threads[t].Start([&, t] {
            for (int i = 0; i < 50; ++i)
                diag::WriteProfileString(sections[t], std::to_string(i).c_str(), "x", path.c_str());
        });
    for (diag::Thread& thread : threads) thread.Join();
    for (const char* section : sections)
        for (int i = 0; i < 50; ++i) EXPECT_EQ(Read(section, std::to_string(i).c_str()), "x");
}

// Whatever the order of changes, the text gives back the last value of every key and nothing else.
RC_GTEST_PROP(IniProperty, GivesBackTheLastValueOfEveryKey, ()) {
    diag::IniText ini(*rc::gen::element<std::string>("", "; note\n\n[old]\nx=1\n", "[a]\r\n\r\n[b]\r\nk1=7"));
    std::map<std::pair<std::string, std::string>, std::string> model;
    if (ini.Text().find("x=1") != std::string::npos) model[{"old", "x"}] = "1";
    if (ini.Text().find("k1=7") != std::string::npos) model[{"b", "k1"}] = "7";
    const int steps = *rc::gen::inRange(0, 40);
    for (int i = 0; i < steps; ++i) {
        const auto section = *rc::gen::element<std::string>("a", "b", "old");
        const auto key = *rc::gen::element<std::string>("k1", "k2", "x");
        switch (*rc::gen::inRange(0, 6)) {
        case 0:
            RC_ASSERT(ini.EraseKey(section, key) == (model.erase({section, key}) > 0));
            break;
        case 1:
            ini.EraseSection(section);
            std::erase_if(model, [&](const auto& entry) { return entry.first.first == section; });
            break;
        default:
            model[{section, key}] = *rc::gen::element<std::string>("", "1", "a b", "[x]", ";", "k=v");
            ini.Set(section, key, model[{section, key}]);
        }
        for (const char* s : {"a", "b", "old"})
            for (const char* k : {"k1", "k2", "x"}) {
                std::string value;
                const auto expected = model.find({s, k});
                RC_ASSERT(ini.Find(s, k, value) == (expected != model.end()));
                if (expected != model.end()) RC_ASSERT(value == expected->second);
            }
    }
}

} // namespace
