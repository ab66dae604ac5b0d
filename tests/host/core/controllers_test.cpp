// Controllers: keys, exact validity, transforms.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <memory>

#include "core/controllers.h"
#include "test_objects.h"

namespace {

using namespace host;

template <class T>
struct At {
    T value;
    Interval valid;
};

template <class T>
At<T> Get(Control& c, TimeValue t) {
    At<T> at{T(), FOREVER};
    c.GetValue(t, &at.value, at.valid);
    return at;
}

void ExpectNear(const Point3& a, const Point3& b, float tolerance) {
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(a[i], b[i], tolerance) << "component " << i;
}

void ExpectNear(const Matrix3& a, const Matrix3& b, float tolerance) {
    for (int i = 0; i < 4; ++i) ExpectNear(a.GetRow(i), b.GetRow(i), tolerance);
}

TEST(FloatControl, AConstantHoldsForever) {
    FloatControl c(2.5f);
    EXPECT_EQ(Get<float>(c, 17).value, 2.5f);
    EXPECT_EQ(Get<float>(c, 17).valid, FOREVER);
    EXPECT_FALSE(c.IsAnimated());
    const float v = -1;
    c.SetValue(100, &v);
    EXPECT_EQ(Get<float>(c, 0).value, -1);
    EXPECT_FALSE(c.IsAnimated());
}

TEST(FloatControl, LinearKeysAndTheirEnds) {
    FloatControl c;
    c.SetKey(200, 3);
    c.SetKey(100, 1);
    EXPECT_EQ(Get<float>(c, 50).value, 1);
    EXPECT_EQ(Get<float>(c, 50).valid, Interval(TIME_NegInfinity, 100));
    EXPECT_EQ(Get<float>(c, 100).valid, Interval(TIME_NegInfinity, 100));
    EXPECT_EQ(Get<float>(c, 150).value, 2);
    EXPECT_EQ(Get<float>(c, 150).valid, Interval(150, 150));
    EXPECT_EQ(Get<float>(c, 200).value, 3);
    EXPECT_EQ(Get<float>(c, 200).valid, Interval(200, TIME_PosInfinity));
    EXPECT_EQ(Get<float>(c, 9999).valid, Interval(200, TIME_PosInfinity));
}

TEST(FloatControl, EqualKeysMakeOneStretch) {
    FloatControl c;
    c.SetKey(0, 1);
    c.SetKey(10, 5);
    c.SetKey(20, 5);
    c.SetKey(30, 5);
    c.SetKey(40, 1);
    for (const TimeValue t : {10, 15, 20, 29, 30}) {
        EXPECT_EQ(Get<float>(c, t).value, 5) << t;
        EXPECT_EQ(Get<float>(c, t).valid, Interval(10, 30)) << t;
    }
    EXPECT_EQ(Get<float>(c, 31).valid, Interval(31, 31));
}

TEST(FloatControl, ConstantKeysHoldUntilTheNext) {
    FloatControl c;
    c.SetKey(0, 1, TangentType::Step);
    c.SetKey(10, 2, TangentType::Step);
    c.SetKey(20, 2);
    c.SetKey(30, 4);
    EXPECT_EQ(Get<float>(c, 9).value, 1);
    EXPECT_EQ(Get<float>(c, 9).valid, Interval(TIME_NegInfinity, 9));
    EXPECT_EQ(Get<float>(c, 10).value, 2);
    EXPECT_EQ(Get<float>(c, 15).valid, Interval(10, 20));
    EXPECT_EQ(Get<float>(c, 25).value, 3);
}

TEST(FloatControl, SettingAnAnimatedControllerMakesKeys) {
    FloatControl c;
    c.SetKey(0, 0);
    const float v = 10;
    c.SetValue(100, &v);
    ASSERT_EQ(c.Keys().size(), 2u);
    EXPECT_EQ(Get<float>(c, 50).value, 5);
    c.SetValue(100, &v);
    EXPECT_EQ(c.Keys().size(), 2u) << "a key at the same time is replaced";
    c.DeleteKeys();
    EXPECT_EQ(Get<float>(c, 50).value, 0);
}

TEST(FloatControl, KeysAtTheEndsOfTime) {
    FloatControl c;
    c.SetKey(TIME_NegInfinity, 0);
    c.SetKey(TIME_PosInfinity, 1);
    EXPECT_NEAR(Get<float>(c, 0).value, 0.5f, 1e-6f);
}

TEST(FloatControl, ChangesAreTold) {
    FloatControl c;
    Thing t(1);
    t.ReplaceReference(0, &c);
    const float v = 1;
    c.SetValue(0, &v);
    c.SetKey(0, 2);
    c.DeleteKeys();
    EXPECT_EQ(t.heard.size(), 3u);
}

// The interval is right (same value at its ends) and cannot be made longer.
RC_GTEST_PROP(KeyTrack, ValidityIsExact, ()) {
    FloatControl c;
    const int count = *rc::gen::inRange(1, 8);
    for (int i = 0; i < count; ++i)
        c.SetKey(*rc::gen::inRange(-30, 30), float(*rc::gen::inRange(0, 3)),
                 *rc::gen::element(TangentType::Linear, TangentType::Step));
    const TimeValue t = *rc::gen::inRange(-40, 40);
    const At<float> at = Get<float>(c, t);
    RC_ASSERT(at.valid.InInterval(t));
    const TimeValue low = std::max(at.valid.Start(), -50), high = std::min(at.valid.End(), 50);
    for (TimeValue u = low; u <= high; ++u) RC_ASSERT(Get<float>(c, u).value == at.value);
    if (low > -50) RC_ASSERT(Get<float>(c, low - 1).value != at.value);
    if (high < 50) RC_ASSERT(Get<float>(c, high + 1).value != at.value);
}

TEST(Point3Control, BlendsByComponents) {
    Point3Control c(Point3(1, 1, 1));
    EXPECT_EQ(Get<Point3>(c, 0).value, Point3(1, 1, 1));
    c.SetKey(0, {0, 2, 4});
    c.SetKey(4, {4, 2, 0});
    EXPECT_EQ(Get<Point3>(c, 1).value, Point3(1, 2, 3));
}

TEST(RotationControl, TurnsAtConstantSpeedAlongTheShorterArc) {
    const float h = std::sqrt(0.5f);
    RotationControl c;
    c.SetKey(0, Quat());
    c.SetKey(90, Quat(0, 0, -h, -h)); // a quarter turn about Z, written with the opposite sign
    for (const int degrees : {0, 30, 45, 60, 90}) {
        const float half = float(degrees) * 3.14159265f / 360;
        ExpectNear(Get<Quat>(c, degrees).value.ToMatrix(), Quat(0, 0, std::sin(half), std::cos(half)).ToMatrix(),
                   1e-6f);
    }
    EXPECT_EQ(Get<Quat>(c, 45).valid, Interval(45, 45));
}

TEST(RotationControl, ClosebyAndUnnormalisedKeys) {
    RotationControl c;
    c.SetKey(0, Quat(0, 0, 0, 2));
    c.SetKey(10, Quat(0, 0, 0.01f, 1));
    EXPECT_EQ(Get<Quat>(c, 0).value, Quat());
    const Quat q = Get<Quat>(c, 5).value;
    EXPECT_NEAR(DotProd(q, q), 1, 1e-6f);
    EXPECT_NEAR(q.z, 0.005f, 1e-5f);
}

TEST(ScaleControl, StartsAtOne) {
    ScaleControl c;
    EXPECT_EQ(Get<Point3>(c, 0).value, Point3(1, 1, 1));
}

TEST(PrsControl, ScalesThenTurnsThenMoves) {
    PrsControl c;
    const float h = std::sqrt(0.5f);
    const Point3 move(10, 0, 0), scale(2, 1, 1);
    const Quat turn(0, 0, h, h); // about Z, Y toward X
    c.Position()->SetValue(0, &move);
    c.Rotation()->SetValue(0, &turn);
    c.Scale()->SetValue(0, &scale);
    const Matrix3 tm = Get<Matrix3>(c, 0).value;
    ExpectNear(Point3(0, 1, 0) * tm, {11, 0, 0}, 1e-6f);
    ExpectNear(Point3(1, 0, 0) * tm, {10, -2, 0}, 1e-6f);
}

TEST(PrsControl, ValidityIsTheIntersection) {
    PrsControl c;
    EXPECT_EQ(Get<Matrix3>(c, 0).valid, FOREVER);
    static_cast<PositionControl*>(c.Position())->SetKey(10, {1, 0, 0});
    static_cast<PositionControl*>(c.Position())->SetKey(20, {2, 0, 0});
    static_cast<ScaleControl*>(c.Scale())->SetKey(5, {1, 1, 1});
    static_cast<ScaleControl*>(c.Scale())->SetKey(8, {2, 1, 1});
    EXPECT_EQ(Get<Matrix3>(c, 9).valid, Interval(8, 10));
    EXPECT_TRUE(c.IsAnimated());
}

TEST(PrsControl, PartsAreReplacedByKindOnly) {
    PrsControl c;
    auto* const position = new PositionControl(Point3(1, 2, 3));
    position->SetAutoDelete(true);
    EXPECT_EQ(c.ReplaceReference(0, position), REF_SUCCEED);
    EXPECT_EQ(Get<Matrix3>(c, 0).value.GetTrans(), Point3(1, 2, 3));
    FloatControl wrong;
    EXPECT_EQ(c.ReplaceReference(1, &wrong), REF_FAIL);
    EXPECT_NE(c.Rotation(), nullptr);
    EXPECT_EQ(c.SubAnimName(0), "Position");
}

TEST(PrsControl, ClonesAreIndependent) {
    const auto c = std::make_unique<PrsControl>();
    static_cast<PositionControl*>(c->Position())->SetKey(0, {1, 0, 0});
    RemapDir remap;
    const std::unique_ptr<ReferenceTarget> copy(remap.CloneRef(c.get()));
    static_cast<PositionControl*>(c->Position())->SetKey(0, {5, 0, 0});
    EXPECT_EQ(Get<Matrix3>(static_cast<PrsControl&>(*copy), 0).value.GetTrans(), Point3(1, 0, 0));
}

TEST(MatrixControl, KeepsTheMatrixBitForBit) {
    MatrixControl c;
    const Matrix3 sheared({1, 0.3f, 0}, {0, 2, 0}, {0.1f, 0, 3}, {4, 5, 6});
    c.SetValue(0, &sheared);
    EXPECT_EQ(Get<Matrix3>(c, 77).value, sheared);
}

// Any rotation, scale and translation survives splitting; mirrored ones too.
RC_GTEST_PROP(Decompose, GivesTheMatrixBack, ()) {
    const auto number = [](int range) { return float(*rc::gen::inRange(-range, range + 1)) / 16; };
    Quat q(number(16), number(16), number(16), number(16));
    q = Normalize(q);
    const auto factor = [] { return float(*rc::gen::inRange(1, 64)) / 16; };
    Point3 scale(factor(), factor(), factor());
    if (*rc::gen::arbitrary<bool>()) scale.y = -scale.y;
    Matrix3 m = ScaleMatrix(scale) * q.ToMatrix();
    m.SetTrans({number(100), number(100), number(100)});
    const AffineParts parts = Decompose(m);
    Matrix3 again = ScaleMatrix(parts.scale) * parts.rotation.ToMatrix();
    again.SetTrans(parts.translation);
    for (int i = 0; i < 4; ++i) RC_ASSERT(Length(again.GetRow(i) - m.GetRow(i)) < 2e-5f);
}

TEST(Decompose, CollapsedAxesAndShear) {
    const AffineParts flat = Decompose(ScaleMatrix({2, 3, 0}));
    EXPECT_EQ(flat.scale, Point3(2, 3, 0));
    ExpectNear(flat.rotation.ToMatrix(), Matrix3(), 1e-6f);
    const AffineParts none = Decompose(ScaleMatrix({0, 0, 0}));
    EXPECT_EQ(none.scale, Point3(0, 0, 0));
    const AffineParts sheared = Decompose(Matrix3({1, 0, 0}, {0.5f, 1, 0}, {0, 0, 1}, {}));
    EXPECT_NEAR(DotProd(sheared.rotation, sheared.rotation), 1, 1e-6f);
    ExpectNear(sheared.rotation.ToMatrix(), Matrix3(), 1e-6f);
}

} // namespace
