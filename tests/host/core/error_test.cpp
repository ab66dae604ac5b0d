// What errors say.

#include <gtest/gtest.h>

#include "core/error.h"

using namespace host;

TEST(Error, IsOneLineWhateverNamesHold) {
    EXPECT_STREQ(Error("m.obj:3: no 'a\r\nb', expected\tone\n").what(), "m.obj:3: no 'a b', expected one");
    EXPECT_STREQ(Error("\x1b[31mred\x7f\x01\x1f!").what(), "[31mred !");
    EXPECT_STREQ(Error("\xc3\xa4\xc2\x85").what(), "\xc3\xa4\xc2\x85") << "bytes of other characters stay";
    EXPECT_STREQ(Error("\n").what(), "");
}
