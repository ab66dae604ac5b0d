#include "core/nearest_name.h"

#include <gtest/gtest.h>

namespace host {
namespace {

TEST(NearestName, DistanceCountsLetters) {
    EXPECT_EQ(EditDistance("", ""), 0);
    EXPECT_EQ(EditDistance("", "abc"), 3);
    EXPECT_EQ(EditDistance("abc", ""), 3);
    EXPECT_EQ(EditDistance("kitten", "sitting"), 3);
    EXPECT_EQ(EditDistance("widht", "width"), 2);
    EXPECT_EQ(EditDistance("Camera", "cAMERA"), 0);
}

TEST(NearestName, NearestFirstAndEarlierOfEqualOnes) {
    const std::vector<std::string> names{"sphere", "camera2", "cam", "camera1"};
    EXPECT_EQ(NearestNames("camera", names), "'camera2', 'camera1', 'cam'");
    EXPECT_EQ(NearestNames("camera", names, 1), "'camera2'");
    EXPECT_EQ(NearestNames("", names, 2), "'sphere', 'camera2'"); // nothing to compare: as they come
    EXPECT_EQ(NearestNames("camera", {}), "");
}

} // namespace
} // namespace host
