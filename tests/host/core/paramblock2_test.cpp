// Parameter blocks: values of all types, ranges, accessors, validators, controllers.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>

#include "core/controllers.h"
#include "paramblock2_fixture.h"

namespace {

using host::FloatControl;
using host::Point3Control;

TEST_F(BlockTest, LayoutAndDefaults) {
    EXPECT_EQ(block->GetDesc(), &desc);
    EXPECT_EQ(block->ID(), 3);
    EXPECT_EQ(block->GetOwner(), &owner);
    EXPECT_EQ(block->SuperClassID(), PARAMETER_BLOCK2_CLASS_ID);
    EXPECT_EQ(block->NumParams(), int(desc.params.size()));
    EXPECT_EQ(block->IDtoIndex(kFloat), 0);
    EXPECT_EQ(block->IndextoID(1), kInt);
    EXPECT_EQ(block->IDtoIndex(404), -1);
    EXPECT_EQ(block->IDtoIndex(-1), -1);
    EXPECT_EQ(block->IndextoID(99), -1);
    EXPECT_EQ(block->GetFloat(kFloat), 0.5f);
    EXPECT_EQ(block->GetInt(kInt), 7);
    EXPECT_EQ(block->GetInt(kBool), 1);
    EXPECT_EQ(block->GetInt(kTime), -1);
    EXPECT_EQ(block->GetColor(kColor), Color(0.25f, 0.5f, 0.75f));
    EXPECT_EQ(block->GetStr(kString), "text");
    EXPECT_EQ(block->GetReferenceTarget(kTarget), nullptr);
    EXPECT_EQ(block->Count(kFloat), 1);
    EXPECT_EQ(block->Count(kNodes), 0);
}

TEST_F(BlockTest, EveryTypeCanBeSet) {
    EXPECT_TRUE(block->SetValue(kFloat, 0, 0.75f));
    EXPECT_TRUE(block->SetValue(kInt, 0, 3));
    EXPECT_TRUE(block->SetValue(kBool, 0, 17));
    EXPECT_TRUE(block->SetValue(kTime, 0, 4800));
    EXPECT_TRUE(block->SetValue(kColor, 0, Color(1, 0, 0.5f)));
    EXPECT_TRUE(block->SetValue(kPoint, 0, Point3(1, -2, 3)));
    EXPECT_TRUE(block->SetValue(kString, 0, TSTR("other")));
    EXPECT_EQ(block->GetFloat(kFloat), 0.75f);
    EXPECT_EQ(block->GetInt(kInt), 3);
    EXPECT_EQ(block->GetInt(kBool), 1);
    EXPECT_EQ(block->GetInt(kTime), 4800);
    EXPECT_EQ(block->GetColor(kColor), Color(1, 0, 0.5f));
    Interval valid = FOREVER;
    EXPECT_EQ(block->GetPoint3(kPoint, 0, valid), Point3(1, -2, 3));
    EXPECT_EQ(block->GetStr(kString), "other");
    EXPECT_EQ(valid, FOREVER);
}

TEST_F(BlockTest, UnknownIdsAreIgnoredAndReadAsZero) {
    EXPECT_FALSE(block->SetValue(404, 0, 1.0f));
    EXPECT_FALSE(block->SetValue(-5, 0, 1));
    Interval valid = FOREVER;
    EXPECT_EQ(block->GetFloat(404), 0);
    EXPECT_EQ(block->GetInt(-5), 0);
    EXPECT_EQ(block->GetStr(404), "");
    EXPECT_EQ(block->GetPoint3(404, 0, valid), Point3());
    EXPECT_EQ(block->GetINode(404), nullptr);
    EXPECT_EQ(block->Count(404), 0);
    EXPECT_FALSE(block->SetCount(404, 2));
    EXPECT_EQ(block->GetController(404), nullptr);
}

TEST_F(BlockTest, TypesMustFit) {
    EXPECT_TRUE(block->SetValue(kFloat, 0, 1)) << "a whole number fits a float";
    EXPECT_EQ(block->GetFloat(kFloat), 1.0f);
    EXPECT_FALSE(block->SetValue(kInt, 0, 1.0f));
    EXPECT_FALSE(block->SetValue(kString, 0, 1));
    EXPECT_FALSE(block->SetValue(kFloat, 0, Point3(1, 1, 1)));
    EXPECT_FALSE(block->SetValue(kColor, 0, 1.0f));
    EXPECT_FALSE(block->SetValue(kInt, 0, TSTR("1")));
    EXPECT_FALSE(block->SetValue(kFloat, 0, &target));
    EXPECT_FALSE(block->SetValue(kFloat, 0, 1.0f, 1)) << "no such entry";
    EXPECT_EQ(block->GetInt(kFloat), 1) << "numbers are read as the type asked for";
    EXPECT_EQ(block->GetFloat(kInt), 7.0f);
    EXPECT_EQ(block->GetFloat(kString), 0);
}

TEST_F(BlockTest, NoNumberIsRefused) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(block->SetValue(kFloat, 0, nan));
    EXPECT_FALSE(block->SetValue(kPoint, 0, Point3(0, nan, 0)));
    EXPECT_EQ(block->GetFloat(kFloat), 0.5f);
}

TEST_F(BlockTest, ValuesAreClampedToTheirRange) {
    block->SetValue(kFloat, 0, 5.0f);
    EXPECT_EQ(block->GetFloat(kFloat), 1.0f);
    block->SetValue(kFloat, 0, -std::numeric_limits<float>::infinity());
    EXPECT_EQ(block->GetFloat(kFloat), 0.0f);
    block->SetValue(kInt, 0, 1000);
    EXPECT_EQ(block->GetInt(kInt), 10);
    block->SetValue(kInt, 0, -1000);
    EXPECT_EQ(block->GetInt(kInt), -2);
    block->SetValue(kColor, 0, Color(-1, 0.5f, 2));
    EXPECT_EQ(block->GetColor(kColor), Color(0, 0.5f, 1));
    block->SetValue(kPoint, 0, Point3(-1e9f, 0, 1e9f));
    Interval valid = FOREVER;
    EXPECT_EQ(block->GetPoint3(kPoint, 0, valid), Point3(-1e9f, 0, 1e9f)) << "no range";
}

TEST_F(BlockTest, FullRangeTimesKeepEveryTick) {
    for (const int t : {INT_MAX, INT_MIN, INT_MAX - 1, 0, 123456789}) {
        block->SetValue(kTime, 0, t);
        EXPECT_EQ(block->GetInt(kTime), t);
    }
}

RC_GTEST_FIXTURE_PROP(BlockTest, ClampingNeverLeavesTheRange, (int i)) {
    block->SetValue(kInt, 0, i);
    RC_ASSERT(block->GetInt(kInt) == std::clamp(i, -2, 10));
    const float f = float(i) / 64;
    block->SetValue(kFloat, 0, f);
    RC_ASSERT(block->GetFloat(kFloat) == std::clamp(f, 0.0f, 1.0f));
}

TEST_F(BlockTest, OwnersAreToldWhichParameterChanged) {
    ParamID seen = 0;
    int entry = -2;
    owner.onNotify = [&](RefTargetHandle t, PartID& part, RefMessage message) {
        EXPECT_EQ(t, block);
        EXPECT_EQ(message, REFMSG_CHANGE);
        EXPECT_EQ(part, PART_ALL);
        seen = block->LastNotifyParamID(&entry);
        return REF_SUCCEED;
    };
    block->SetValue(kInt, 0, 3);
    EXPECT_EQ(seen, kInt);
    EXPECT_EQ(entry, 0);
    EXPECT_EQ(block->LastNotifyParamID(), -1) << "only while dependents are told";
    EXPECT_EQ(owner.heard.size(), 1u);
    block->SetValue(kInt, 0, 1.0f);
    EXPECT_EQ(owner.heard.size(), 1u) << "nothing changed";
}

TEST_F(BlockTest, AccessorsReadAfterTheBlockAndWriteInItsPlace) {
    block->SetValue(kHeld, 0, 4.0f);
    EXPECT_EQ(accessor.sets, 1);
    EXPECT_EQ(accessor.lastSet, 4.0f);
    EXPECT_EQ(accessor.owner, &owner);
    EXPECT_EQ(accessor.id, kHeld);
    EXPECT_EQ(block->GetFloat(kHeld), 400.0f) << "Get multiplies";
    block->SetValue(kHeld, 0, 50.0f);
    EXPECT_EQ(accessor.lastSet, 20.0f) << "clamped before the accessor sees it";
    accessor.replace = 3.0f;
    block->SetValue(kHeld, 0, 4.0f);
    EXPECT_EQ(block->GetFloat(kHeld), 300.0f) << "what Set leaves is kept";
    accessor.replace = 1e6f;
    block->SetValue(kHeld, 0, 4.0f);
    EXPECT_EQ(block->GetFloat(kHeld), 2000.0f) << "and clamped again";
}

TEST_F(BlockTest, AccessorsSeeTheStoredValueAndNarrowValidity) {
    float stored = 0;
    accessor.onSet = [&] { stored = block->GetFloat(kHeld) / 100; };
    block->SetValue(kHeld, 0, 6.0f);
    EXPECT_EQ(stored, 6.0f);
    accessor.valid = Interval(5, 9);
    Interval valid = FOREVER;
    block->GetValidity(kHeld, 7, valid);
    EXPECT_EQ(valid, Interval(5, 9));
}

TEST_F(BlockTest, TheOwnerIsToldAfterTheAccessor) {
    std::vector<int> order;
    accessor.onSet = [&] { order.push_back(1); };
    owner.onNotify = [&](RefTargetHandle, PartID&, RefMessage) {
        order.push_back(2);
        return REF_SUCCEED;
    };
    block->SetValue(kHeld, 0, 6.0f);
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST_F(BlockTest, AnAccessorMayMakeTheOwnerDropTheBlock) {
    accessor.onSet = [&] { owner.DeleteReference(0); };
    EXPECT_TRUE(block->SetValue(kHeld, 0, 6.0f));
    EXPECT_EQ(owner.GetReference(0), nullptr);
}

TEST_F(BlockTest, ControllersNeedAnAnimatableParameterOfTheirType) {
    FloatControl number;
    Point3Control point;
    EXPECT_FALSE(block->SetController(kTime, &number)) << "not animatable";
    EXPECT_FALSE(block->SetController(kFloat, &point));
    EXPECT_FALSE(block->SetController(kColor, &number));
    EXPECT_FALSE(block->SetController(404, &number));
    EXPECT_FALSE(number.HasDependents());
    EXPECT_FALSE(number.AutoDelete());
}

TEST_F(BlockTest, ControllersGiveValuesAndValidity) {
    auto* const c = new FloatControl;
    c->SetKey(0, 0);
    c->SetKey(100, 2);
    ASSERT_TRUE(block->SetController(kFloat, c));
    EXPECT_EQ(block->GetController(kFloat), c);
    Interval valid = FOREVER;
    EXPECT_EQ(block->GetFloat(kFloat, 25, valid), 0.5f);
    EXPECT_EQ(valid, Interval(25, 25));
    EXPECT_EQ(block->GetFloat(kFloat, 90), 1.0f) << "controllers are clamped too";
    valid = FOREVER;
    block->GetValidity(kFloat, 200, valid);
    EXPECT_EQ(valid, Interval(100, TIME_PosInfinity));
    block->SetValue(kFloat, 50, 0.75f);
    EXPECT_EQ(c->Keys().size(), 3u) << "setting makes a key";
    EXPECT_EQ(block->GetFloat(kFloat, 50), 0.75f);
    EXPECT_TRUE(block->SetController(kFloat, nullptr));
    EXPECT_EQ(block->GetFloat(kFloat), 0.75f) << "the constant last set";
}

TEST_F(BlockTest, WholeNumbersOfControllersAreRounded) {
    auto* const c = new FloatControl;
    ASSERT_TRUE(block->SetController(kInt, c));
    for (const auto& [value, expected] :
         std::vector<std::pair<float, int>>{{2.5f, 3}, {2.49f, 2}, {-1.5f, -1}, {99, 10}}) {
        c->SetValue(0, &value);
        EXPECT_EQ(block->GetInt(kInt), expected) << value;
    }
    block->SetValue(kInt, 0, 4);
    EXPECT_EQ(block->GetInt(kInt), 4);
}

TEST_F(BlockTest, ChangesOfControllersAreToldOnceWithTheirParameter) {
    auto* const c = new Point3Control;
    ASSERT_TRUE(block->SetController(kColor, c));
    owner.heard.clear();
    ParamID seen = -1;
    owner.onNotify = [&](RefTargetHandle, PartID&, RefMessage) {
        seen = block->LastNotifyParamID();
        return REF_SUCCEED;
    };
    c->SetKey(0, {1, 1, 1});
    EXPECT_EQ(seen, kColor);
    EXPECT_EQ(owner.heard.size(), 1u);
    block->SetValue(kColor, 0, Color(0, 0, 0));
    EXPECT_EQ(owner.heard.size(), 2u) << "the block speaks, not the controller as well";
}

TEST_F(BlockTest, TracksHaveTheParametersNames) {
    std::vector<std::string> names;
    for (int i = 0; i < block->NumSubs(); ++i) names.push_back(block->SubAnimName(i));
    EXPECT_EQ(names, (std::vector<std::string>{"Float", "pid_int", "Color", "Target"}));
    EXPECT_EQ(block->SubAnim(0), nullptr);
    auto* const c = new FloatControl;
    block->SetController(kFloat, c);
    EXPECT_EQ(block->SubAnim(0), c);
    auto* const track = new Thing;
    block->SetValue(kTarget, 0, track);
    EXPECT_EQ(block->SubAnim(3), track);
    EXPECT_EQ(block->SubAnim(99), nullptr);
}

} // namespace
