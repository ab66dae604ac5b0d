// Frame lists and file names.

#include "scene/frame_list.h"

#include "scene_fixture.h"

using namespace host;
using scene_test::ErrorOf;

TEST(FrameList, Table) {
    const std::pair<const char*, std::vector<int>> cases[] = {
        {"7", {7}},
        {"-7", {-7}},
        {"1-3", {1, 2, 3}},
        {"1-7x3", {1, 4, 7}},
        {"1-8x3", {1, 4, 7}},
        {"1-7x3,12", {1, 4, 7, 12}},
        {"-10--8", {-10, -9, -8}},
        {"-1-1", {-1, 0, 1}},
        {"10-1x-4", {10, 6, 2}},
        {"3-1x-1,2,5", {3, 2, 1, 5}},
        {"5-5", {5}},
        {"5-5x-2", {5}},
        {"2147483647", {2147483647}},
        {"2147483646-2147483647", {2147483646, 2147483647}},
    };
    for (const auto& [list, frames] : cases) EXPECT_EQ(ParseFrameList(list), frames) << list;
}

TEST(FrameList, SaysWhatIsWrong) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {",", ""},
        {"1,", ""},
        {"a", "a"},
        {"1-", "1-"},
        {"1-2x", "1-2x"},
        {"1..2", "1..2"},
        {"1 2", "1 2"},
        {"1,2-3-4,5", "2-3-4"},
        {"99999999999", "99999999999"},
        {"--1", "--1"},
    };
    for (const auto& [list, item] : cases)
        EXPECT_EQ(ErrorOf([&, l = list] { ParseFrameList(l); }),
                  std::string("frame list item '") + item + "', expected A, A-B or A-BxS")
            << list;
    EXPECT_EQ(ErrorOf([] { ParseFrameList("3-1"); }),
              "frame list item '3-1' leads nowhere, expected a step from A towards B");
    EXPECT_EQ(ErrorOf([] { ParseFrameList("1-3x0"); }),
              "frame list item '1-3x0' leads nowhere, expected a step from A towards B");
    EXPECT_EQ(ErrorOf([] { ParseFrameList("0-2000000000"); }),
              "frame list '0-2000000000' is too long, expected at most 1000000 frames");
}

TEST(FrameNames, Table) {
    struct Case {
        const char* pattern;
        int frame;
        const char* name;
    };
    const Case cases[] = {
        {"a.png", 3, "a.png"},          {"a%04d.png", 3, "a0003.png"},         {"a%d.png", 3, "a3.png"},
        {"a%02d.png", 123, "a123.png"}, {"a####.png", 12, "a0012.png"},        {"a#.png", 12, "a0012.png"},
        {"a##.png", 5, "a05.png"},      {"a#.png", -5, "a-005.png"},           {"%04d/a.##.png", 7, "0007/a.07.png"},
        {"100%.png", 7, "100%.png"},    {"a%5d%s%0d.png", 7, "a%5d%s%0d.png"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(FrameFileName(c.pattern, c.frame), c.name) << c.pattern;
        EXPECT_EQ(HasFramePlaceholder(c.pattern), std::string(c.pattern) != c.name) << c.pattern;
    }
}
