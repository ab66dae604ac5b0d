// Keys: tangents, ends, editing by time and by number, reduction.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <memory>

#include "core/controllers.h"
#include "memory_chunks.h"
#include "sdk/hold.h"
#include "test_objects.h"

namespace {

using namespace host;

template <class T = float>
T At(Control& c, TimeValue t) {
    T v{};
    Interval valid = FOREVER;
    c.GetValue(t, &v, valid);
    return v;
}
Interval ValidAt(Control& c, TimeValue t) {
    float v = 0;
    Interval valid = FOREVER;
    c.GetValue(t, &v, valid);
    return valid;
}
float Slope(Control& c, double t, double step = 1) {
    return float((double(At(c, TimeValue(t + step))) - double(At(c, TimeValue(t - step)))) / (2 * step));
}
IFloatKey CustomKey(TimeValue t, float v, float in, float out) {
    IFloatKey key;
    key.time = t;
    key.in = key.out = TangentType::Custom;
    key.val = v;
    key.intan = in, key.outtan = out;
    return key;
}

TEST(Tangents, CustomOnesMakeTheCubic) {
    FloatControl c(KeyClass::Bezier);
    c.SetKey(CustomKey(0, 1, 0, 0.5f));
    c.SetKey(CustomKey(10, 2, -0.25f, 0));
    for (int t = 0; t <= 10; ++t) {
        const float u = float(t) / 10;
        const float expected = 1 + (3 * u * u - 2 * u * u * u) + 10 * 0.5f * (u * u * u - 2 * u * u + u) +
                               10 * -0.25f * (u * u * u - u * u);
        EXPECT_NEAR(At(c, t), expected, 1e-6f) << t;
    }
}

TEST(Tangents, SmoothFollowsTheNeighboursAndAutoStaysBetweenThem) {
    FloatControl smooth, automatic;
    const std::pair<int, float> points[] = {{0, 0.0f}, {1000, 1.0f}, {2000, 1.0f}, {5000, 4.0f}};
    for (const auto& [t, v] : points) {
        smooth.SetKey(t, v, TangentType::Smooth);
        automatic.SetKey(t, v, TangentType::Auto);
    }
    EXPECT_NEAR(Slope(smooth, 1000, 5), 0.5f / 1000, 1e-5f);
    EXPECT_NEAR(Slope(smooth, 2000, 5), 3.0f / 4000, 1e-5f) << "by times: 3 in 4000 ticks";
    EXPECT_LT(At(smooth, 1500), 1) << "the curve bends down to come up at the next key";
    EXPECT_EQ(At(automatic, 1500), 1) << "flat between equal keys";
    EXPECT_EQ(ValidAt(automatic, 1500), Interval(1000, 2000));
    EXPECT_EQ(ValidAt(smooth, 1500), Interval(1500, 1500));
    float last = -1;
    for (int t = 0; t <= 5000; t += 10) {
        EXPECT_GE(At(automatic, t), last) << t;
        last = At(automatic, t);
    }
}

TEST(Tangents, TwoKeysAreStraightAndStepsHold) {
    FloatControl c(KeyClass::Bezier);
    c.SetKey(0, 0);
    c.SetKey(100, 10);
    EXPECT_EQ(c.Keys()[0].in, TangentType::Auto);
    EXPECT_NEAR(At(c, 30), 3, 1e-5f);
    c.SetKey(200, 20, TangentType::Step);
    EXPECT_EQ(At(c, 199), 10) << "a step on the way in holds what was before";
    EXPECT_EQ(At(c, 200), 20);
    EXPECT_EQ(ValidAt(c, 150), Interval(100, 199));
}

TEST(Tangents, RotationsTurnSmoothly) {
    const auto about = [](Point3 axis, float degrees) {
        const float half = degrees * 3.14159265f / 360;
        return Quat(Normalize(axis) * std::sin(half), std::cos(half));
    };
    RotationControl c(KeyClass::Bezier), straight;
    const Quat turns[] = {Quat(), about({0, 0, 1}, 90), about({1, 0, 1}, 120), about({1, 1, 0}, 40)};
    for (int i = 0; i < 4; ++i) {
        c.SetKey(i * 480, turns[i], TangentType::Smooth);
        straight.SetKey(i * 480, turns[i]);
    }
    for (int i = 0; i < 4; ++i) EXPECT_LT(KeyDistance(At<Quat>(c, i * 480), turns[i]), 1e-6f);
    // The speed before and after a key is the same; with straight keys it is not.
    const auto jump = [](Control& k, TimeValue t) {
        const Point3 before = Secant(At<Quat>(k, t - 4), At<Quat>(k, t), 4),
                     after = Secant(At<Quat>(k, t), At<Quat>(k, t + 4), 4);
        return Length(after - before) / Length(after);
    };
    EXPECT_LT(jump(c, 480), 0.08f);
    EXPECT_LT(jump(c, 960), 0.08f);
    EXPECT_GT(jump(straight, 960), 0.3f);
}

TEST(Tangents, OneTurningTangentIsASteadyTurn) {
    RotationControl c(KeyClass::Bezier);
    IRotKey key;
    key.in = key.out = TangentType::Custom;
    key.intan = key.outtan = {0, 0, 0.01f};
    c.SetKey(key);
    key.time = 100;
    key.val = Quat(0, 0, std::sin(0.5f), std::cos(0.5f));
    c.SetKey(key);
    for (const int t : {10, 50, 90})
        EXPECT_LT(KeyDistance(At<Quat>(c, t), Quat(0, 0, std::sin(t * 0.005f), std::cos(t * 0.005f))), 1e-5f) << t;
}

struct Ends : testing::Test {
    Ends() {
        c.SetKey(100, 1);
        c.SetKey(200, 3);
        c.SetKey(300, 2);
    }
    FloatControl c;
};

TEST_F(Ends, ConstantIsHowItBegins) {
    EXPECT_EQ(c.GetORT(ORT_BEFORE), ORT_CONSTANT);
    EXPECT_EQ(At(c, 1000), 2);
    EXPECT_EQ(c.GetTimeRange(), Interval(100, 300));
    EXPECT_EQ(FloatControl().GetTimeRange(), NEVER);
}

TEST_F(Ends, CyclesJumpBackToTheBeginning) {
    c.SetORT(ORT_CYCLE, ORT_AFTER);
    EXPECT_EQ(At(c, 300), 2);
    EXPECT_EQ(At(c, 301), At(c, 101));
    EXPECT_EQ(At(c, 500), 1);
    EXPECT_EQ(At(c, 650), At(c, 250));
    EXPECT_EQ(At(c, 0), 1) << "before stays constant";
    c.SetORT(ORT_CYCLE, ORT_BEFORE);
    EXPECT_EQ(At(c, 99), At(c, 299));
    EXPECT_EQ(At(c, -500), At(c, 100));
    EXPECT_EQ(ValidAt(c, 1000), Interval(1000, 1000));
    c.SetORT(99, ORT_BEFORE);
    EXPECT_EQ(c.GetORT(ORT_BEFORE), ORT_CYCLE) << "no such type";
}

TEST_F(Ends, EditedRangesRepeatWithTheirRests) {
    c.SetORT(ORT_CYCLE, ORT_BEFORE | ORT_AFTER);
    c.EditTimeRange({100, 500});
    EXPECT_EQ(c.GetTimeRange(), Interval(100, 500));
    EXPECT_EQ(At(c, 450), 2);
    EXPECT_EQ(ValidAt(c, 450), Interval(300, 500));
    EXPECT_EQ(At(c, 600), 3);
    EXPECT_EQ(At(c, 0), 2);
    c.EditTimeRange({150, 250});
    EXPECT_EQ(At(c, 260), At(c, 160)) << "a part of the keys";
    c.EditTimeRange(NEVER);
    EXPECT_EQ(c.GetTimeRange(), Interval(100, 300));
}

TEST_F(Ends, LoopsLeadBackToTheFirstKey) {
    c.SetORT(ORT_LOOP, ORT_AFTER);
    c.EditTimeRange({100, 400});
    EXPECT_EQ(At(c, 300), 2);
    EXPECT_EQ(At(c, 350), 1.5f);
    EXPECT_EQ(At(c, 400), 1);
    EXPECT_EQ(At(c, 500), 3);
    EXPECT_EQ(At(c, 650), 1.5f);
    EXPECT_EQ(ValidAt(c, 350), Interval(350, 350));
}

TEST_F(Ends, PingPongAndStraight) {
    c.SetORT(ORT_OSCILLATE, ORT_AFTER);
    c.SetORT(ORT_LINEAR, ORT_BEFORE);
    EXPECT_EQ(At(c, 310), At(c, 290));
    EXPECT_EQ(At(c, 500), 1);
    EXPECT_EQ(At(c, 510), At(c, 110));
    EXPECT_EQ(At(c, 0), -1);
    EXPECT_EQ(At(c, 100), 1);
    FloatControl step;
    step.SetKey(0, 1, TangentType::Step);
    step.SetKey(10, 2, TangentType::Step);
    step.SetORT(ORT_LINEAR, ORT_AFTER);
    EXPECT_EQ(At(step, 100), 2);
    EXPECT_EQ(ValidAt(step, 100), Interval(10, TIME_PosInfinity));
}

TEST_F(Ends, ExtremeTimes) {
    for (const int type : {ORT_CONSTANT, ORT_CYCLE, ORT_LOOP, ORT_OSCILLATE, ORT_LINEAR}) {
        c.SetORT(type, ORT_BEFORE | ORT_AFTER);
        EXPECT_TRUE(std::isfinite(At(c, TIME_NegInfinity))) << type;
        EXPECT_TRUE(std::isfinite(At(c, TIME_PosInfinity))) << type;
    }
    FloatControl one;
    one.SetKey(5, 7);
    one.SetORT(ORT_CYCLE, ORT_BEFORE | ORT_AFTER);
    EXPECT_EQ(At(one, -100), 7);
    EXPECT_EQ(ValidAt(one, -100), FOREVER);
}

// Whatever the keys and ends: inside the interval the value is the same.
RC_GTEST_PROP(Keys, ValidityIsTrue, ()) {
    FloatControl c;
    const int count = *rc::gen::inRange(1, 7);
    for (int i = 0; i < count; ++i) {
        IFloatKey key = CustomKey(*rc::gen::inRange(-30, 30), float(*rc::gen::inRange(0, 3)), 0, 0);
        key.in = TangentType(*rc::gen::inRange(0, 5));
        key.out = TangentType(*rc::gen::inRange(0, 5));
        c.SetKey(key);
    }
    c.SetORT(*rc::gen::inRange(1, 6), ORT_BEFORE);
    c.SetORT(*rc::gen::inRange(1, 6), ORT_AFTER);
    if (*rc::gen::arbitrary<bool>()) {
        const int start = *rc::gen::inRange(-40, 40);
        c.EditTimeRange({start, start + *rc::gen::inRange(0, 60)});
    }
    const TimeValue t = *rc::gen::inRange(-90, 90);
    const Interval valid = ValidAt(c, t);
    RC_ASSERT(valid.InInterval(t));
    for (TimeValue u = std::max(valid.Start(), -120); u <= std::min(valid.End(), 120); ++u)
        RC_ASSERT(At(c, u) == At(c, t));
}

// A change of a key is told with an interval outside of which values stay.
RC_GTEST_PROP(Keys, ChangesAreToldForTheTimesTheyTouch, ()) {
    TimesListener listener;
    FloatControl c(KeyClass::Bezier);
    listener.ReplaceReference(0, &c);
    for (int i = 0; i < 8; ++i)
        c.SetKey(*rc::gen::inRange(0, 60), float(*rc::gen::inRange(0, 9)), TangentType(*rc::gen::inRange(0, 3)));
    FloatControl former;
    for (const auto& key : c.Keys()) former.SetKey(key);
    const TimeValue at = c.GetKeyTime(*rc::gen::inRange(0, c.NumKeys()));
    const int what = *rc::gen::inRange(0, 3);
    if (what == 0) c.DeleteKeyAtTime(at);
    if (what == 1) c.MoveKey(at, *rc::gen::inRange(0, 60));
    if (what == 2) c.SetKey(*rc::gen::inRange(0, 60), 20);
    for (TimeValue t = -5; t < 70; ++t)
        if (!listener.told.InInterval(t) && c.NumKeys() > 0) RC_ASSERT(At(c, t) == At(former, t));
    listener.DeleteAllRefs();
}

TEST(KeyEditing, ByTime) {
    FloatControl c;
    c.SetKey(0, 0);
    c.SetKey(10, 10);
    c.AddNewKey(4);
    EXPECT_EQ(c.NumKeys(), 3);
    EXPECT_EQ(c.Keys()[1].val, 4);
    EXPECT_EQ(At(c, 7), 7) << "the new key bends nothing";
    EXPECT_TRUE(c.MoveKey(4, 6));
    EXPECT_FALSE(c.MoveKey(4, 5));
    EXPECT_EQ(At(c, 6), 4);
    EXPECT_TRUE(c.CopyKey(10, 20));
    EXPECT_EQ(c.GetKeyIndex(20), 3);
    EXPECT_EQ(c.GetKeyIndex(21), -1);
    TimeValue next = 0;
    EXPECT_TRUE(c.GetNextKeyTime(6, true, next));
    EXPECT_EQ(next, 10);
    EXPECT_TRUE(c.GetNextKeyTime(6, false, next));
    EXPECT_EQ(next, 0);
    EXPECT_FALSE(c.GetNextKeyTime(20, true, next));
    EXPECT_TRUE(c.MoveKey(0, 10)) << "replaces the key that stands there";
    EXPECT_EQ(At(c, 10), 0);
    EXPECT_TRUE(c.DeleteKeyAtTime(10));
    EXPECT_FALSE(c.DeleteKeyAtTime(10));
    EXPECT_EQ(c.NumKeys(), 2);
}

TEST(KeyEditing, MappedTimes) {
    struct Backwards : TimeMap {
        TimeValue map(TimeValue t) override { return 100 - t; }
    } backwards;
    FloatControl c;
    c.SetKey(0, 1);
    c.SetKey(40, 2);
    c.EditTimeRange({0, 50});
    c.MapKeys(&backwards);
    EXPECT_EQ(c.GetKeyTime(0), 60);
    EXPECT_EQ(At(c, 60), 2);
    EXPECT_EQ(At(c, 100), 1);
    EXPECT_EQ(c.GetTimeRange(), Interval(50, 100));
    struct Together : TimeMap {
        TimeValue map(TimeValue) override { return 7; }
    } together;
    c.MapKeys(&together);
    EXPECT_EQ(c.NumKeys(), 1);
    EXPECT_EQ(At(c, 0), 1) << "the last of the keys at one time";
}

TEST(KeyEditing, ByNumber) {
    Point3Control c;
    IKeyControl* const keys = GetKeyControlInterface(&c);
    ASSERT_NE(keys, nullptr);
    EXPECT_EQ(GetKeyControlInterface(nullptr), nullptr);
    IPoint3Key key;
    key.time = 50;
    key.val = {1, 2, 3};
    EXPECT_EQ(keys->AppendKey(&key), 0);
    key.time = 10;
    key.val = {};
    keys->AppendKey(&key);
    keys->SortKeys();
    keys->GetKey(1, &key);
    EXPECT_EQ(key.val, Point3(1, 2, 3));
    keys->SetNumKeys(4);
    EXPECT_EQ(c.GetKeyTime(3), 52);
    keys->SetNumKeys(1);
    EXPECT_EQ(keys->GetNumKeys(), 1);
    key.val = {9, 9, 9};
    keys->SetKey(5, &key);
    keys->SetKey(0, &key);
    EXPECT_EQ(At<Point3>(c, 0), Point3(9, 9, 9));
}

TEST(KeyEditing, TransformsAnswerForTheirParts) {
    PrsControl prs;
    static_cast<PositionControl*>(prs.Position())->SetKey(10, {1, 0, 0});
    static_cast<RotationControl*>(prs.Rotation())->SetKey(20, Quat());
    static_cast<ScaleControl*>(prs.Scale())->SetKey(10, {2, 2, 2});
    EXPECT_EQ(prs.NumKeys(), 2);
    EXPECT_EQ(prs.GetKeyTime(1), 20);
    EXPECT_EQ(prs.GetTimeRange(), Interval(10, 20));
    EXPECT_TRUE(prs.MoveKey(10, 30));
    EXPECT_EQ(prs.GetKeyIndex(30), 1);
    EXPECT_TRUE(prs.DeleteKeyAtTime(30));
    EXPECT_EQ(prs.NumKeys(), 1);
    prs.AddNewKey(5);
    EXPECT_EQ(prs.Position()->NumKeys(), 1);
    prs.SetORT(ORT_CYCLE, ORT_AFTER);
    EXPECT_EQ(prs.Rotation()->GetORT(ORT_AFTER), ORT_CYCLE);
    prs.DeleteKeys();
    EXPECT_FALSE(prs.IsAnimated());
}

TEST(KeyReduction, StraightLinesNeedTheirEndsOnly) {
    FloatControl c;
    for (int i = 0; i <= 20; ++i) c.SetKey(i * 160, float(i < 10 ? i : 20 - i));
    EXPECT_TRUE(ApplyKeyReduction(&c, {0, 3200}, 1e-4f, 160));
    EXPECT_EQ(c.NumKeys(), 3);
    EXPECT_NEAR(At(c, 1600), 10, 1e-4f);
    EXPECT_FALSE(ApplyKeyReduction(nullptr, {0, 1}, 1, 1));
    FloatControl two;
    two.SetKey(0, 0);
    two.SetKey(1, 0);
    EXPECT_EQ(two.ReduceKeys({0, 1}, 1, 1, nullptr), 0);
}

TEST(KeyReduction, KeysOutsideOfTheRangeStay) {
    FloatControl c;
    for (int i = 0; i <= 10; ++i) c.SetKey(i * 10, 1);
    EXPECT_EQ(c.ReduceKeys({35, 65}, 0.1f, 5, nullptr), 3);
    EXPECT_EQ(c.GetKeyIndex(30), 3);
    EXPECT_EQ(c.GetKeyIndex(70), 4);
}

TEST(KeyReduction, MayBeEnded) {
    struct Ends : KeyReduceStatus {
        int total = 0, calls = 0;
        void Init(int n) override { total = n; }
        bool Progress(int) override { return ++calls < 3; }
    } status;
    FloatControl c;
    for (int i = 0; i <= 10; ++i) c.SetKey(i, 0);
    EXPECT_FALSE(ApplyKeyReduction(&c, {0, 10}, 1, 1, &status));
    EXPECT_EQ(status.total, 9);
    EXPECT_EQ(c.NumKeys(), 9) << "two were gone by then";
}

// What is left is within the threshold at every step, for values of all kinds.
template <class C, class F>
void CheckReduction(F&& value) {
    C c(KeyClass::Bezier);
    for (int i = 0; i < 40; ++i) c.SetKey(i * 20, value(i));
    const std::unique_ptr<ReferenceTarget> clone(CloneRefHierarchy(&c));
    C& former = static_cast<C&>(*clone);
    const float threshold = float(*rc::gen::inRange(0, 20)) / 50;
    const int removed = c.ReduceKeys({0, 780}, threshold, 5, nullptr);
    RC_ASSERT(c.NumKeys() == 40 - removed);
    for (TimeValue t = 0; t <= 780; t += 5) {
        using T = decltype(typename C::Key().val);
        RC_ASSERT(KeyDistance(At<T>(c, t), At<T>(former, t)) <= threshold);
    }
}
RC_GTEST_PROP(KeyReduction, StaysWithinTheThreshold, ()) {
    const float a = float(*rc::gen::inRange(1, 40)) / 100;
    const auto wave = [a](int i) { return std::sin(float(i) * a) + 0.01f * float(*rc::gen::inRange(0, 3)); };
    CheckReduction<FloatControl>(wave);
    CheckReduction<Point3Control>([&](int i) { return Point3(wave(i), float(i) * a, 0); });
    CheckReduction<RotationControl>([&](int i) { return Normalize(Quat(wave(i), 0.3f, 0, 1)); });
}

TEST(KeyStorage, ComesBackAsItWas) {
    RotationControl c(KeyClass::Bezier);
    IRotKey key;
    key.time = -5;
    key.in = TangentType::Custom, key.out = TangentType::Step;
    key.val = Normalize(Quat(1, 2, 3, 4));
    key.intan = {1, 2, 3};
    c.SetKey(key);
    c.SetKey(40, Quat());
    c.SetORT(ORT_LOOP, ORT_AFTER);
    c.EditTimeRange({-10, 50});
    MemorySave save;
    EXPECT_EQ(c.Save(&save), IO_OK);
    MemoryLoad load(save.bytes);
    RotationControl back;
    EXPECT_EQ(back.Load(&load), IO_OK);
    EXPECT_EQ(back.GetKeyClass(), KeyClass::Bezier);
    ASSERT_EQ(back.NumKeys(), 2);
    EXPECT_EQ(back.Keys()[0].intan, Point3(1, 2, 3));
    EXPECT_EQ(back.Keys()[0].out, TangentType::Step);
    EXPECT_LT(KeyDistance(back.Keys()[0].val, key.val), 1e-6f);
    EXPECT_EQ(back.GetORT(ORT_AFTER), ORT_LOOP);
    EXPECT_EQ(back.GetORT(ORT_BEFORE), ORT_CONSTANT);
    EXPECT_EQ(back.GetTimeRange(), Interval(-10, 50));
}

// Whatever the bytes: an answer, and on errors an untouched controller.
RC_GTEST_PROP(KeyStorage, BrokenDataIsRefused, ()) {
    FloatControl c, reader(3.0f);
    c.SetKey(0, 1);
    c.SetKey(10, 2);
    MemorySave save;
    c.Save(&save);
    for (int i = *rc::gen::inRange(1, 4); i > 0; --i)
        save.bytes[*rc::gen::inRange<size_t>(0, save.bytes.size())] = char(*rc::gen::inRange(0, 256));
    save.bytes.resize(*rc::gen::inRange<size_t>(0, save.bytes.size() + 1));
    MemoryLoad load(save.bytes);
    if (reader.Load(&load) == IO_ERROR) RC_ASSERT(At(reader, 5) == 3);
}

TEST(KeyUndo, OneRecordBringsBackTheTrack) {
    theHold.Flush();
    FloatControl c;
    c.SetKey(0, 1);
    theHold.Begin();
    c.SetKey(10, 2);
    c.SetKey(20, 3);
    c.SetORT(ORT_CYCLE, ORT_AFTER);
    c.ReduceKeys({0, 20}, 10, 1, nullptr);
    theHold.Accept("Keys");
    theHold.Undo();
    EXPECT_EQ(c.NumKeys(), 1);
    EXPECT_EQ(c.GetORT(ORT_AFTER), ORT_CONSTANT);
    theHold.Redo();
    EXPECT_EQ(c.NumKeys(), 2);
    theHold.Flush();
}

TEST(DefaultControllers, AreBezier) {
    const std::pair<Control*, SClass_ID> made[] = {{NewDefaultFloatController(), CTRL_FLOAT_CLASS_ID},
                                                   {NewDefaultPoint3Controller(), CTRL_POINT3_CLASS_ID},
                                                   {NewDefaultColorController(), CTRL_POINT3_CLASS_ID},
                                                   {NewDefaultPoint4Controller(), CTRL_POINT4_CLASS_ID},
                                                   {NewDefaultPositionController(), CTRL_POSITION_CLASS_ID},
                                                   {NewDefaultRotationController(), CTRL_ROTATION_CLASS_ID},
                                                   {NewDefaultScaleController(), CTRL_SCALE_CLASS_ID}};
    for (const auto& [control, super] : made) {
        EXPECT_EQ(control->SuperClassID(), super);
        EXPECT_EQ(control->ClassID().PartB(), BEZIER_CLASS_PART);
        control->DeleteThis();
    }
    Control* const tm = NewDefaultMatrix3Controller();
    EXPECT_EQ(tm->ClassID(), PRS_CLASS_ID);
    EXPECT_EQ(static_cast<PrsControl*>(tm)->Rotation()->ClassID().PartB(), BEZIER_CLASS_PART);
    tm->DeleteThis();
}

} // namespace
