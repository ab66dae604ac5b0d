// Exact bytes of single writes.
#include "TestFiles.h"

#include <cstdio>

namespace {

TEST(LogWrite, NullTextOnlyEndsTheLine) {
    TestLog log;
    LogWrite(log.log, "a", 0);
    LogWrite(log.log, nullptr, kLogEndLine);
    LogWrite(log.log, nullptr, kLogEndLine);
    LogWrite(log.log, "b", 0);
    EXPECT_EQ(log.Text(), "a\r\n\r\nb");
}

TEST(LogWrite, NullTextIsNotIndentedButItsPrefixesAreWritten) {
    TestLog log;
    FixedTicks ticks(1002);
    LogIndent(log.log);
    LogWrite(log.log, nullptr, kLogEndLine);
    LogWrite(log.log, nullptr, kLogTimeStamp);
    LogWrite(log.log, "x", kLogEndLine | kLogTimeStamp);
    EXPECT_EQ(log.Text(), "\r\n     1.002 \tx\r\n");
}

TEST(LogWrite, NullTextWithoutFlagsOpensNoFile) {
    TestLog log;
    LogWrite(log.log, nullptr, 0);
    EXPECT_FALSE(diag::FileExists(log.path));
}

TEST(LogWrite, LoneLineFeedsGetACarriageReturn) {
    TestLog log;
    LogWrite(log.log, "a\r\nb\nc\n\nd\r\n\n", 0);
    EXPECT_EQ(log.Text(), "a\r\nb\r\nc\r\n\r\nd\r\n\r\n");
}

TEST(LogWrite, StandardSetLeavesLineFeedsAlone) {
    TestLog log(LogStdFileOps());
    LogWrite(log.log, "a\r\nb\nc", kLogEndLine);
    LogFlush(log.log);
    EXPECT_EQ(log.Text(), "a\r\nb\nc\n");
}

TEST(LogWrite, TimeStampAtTheStartOfALineOnly) {
    TestLog log;
    FixedTicks ticks(65432);
    LogWrite(log.log, "one", kLogTimeStamp);
    LogWrite(log.log, " two", kLogTimeStamp | kLogEndLine);
    LogWrite(log.log, "three\n", kLogTimeStamp);
    LogWrite(log.log, "four", kLogTimeStamp);
    EXPECT_EQ(log.Text(), "    65.432 one two\r\n    65.432 three\r\n    65.432 four");
}

TEST(LogWrite, TimeStampsPadMillisecondsAndWidenForManySeconds) {
    TestLog log;
    {
        FixedTicks ticks(7);
        LogWrite(log.log, "a", kLogTimeStamp | kLogEndLine);
    }
    FixedTicks ticks(4294967295u);
    LogWrite(log.log, "b", kLogTimeStamp | kLogEndLine);
    EXPECT_EQ(log.Text(), "     0.007 a\r\n4294967.295 b\r\n");
}

TEST(LogWrite, PrefixesStandInOrderThreadTimeTabs) {
    TestLog log;
    FixedTicks ticks(1500);
    LogIndent(log.log);
    LogIndent(log.log);
    LogWrite(log.log, "x", kLogThreadId | kLogTimeStamp | kLogEndLine);
    char expected[64];
    std::snprintf(expected, sizeof expected, "[%08x]      1.500 \t\tx\r\n", diag::CurrentThreadId());
    EXPECT_EQ(log.Text(), expected);
}

TEST(LogWrite, DefaultFlagsAddPrefixesAndLineEnds) {
    TestLog log;
    FixedTicks ticks(20);
    LogSetDefaultFlags(log.log, kLogInitialFlags | kLogTimeStamp | kLogEndLine);
    LogWrite(log.log, "x", 0);
    const int32_t number = 5;
    LogWrite(log.log, &number, kLogInt32);
    EXPECT_EQ(log.Text(), "     0.020 x\r\n     0.020 5\r\n");
}

TEST(LogWrite, DefaultTypeCountsOnlyWhenTheCallNamesNone) {
    TestLog log;
    LogSetDefaultFlags(log.log, 0x3F | kLogInt32);
    const int32_t number = -77;
    LogWrite(log.log, &number, kLogEndLine);
    LogWrite(log.log, "text", kLogText | kLogEndLine);
    LogPrintf(log.log, kLogEndLine, "%s", "formatted");
    EXPECT_EQ(log.Text(), "-77\r\ntext\r\nformatted\r\n");
}

TEST(LogWrite, ChannelBitsMustShareOneWithTheDefaultFlags) {
    TestLog log;
    LogSetDefaultFlags(log.log, 0x104);
    LogWrite(log.log, "other channel", 0x03 | kLogEndLine);
    EXPECT_FALSE(diag::FileExists(log.path));
    LogWrite(log.log, "one of them", 0x06 | kLogEndLine);
    LogWrite(log.log, "no channel", kLogEndLine);
    EXPECT_EQ(log.Text(), "one of them\r\nno channel\r\n");
}

TEST(LogWrite, NumbersByType) {
    TestLog log;
    const int32_t negative = -2;
    const int32_t large = 2147483647;
    const int16_t small = -32768;
    LogWrite(log.log, &negative, kLogInt32 | kLogEndLine);
    LogWrite(log.log, &negative, kLogHex32 | kLogEndLine);
    LogWrite(log.log, &large, kLogInt32B | kLogEndLine);
    LogWrite(log.log, &small, kLogInt16 | kLogEndLine);
    LogWrite(log.log, &large, kLogInt32C | kLogEndLine);
    EXPECT_EQ(log.Text(), "-2\r\nfffffffe\r\n2147483647\r\n-32768\r\n2147483647\r\n");
}

TEST(LogWrite, FloatDecimalsByBits6And7) {
    TestLog log;
    const float value = 1.0f / 3.0f;
    LogWrite(log.log, &value, kLogFloat | kLogDecimals1 | kLogEndLine);
    LogWrite(log.log, &value, kLogFloat | kLogDecimals2 | kLogEndLine);
    LogWrite(log.log, &value, kLogFloat | kLogDecimals4 | kLogEndLine);
    LogWrite(log.log, &value, kLogFloat | kLogDecimals6 | kLogEndLine);
    EXPECT_EQ(log.Text(), "0.3\r\n0.33\r\n0.3333\r\n0.333333\r\n");
}

TEST(LogWrite, Text16BecomesUtf8) {
    TestLog log;
    LogWrite(log.log, u"A\u00e4\u20ac\U0001F600\xD800!", kLogText16 | kLogEndLine);
    EXPECT_EQ(log.Text(), "A\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\xEF\xBF\xBD!\r\n");
}

TEST(LogWrite, UnknownTypeWritesNoTextButTakesItsFlags) {
    TestLog log;
    LogWrite(log.log, "never read", 0xF00 | kLogEndLine);
    EXPECT_EQ(log.Text(), "\r\n");
}

TEST(LogWrite, PiecesLongerThanTheLineBufferAreReplaced) {
    TestLog log;
    const std::string longest(1023, 'x');
    const std::string tooLong(1024, 'y');
    LogWrite(log.log, longest.c_str(), kLogEndLine);
    LogWrite(log.log, tooLong.c_str(), kLogEndLine);
    LogPrintf(log.log, kLogEndLine, "%s", longest.c_str());
    LogPrintf(log.log, kLogEndLine, "%s", tooLong.c_str());
    const std::u16string wide(400, u'\u20ac');
    LogWrite(log.log, wide.c_str(), kLogText16 | kLogEndLine);
    const std::string big = "log string too big!\r\n";
    EXPECT_EQ(log.Text(), longest + "\r\n" + big + longest + "\r\n" + big + big);
}

TEST(LogWrite, LongestPieceFitsBehindTheLongestPrefix) {
    TestLog log;
    FixedTicks ticks(4294967295u);
    for (int i = 0; i < 64; ++i) LogIndent(log.log);
    const std::string longest(1023, '\n');
    LogWrite(log.log, longest.c_str(), kLogThreadId | kLogTimeStamp | kLogEndLine);
    EXPECT_EQ(log.Text().size(), 11u + 12u + 64u + 2 * 1024u);
}

TEST(LogWrite, IndentStopsAt64) {
    TestLog log;
    for (int i = 0; i < 100; ++i) LogIndent(log.log);
    EXPECT_EQ(LogGetIndent(log.log), 64);
    log.Line("x");
    EXPECT_EQ(log.Text(), std::string(64, '\t') + "x\r\n");
}

TEST(LogHeader, Forms) {
    TestLog log;
    LogHeader(log.log, "src/a.cpp", 12, "text", kLogEndLine);
    LogHeader(log.log, nullptr, -1, "text", kLogEndLine);
    LogHeader(log.log, "b", 7, nullptr, kLogEndLine);
    LogHeader(log.log, "c", 8, nullptr, 0);
    EXPECT_EQ(log.Text(), "src/a.cpp(12): text\r\nunknown file(-1): text\r\nb(7)\r\nc(8)");
}

TEST(LogHeader, PrefixOnceAndChannelsFilterTheWhole) {
    TestLog log;
    FixedTicks ticks(3000);
    LogSetDefaultFlags(log.log, 0x101);
    LogHeader(log.log, "a", 1, "t", kLogTimeStamp | kLogEndLine | 0x01);
    LogHeader(log.log, "a", 2, "t", kLogTimeStamp | kLogEndLine | 0x02);
    EXPECT_EQ(log.Text(), "     3.000 a(1): t\r\n");
}

TEST(LogLimit, CrossingWriteGoesOutWholeThenOneNotice) {
    TestLog log;
    LogSetSizeLimit(log.log, 10);
    log.Line("1234567");
    log.Line("abcdef");
    log.Line("silent");
    log.Line("silent");
    EXPECT_EQ(log.Text(), "1234567\r\nabcdef\r\n\r\n\r\nLog file limit reached, logging disabled!\r\n");
}

TEST(LogLimit, ReachedExactlyAndKeptWhenTheLimitGrows) {
    TestLog log;
    LogSetSizeLimit(log.log, 4);
    LogWrite(log.log, "abcd", 0);
    const std::string silent = "abcd\r\n\r\nLog file limit reached, logging disabled!\r\n";
    EXPECT_EQ(log.Text(), silent);
    LogSetSizeLimit(log.log, 1000);
    log.Line("x");
    EXPECT_EQ(log.Text(), silent);
}

TEST(LogLimit, OneNoticeAtAMillionBytes) {
    TestLog log;
    const std::string line(998, 'x');
    for (int i = 0; i < 1010; ++i) log.Line(line.c_str());
    const std::string text = log.Text();
    const std::string notice = "\r\n\r\nLog file limit reached, logging disabled!\r\n";
    ASSERT_EQ(text.size(), 1000000 + notice.size());
    EXPECT_EQ(text.substr(1000000), notice);
    EXPECT_EQ(text.find("limit reached"), text.rfind("limit reached"));
}

} // namespace
