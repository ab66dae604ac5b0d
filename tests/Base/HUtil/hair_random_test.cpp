// The generator and the shaping of its draws.

#include "Base/HUtil/HairRandom.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <thread>

namespace {

/// One step of the recurrence backwards: 214013 has an inverse modulo 2^32.
void StepBack(HairRandom& r) {
    uint32_t inverse = 1;
    for (int i = 0; i < 31; ++i) inverse *= 2u - HairRandom::kMultiplier * inverse;
    r.state = (r.state - HairRandom::kIncrement) * inverse;
}

/// A generator whose output number `place` from now on is `output`.
HairRandom Before(int output, int place = 1) {
    HairRandom r;
    r.state = uint32_t(output) << 16;
    for (int i = 0; i < place; ++i) StepBack(r);
    return r;
}

// state * 214013 + 2531011 mod 2^32, output bits 16..30:
// 0 -> 0x00269EC3 -> 0x1E278E7A -> 0xD2F65B55 (0xD2F6 & 0x7FFF = 0x52F6) -> 0x098520C4 -> 0xA2974C77 (0x2297)
// 1 -> 0x0029E2C0 -> 0xC823F683 (0x4823) -> 0x18BE873A -> 0xE7847115 (0x6784)
TEST(HairRandom, FirstDrawsOfSeedZeroAndOne) {
    HairRandom r;
    r.Seed(0);
    for (const int expected : {0x0026, 0x1E27, 0x52F6, 0x0985, 0x2297}) EXPECT_EQ(r.Draw(), expected);
    EXPECT_EQ(r.state, 0xA2974C77u);
    r.Seed(1);
    for (const int expected : {0x0029, 0x4823, 0x18BE, 0x6784}) EXPECT_EQ(r.Draw(), expected);
}

RC_GTEST_PROP(HairRandomProperty, SkipEqualsDrawing, (uint32_t seed)) {
    const int n = *rc::gen::inRange(0, 3000);
    HairRandom a, b;
    a.Seed(seed);
    b.Seed(seed);
    for (int i = 0; i < n; ++i) a.Draw();
    b.Skip(uint64_t(n));
    RC_ASSERT(a.state == b.state);
}

TEST(HairRandom, TheWholePeriodLeadsBack) {
    HairRandom r;
    r.Seed(12345);
    r.Skip(uint64_t(1) << 32);
    EXPECT_EQ(r.state, 12345u);
    r.Skip((uint64_t(1) << 32) - 1);
    r.Draw();
    EXPECT_EQ(r.state, 12345u);
}

TEST(HairRandom, EachThreadHasItsOwnState) {
    ThreadHairRandom().Seed(7);
    uint32_t other = 1;
    std::thread([&] {
        other = ThreadHairRandom().state;
        ThreadHairRandom().Seed(99);
    }).join();
    EXPECT_EQ(other, 0u);
    EXPECT_EQ(ThreadHairRandom().state, 7u);
}

TEST(RandomRound, WholeNumbersStay) {
    HairRandom r;
    for (int i = 0; i < 5000; ++i) EXPECT_EQ(RandomRound(r, 2.0f), 2);
}

TEST(RandomRound, AQuarterGoesUpInAQuarterOfTheCalls) {
    HairRandom r;
    int up = 0;
    for (int i = 0; i < 20000; ++i) {
        const int v = RandomRound(r, 2.25f);
        ASSERT_TRUE(v == 2 || v == 3);
        up += v == 3;
    }
    EXPECT_NEAR(up / 20000.0, 0.25, 0.015);
}

TEST(RandomRound, ComparesTheScaledFractionWithTheDraw) {
    // 0.5 * 32767 = 16383.5: output 16383 rounds up, 16384 does not.
    HairRandom r = Before(16383);
    EXPECT_EQ(RandomRound(r, 4.5f), 5);
    r = Before(16384);
    EXPECT_EQ(RandomRound(r, 4.5f), 4);
    r = Before(0);
    EXPECT_EQ(RandomRound(r, -1.5f), -1); // truncated toward zero, a negative fraction never rounds up
    EXPECT_EQ(RandomRound(r, 1e30f), INT32_MAX);
}

RC_GTEST_PROP(RandomBarycentricProperty, InsideTheTriangleAndSumsToOne, (uint32_t seed)) {
    HairRandom r, two;
    r.Seed(seed);
    two.Seed(seed);
    const Point3 b = RandomBarycentric(r);
    RC_ASSERT(b.x >= 0.0f && b.y >= 0.0f && b.z >= 0.0f);
    RC_ASSERT(std::fabs(b.x + b.y + b.z - 1.0f) < 2e-7f);
    two.Skip(2);
    RC_ASSERT(r.state == two.state);
}

TEST(RandomBarycentric, FoldsPointsBeyondTheDiagonal) {
    HairRandom r;
    r.Seed(1); // draws 41 and 18467: kept
    EXPECT_EQ(RandomBarycentric(r), Point3(41 / 32767.0f, 18467 / 32767.0f, 14259 / 32767.0f));
    // Draws 6334 and 26500 sum to 32834: folded to 26433 and 6267.
    EXPECT_EQ(RandomBarycentric(r), Point3(26433 / 32767.0f, 6267 / 32767.0f, 67 / 32767.0f));
}

TEST(RandomBarycentric, IsUniform) {
    HairRandom r;
    int near[3] = {0, 0, 0};
    const int n = 30000;
    for (int i = 0; i < n; ++i) {
        const Point3 b = RandomBarycentric(r);
        for (int c = 0; c < 3; ++c) near[c] += b[c] > 0.5f;
    }
    for (const int count : near) EXPECT_NEAR(count / double(n), 0.25, 0.01); // a corner's half-size triangle
}

// Seed 1 draws 41: s = (41 - 16383) / 16383, r / 32767 = 41 / 32767.
TEST(RandomHelpers, FormulasByHand) {
    const float s = -16342.0f / 16383.0f;
    HairRandom r;
    r.Seed(1);
    EXPECT_EQ(RandomOffset(r, 10.0f, 2.0f), 10.0f + 2.0f * s);
    r.Seed(1);
    EXPECT_EQ(RandomScale(r, 10.0f, 0.5f), 10.0f + 10.0f * 0.5f * s);
    r.Seed(1);
    EXPECT_EQ(RandomReduce(r, 10.0f, 0.5f), 10.0f * (1.0f - 41.0f * 0.5f / 32767.0f));
    r.Seed(1);
    EXPECT_EQ(RandomOffsetScaled(r, 10.0f, 2.0f, 3.0f), 10.0f + 3.0f * 2.0f * s);
    r.Seed(1);
    const SinCos sc = RandomSigned(r, 0.5f);
    EXPECT_EQ(sc.sin, 0.5f * s);
    EXPECT_EQ(sc.cos, std::sqrt(1.0f - sc.sin * sc.sin));
}

TEST(RandomHelpers, TheLargestOutputGivesNoNan) {
    HairRandom r = Before(32767);
    const SinCos sc = RandomSigned(r, 1.0f);
    EXPECT_GT(sc.sin, 1.0f);
    EXPECT_EQ(sc.cos, 0.0f);
    r = Before(32767);
    EXPECT_EQ(RandomSignedUnit(r), 16384.0f / 16383.0f);
}

TEST(RandomHelpers, JitterScalesByTheLengthInOrderXYZ) {
    HairRandom r, check;
    r.Seed(5);
    check.Seed(5);
    const Point3 v = RandomJitterVector(r, Point3(3, 0, 4), 0.1f);
    EXPECT_EQ(v.x, 3.0f + 5.0f * 0.1f * RandomSignedUnit(check));
    EXPECT_EQ(v.y, 0.0f + 5.0f * 0.1f * RandomSignedUnit(check));
    EXPECT_EQ(v.z, 4.0f + 5.0f * 0.1f * RandomSignedUnit(check));
    EXPECT_EQ(r.state, check.state);
}

TEST(WrapUnit, ByHand) {
    EXPECT_EQ(WrapUnit(-0.25f), 0.75f);
    EXPECT_EQ(WrapUnit(1.25f), 0.25f);
    EXPECT_EQ(WrapUnit(1.0f), 1.0f);
    EXPECT_EQ(WrapUnit(0.0f), 0.0f);
    EXPECT_EQ(WrapUnit(-1.25f), 0.75f);
    EXPECT_EQ(WrapUnit(-1.0f), 1.0f);
    EXPECT_EQ(WrapUnit(2.0f), 0.0f);
}

RC_GTEST_PROP(WrapUnitProperty, StaysInRange, ()) {
    const float x = float(*rc::gen::inRange(-8000000, 8000001)) / 1000.0f;
    const float w = WrapUnit(x);
    RC_ASSERT(w >= 0.0f && w <= 1.0f);
    RC_ASSERT(std::fabs(std::remainder(double(w) - double(x), 1.0)) < 1e-3);
}

TEST(RandomHue, ThreeDrawsWhateverTheAmount) {
    for (const float amount : {0.0f, 0.3f, 1.0f}) {
        HairRandom one, pair, three;
        three.Skip(3);
        RandomHueShift(one, Color(0.8f, 0.2f, 0.1f), amount);
        EXPECT_EQ(one.state, three.state);
        Color base(0.8f, 0.2f, 0.1f), tip(0.1f, 0.9f, 0.5f);
        RandomHueShiftPair(pair, base, tip, amount);
        EXPECT_EQ(pair.state, three.state);
    }
}

TEST(RandomHue, ShiftsByHalfTheAmountOfTheCircle) {
    // Output 32766 makes s exactly 1: the hue moves by 2/3 * 0.5 = 1/3, from red to green.
    HairRandom r = Before(32766);
    const Color c = RandomHueShift(r, Color(1, 0, 0), 2.0f / 3.0f);
    EXPECT_NEAR(c.r, 0.0f, 1e-6f);
    EXPECT_NEAR(c.g, 1.0f, 1e-6f);
    EXPECT_NEAR(c.b, 0.0f, 1e-6f);
    r = Before(32766);
    Color base(1, 0, 0), tip(0, 1, 0);
    RandomHueShiftPair(r, base, tip, 2.0f / 3.0f);
    EXPECT_NEAR(base.g, 1.0f, 1e-6f);
    EXPECT_NEAR(tip.b, 1.0f, 1e-6f);
}

RC_GTEST_PROP(RandomTiltProperty, IsARotationThatLeavesTheAxisAlone, (uint32_t seed)) {
    HairRandom r, check;
    r.Seed(seed);
    check.Seed(seed);
    const float amount = float(*rc::gen::inRange(0, 101)) / 100.0f;
    const Point3 z = Normalize(Point3(0.3f, -0.5f, 0.8f));
    const Matrix3 m = RandomTilt(r, z, amount);
    const float a = RandomSignedUnit(check), b = RandomSignedUnit(check), q = RandomSignedUnit(check);
    RC_ASSERT(r.state == check.state);
    const Point3 axis = Normalize(CrossProd(z, Point3(a, b, 0)));
    RC_ASSERT(Length(axis * m - axis) < 1e-5f);
    RC_ASSERT(std::fabs(m.Determinant() - 1.0f) < 1e-5f);
    // The tilt: sine of half the angle is amount * 0.7071 * s, at most 90 degrees.
    const double half = double(amount) * 0.70710677 * double(q);
    RC_ASSERT(std::fabs(DotProd(z * m, z) - (1.0 - 2.0 * half * half)) < 1e-4);
}

// The third draw is 32766, so s is exactly 1: half the angle has the sine 0.7071, and the direction (a, b, 0) of the
// first two draws turns onto z.
TEST(RandomTilt, FullAmountTiltsByNinetyDegreesInTheHostsSense) {
    HairRandom r = Before(32766, 3), check = r;
    const Point3 z(0, 0, 1);
    const Matrix3 m = RandomTilt(r, z, 1.0f);
    const float a = RandomSignedUnit(check), b = RandomSignedUnit(check);
    const Point3 turned = Normalize(Point3(a, b, 0)) * m;
    EXPECT_NEAR(turned.z, 1.0f, 1e-5f);
    EXPECT_NEAR(DotProd(z * m, z), 0.0f, 1e-5f);
}

TEST(HairColor, HexagonModelByHand) {
    struct {
        Color rgb;
        float h, s, v;
    } const cases[] = {
        {{1, 0, 0}, 0.0f, 1, 1},          {{1, 1, 0}, 1 / 6.0f, 1, 1}, {{0, 1, 0}, 2 / 6.0f, 1, 1},
        {{0, 1, 1}, 3 / 6.0f, 1, 1},      {{0, 0, 1}, 4 / 6.0f, 1, 1}, {{1, 0, 1}, 5 / 6.0f, 1, 1},
        {{0.5f, 0.5f, 0.5f}, 0, 0, 0.5f}, {{0, 0, 0}, 0, 0, 0},        {{0.5f, 0.25f, 0.25f}, 0, 0.5f, 0.5f},
    };
    for (const auto& c : cases) {
        const HsvColor hsv = ToHsv(c.rgb);
        EXPECT_FLOAT_EQ(hsv.h, c.h);
        EXPECT_FLOAT_EQ(hsv.s, c.s);
        EXPECT_FLOAT_EQ(hsv.v, c.v);
    }
    EXPECT_EQ(FromHsv({1.0f, 1.0f, 1.0f}), Color(1, 0, 0));
}

RC_GTEST_PROP(HairColorProperty, HsvAndBack, ()) {
    const auto part = [] { return float(*rc::gen::inRange(0, 256)) / 255.0f; };
    const Color c(part(), part(), part());
    const HsvColor hsv = ToHsv(c);
    RC_ASSERT(hsv.h >= 0.0f && hsv.h < 1.0f && hsv.s >= 0.0f && hsv.s <= 1.0f);
    const Color back = FromHsv(hsv);
    for (int i = 0; i < 3; ++i) RC_ASSERT(std::fabs(back[i] - c[i]) < 2e-6f);
}

TEST(HairColor, BytesDivideAndTruncate) {
    EXPECT_EQ(ToColor(Color24{255, 0, 51}), Color(1.0f, 0.0f, 0.2f));
    EXPECT_EQ(ToColor24(Color(1.0f, 0.5f, 0.999f)), (Color24{255, 127, 254}));
    EXPECT_EQ(ToColor24(Color(-1.0f, 7.0f, NAN)), (Color24{0, 255, 0}));
    for (int i = 0; i < 256; ++i) {
        const Color24 back = ToColor24(ToColor(Color24{uint8_t(i), 0, 0}));
        EXPECT_NEAR(int(back.r), i, 1); // truncation may lose one
    }
}

} // namespace
