// The golden picture: 99.9 % of the pixels within 2/255, every pixel within 8/255 of the one that was looked at.

#include "ball_test.h"
#include "compare_pictures.h"

namespace {

using namespace system_test;

class Golden : public BallTest {
protected:
    Comparison Ball(const Args& extra) const {
        RenderFile("ball.png", extra);
        return Compare(folder_ + "/ball.png", VELMAR_TEST_DATA "/golden/ball.png");
    }
};

TEST_F(Golden, TheBallLooksAsItDid) {
    const Comparison c = Ball({});
    EXPECT_TRUE(c.Close()) << c.beyond2 << " of " << c.pixels << " pixels beyond 2/255, largest " << c.largest;
}

TEST_F(Golden, TheComparisonSeesSmallChanges) {
    EXPECT_FALSE(Ball({"--set", "coat.pid_length=0.39"}).Close());
    EXPECT_FALSE(Ball({"--set", "key.multiplier=1.05"}).Close());
    EXPECT_FALSE(Ball({"--set", "coat.pid_randSeed=1"}).Close());
}

} // namespace
