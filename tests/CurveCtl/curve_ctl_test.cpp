// Curve controls: editing, evaluation, notification.

#include "CurveCtl/CurveCtl.h"

#include <gtest/gtest.h>

#include <memory>

#include "core/controllers.h"

namespace {

/// Refers to one curve and counts what it hears.
class Listener : public ReferenceMaker {
public:
    explicit Listener(ReferenceTarget* t) { ReplaceReference(0, t); }
    ~Listener() override { DeleteAllRefs(); }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int) override { return target_; }
    void SetReference(int, RefTargetHandle t) override { target_ = t; }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage m) override {
        changes += m == REFMSG_CHANGE;
        return REF_SUCCEED;
    }
    int changes = 0;

private:
    RefTargetHandle target_ = nullptr;
};

class Editor : public ICurveEditor {
public:
    void Redraw() override { ++redraws; }
    int redraws = 0;
};

/// Positions of all knots after an evaluation at time 0.
std::vector<std::pair<float, float>> Points(CurveCtl& c) {
    std::vector<std::pair<float, float>> points;
    for (const CurveShapeKnot& k : c.Shape(0).knots) points.emplace_back(k.x, k.y);
    return points;
}

TEST(CurveCtl, ANewCurveIsADiagonalOfTwoCorners) {
    CurveCtl c(-1, 3, 2, 10);
    ASSERT_EQ(c.KnotCount(), 2);
    EXPECT_EQ(Points(c), (std::vector<std::pair<float, float>>{{-1, 2}, {3, 10}}));
    EXPECT_EQ(c.Knot(0)->Type(), CURVE_CORNER);
    EXPECT_EQ(c.Knot(1)->Type(), CURVE_CORNER);
    EXPECT_EQ(c.Knot(2), nullptr);
    EXPECT_FALSE(c.Enabled());
    EXPECT_FALSE(c.Active());
    EXPECT_EQ(c.NoiseSize(), 4.0f);
    EXPECT_EQ(c.NoiseDensity(), 10.0f);
    EXPECT_EQ(c.NoisePhase(), 0.0f);
    EXPECT_FALSE(c.UseNoise());
    EXPECT_EQ(c.defaultType, CURVE_SMOOTH);
    EXPECT_EQ(c.viewUpdateMode, 1);
    EXPECT_EQ(c.selection.GetSize(), 2);
    EXPECT_EQ(c.Title(), "Edit Curve");
    EXPECT_EQ(c.xLabelFormat, "%.2f");
    EXPECT_EQ(c.Marks(), 0);
    EXPECT_EQ(c.ColorBarComponent(), -1);
    EXPECT_EQ(c.GetValue(0, 1.0f), 6.0f);
    TSTR name;
    c.GetClassName(name);
    EXPECT_EQ(name, "Curve Control");
    EXPECT_EQ(c.SubAnimName(1), "Knot 2");
    EXPECT_EQ(c.SubAnim(1), c.Knot(1));
    EXPECT_STREQ(CurveKnot::ParamName(0), "X");
    EXPECT_STREQ(CurveKnot::ParamName(1), "Y");
    EXPECT_STREQ(CurveKnot::ParamName(2), "KType");
    EXPECT_EQ(CurveKnot::ParamName(3), nullptr);
}

TEST(CurveCtl, SetKnotKeepsEndsInXAndClampsTheRest) {
    CurveCtl c;
    c.AddKnot(0.5f, 0.5f);
    EXPECT_FALSE(c.SetKnot(0, -1, 0, 0, false));
    EXPECT_FALSE(c.SetKnot(0, 3, 0, 0, false));
    EXPECT_TRUE(c.SetKnot(0, 0, 0.7f, 0.3f, false));
    EXPECT_TRUE(c.SetKnot(0, 2, 0.2f, 7.0f, false));
    EXPECT_TRUE(c.SetKnot(0, 1, -3.0f, -2.0f, false));
    EXPECT_EQ(Points(c), (std::vector<std::pair<float, float>>{{0, 0.3f}, {0.001f, 0}, {1, 1}}));
    EXPECT_TRUE(c.SetKnot(0, 1, 8.0f, 0.5f, false));
    EXPECT_EQ(c.Knot(1)->X(0), 1.0f - 0.001f);
    c.SetKnot(0, 1, 0.25f, 0.5f, false);
    EXPECT_TRUE(c.SetKnot(0, 1, 0.25f, -0.125f, true)); // relative
    EXPECT_EQ(c.Knot(1)->X(0), 0.5f);
    EXPECT_EQ(c.Knot(1)->Y(0), 0.375f);
}

TEST(CurveCtl, AddKnotInsertsInOrder) {
    CurveCtl c;
    c.defaultType = CURVE_CORNER;
    EXPECT_EQ(c.AddKnot(0.5f, 0.25f), 1);
    EXPECT_EQ(c.AddKnot(0.75f, 0.5f), 2);
    EXPECT_EQ(c.AddKnot(0.5f, 0.75f), 1); // not below: stands before its equal
    EXPECT_EQ(c.AddKnot(-4.0f, 0.0f), 1); // never before the first
    EXPECT_EQ(c.KnotCount(), 6);
    EXPECT_EQ(c.selection.GetSize(), 6);
    EXPECT_EQ(c.Knot(1)->Type(), CURVE_CORNER);
    EXPECT_EQ(c.Knot(2)->Y(0), 0.75f);
}

TEST(CurveCtl, AddKnotBeyondTheLastBecomesTheLast) {
    CurveCtl c;
    EXPECT_EQ(c.AddKnot(1.5f, 0.25f), 2);
    EXPECT_EQ(c.Knot(2)->Type(), CURVE_SMOOTH); // the default type
    EXPECT_EQ(c.Knot(2)->X(0), 1.5f);           // stored as given ...
    EXPECT_EQ(Points(c),
              (std::vector<std::pair<float, float>>{{0, 0}, {1.0f - 0.001f, 1}, {1, 0.25f}})); // ... evaluated in range
    CurveCtl d;
    EXPECT_EQ(d.AddKnot(1.0f, 0.25f), 1); // equal to the last: before it
}

TEST(CurveCtl, AHundredKnotsAreTheLimit) {
    CurveCtl c;
    for (int i = 0; i < 98; ++i) ASSERT_GE(c.AddKnot(float(i + 1) / 100.0f, 0.5f), 1);
    EXPECT_EQ(c.KnotCount(), 100);
    EXPECT_EQ(c.AddKnot(0.5f, 0.5f), -1);
    EXPECT_EQ(c.KnotCount(), 100);
}

TEST(CurveCtl, AddKnotKeepsSelectionBits) {
    CurveCtl c;
    c.selection.Set(1);
    c.AddKnot(0.5f, 0.5f);
    EXPECT_TRUE(c.selection[1]);
    EXPECT_FALSE(c.selection[2]);
}

TEST(CurveCtl, DeleteKnotSparesEndsAndLockedKnots) {
    CurveCtl c;
    c.AddKnot(0.25f, 0.1f);
    c.AddKnot(0.5f, 0.2f);
    c.selection.Set(2);
    c.SetLock(1, 1);
    Listener l(&c);
    c.DeleteKnot(0);
    c.DeleteKnot(3);
    c.DeleteKnot(-1);
    c.DeleteKnot(99);
    c.DeleteKnot(1); // locked: silently nothing
    EXPECT_EQ(c.KnotCount(), 4);
    EXPECT_EQ(l.changes, 0);
    c.SetLock(1, -1); // toggles
    EXPECT_FALSE(c.Knot(1)->locked);
    c.DeleteKnot(1);
    EXPECT_EQ(l.changes, 1);
    EXPECT_EQ(c.KnotCount(), 3);
    EXPECT_TRUE(c.selection[1]); // the bit moved down with its knot
    EXPECT_EQ(c.Knot(1)->X(0), 0.5f);
}

TEST(CurveCtl, DeleteSelectedStopsAtALockedKnotWithoutTelling) {
    CurveCtl c;
    for (const float x : {0.2f, 0.4f, 0.6f, 0.8f}) c.AddKnot(x, x);
    for (int i = 0; i < 6; ++i) c.selection.Set(i);
    c.SetLock(2, 1);
    Listener l(&c);
    c.DeleteSelected();
    EXPECT_EQ(l.changes, 0);
    EXPECT_EQ(c.KnotCount(), 5); // the first inner knot is gone
    EXPECT_EQ(c.Knot(1)->X(0), 0.4f);
    c.SetLock(1, 0);
    c.DeleteSelected();
    EXPECT_EQ(l.changes, 1);
    EXPECT_EQ(c.KnotCount(), 2);
    EXPECT_EQ(c.selection.NumberSet(), 2);
}

TEST(CurveCtl, FlipHorizontalMirrorsAndMapsTheMiddleOntoItself) {
    CurveCtl c(1, 3, 0, 1);
    c.AddKnot(1.5f, 0.75f);
    c.SetKnotType(1, CURVE_STEP);
    c.SetLock(1, 1);
    Listener l(&c);
    c.FlipHorizontal();
    EXPECT_EQ(l.changes, 1);
    EXPECT_EQ(Points(c), (std::vector<std::pair<float, float>>{{1, 1}, {2.5f, 0.75f}, {3, 0}}));
    EXPECT_EQ(c.Knot(1)->Type(), CURVE_STEP);
    c.AddKnot(1.25f, 0.5f);
    c.FlipHorizontal();
    EXPECT_EQ(Points(c), (std::vector<std::pair<float, float>>{{1, 0}, {1.5f, 0.75f}, {2.75f, 0.5f}, {3, 1}}));
    EXPECT_EQ(c.Knot(1)->Type(), CURVE_SMOOTH); // types and locks stay in their places
    EXPECT_EQ(c.Knot(2)->Type(), CURVE_STEP);
    EXPECT_TRUE(c.Knot(2)->locked);
}

TEST(CurveCtl, FlipVerticalMirrorsAboutTheRange) {
    CurveCtl c(0, 1, -1, 1);
    c.AddKnot(0.5f, 0.25f);
    Listener l(&c);
    c.FlipVertical();
    EXPECT_EQ(l.changes, 1);
    EXPECT_EQ(Points(c), (std::vector<std::pair<float, float>>{{0, 1}, {0.5f, -0.25f}, {1, -1}}));
}

TEST(CurveCtl, CopyKeepsTheDestinationsRange) {
    CurveCtl from(0, 10, 0, 10), to(0, 1, 0, 1);
    from.AddKnot(4.0f, 8.0f);
    from.selection.Set(1);
    from.SetNoise(true, 3, 4, 5);
    from.SetEnabled(1);
    from.SetTitle("from");
    to.SetTitle("to");
    Listener l(&to);
    to.Copy(from);
    EXPECT_EQ(l.changes, 1);
    EXPECT_EQ(to.XMax(), 1.0f);
    EXPECT_FALSE(to.Enabled());
    EXPECT_EQ(to.Title(), "to");
    EXPECT_TRUE(to.UseNoise());
    EXPECT_EQ(to.NoiseDensity(), 4.0f);
    EXPECT_EQ(to.selection, from.selection);
    EXPECT_EQ(to.Knot(1)->X(0), 4.0f); // stored as it was; evaluation clamps it
    EXPECT_EQ(Points(to), (std::vector<std::pair<float, float>>{{0, 0}, {1.0f - 0.001f, 1}, {1, 1}}));
    EXPECT_NE(to.Knot(1), from.Knot(1));
    from.SetKnot(0, 1, 2, 2, false);
    EXPECT_EQ(to.Knot(1)->X(0), 4.0f);
    to.Copy(to);
    EXPECT_EQ(to.KnotCount(), 3);
}

TEST(CurveCtl, CloneIsACompleteCopy) {
    CurveCtl c(0, 2, 0, 4);
    c.AddKnot(1, 3);
    c.SetEnabled(-1);
    c.SetMarks(5);
    c.SetTitle("title");
    RemapDir remap;
    const std::unique_ptr<CurveCtl> copy(static_cast<CurveCtl*>(remap.CloneRef(&c)));
    EXPECT_EQ(copy->KnotCount(), 3);
    EXPECT_TRUE(copy->Enabled());
    EXPECT_EQ(copy->Marks(), 5);
    EXPECT_EQ(copy->Title(), "title");
    for (const float x : {0.0f, 0.3f, 1.0f, 1.7f}) EXPECT_EQ(copy->GetValue(0, x), c.GetValue(0, x));
}

TEST(CurveCtl, BatchKeepsKnotsQuietButEvaluationFresh) {
    CurveCtl c;
    Listener l(&c);
    c.SetKnot(0, 0, 0, 0.5f, false);
    EXPECT_GT(l.changes, 0);
    l.changes = 0;
    EXPECT_EQ(c.GetValue(0, 0.0f), 0.5f);
    EXPECT_FALSE(c.SetBatch(true));
    c.Knot(0)->SetY(0, 0.25f);
    EXPECT_EQ(l.changes, 0);
    EXPECT_EQ(c.GetValue(0, 0.0f), 0.25f);
    EXPECT_TRUE(c.SetBatch(false));
}

TEST(CurveCtl, SwitchingTellsAndActiveNeedsKnots) {
    CurveCtl c;
    Listener l(&c);
    c.SetEnabled(1);
    EXPECT_TRUE(c.Active());
    c.SetEnabled(-1);
    EXPECT_FALSE(c.Active());
    EXPECT_EQ(l.changes, 2);
    c.SetNoise(true, 0.5f, 3, 0);
    EXPECT_EQ(l.changes, 3);
    EXPECT_TRUE(c.Shape(0).useNoise);
}

TEST(CurveCtl, AnOpenEditorIsRedrawn) {
    CurveCtl c;
    Editor e;
    c.SetEditor(&e);
    c.SetMarks(0); // no change
    EXPECT_EQ(e.redraws, 0);
    c.SetMarks(4);
    EXPECT_EQ(e.redraws, 1);
    c.SetEnabled(1);
    EXPECT_EQ(e.redraws, 2);
}

TEST(CurveCtl, UpdateHandsOutTheCachedInterval) {
    CurveCtl c;
    Interval valid(100, 200);
    c.Update(150, valid);
    EXPECT_EQ(valid, Interval(100, 200));
    EXPECT_EQ(c.LastTime(), 150);
    c.Update(170, valid); // inside the cache: nothing is evaluated
    EXPECT_EQ(c.LastTime(), 150);
}

TEST(CurveCtl, AnimatedKnotsMoveAndNarrowTheValidity) {
    CurveCtl c;
    c.defaultType = CURVE_CORNER;
    c.AddKnot(0.5f, 0.5f);
    auto* control = new host::FloatControl(0.5f);
    control->SetKey(0, 0.0f);
    control->SetKey(1000, 1.0f);
    ASSERT_TRUE(c.Knot(1)->GetParamBlock(0)->SetController(KNOT_Y, control));
    EXPECT_FLOAT_EQ(c.GetValue(500, 0.5f), 0.5f);
    EXPECT_FLOAT_EQ(c.GetValue(250, 0.5f), 0.25f);
    Interval valid = FOREVER;
    c.Update(250, valid);
    EXPECT_EQ(valid, Interval(250, 250));
    valid = FOREVER;
    c.Update(2000, valid);
    EXPECT_TRUE(valid.InInterval(5000) && !valid.InInterval(999));
    EXPECT_EQ(c.GetValue(2000, 0.5f), 1.0f);
}

// A knot that is animated past its neighbour pushes it; the neighbour comes back with it, whatever came in between.
TEST(CurveCtl, EvaluationDoesNotDependOnWhatWasEvaluatedBefore) {
    CurveCtl c;
    c.defaultType = CURVE_CORNER;
    c.AddKnot(0.25f, 0.9f);
    c.AddKnot(0.5f, 0.1f);
    auto* control = new host::FloatControl(0.25f);
    control->SetKey(0, 0.25f);
    control->SetKey(1000, 0.75f);
    ASSERT_TRUE(c.Knot(1)->GetParamBlock(0)->SetController(KNOT_X, control));
    const float before = c.GetValue(0, 0.5f);
    EXPECT_EQ(c.Shape(1000).knots[2].x, 0.75f + 0.001f);
    EXPECT_EQ(c.GetValue(0, 0.5f), before);
    EXPECT_FLOAT_EQ(before, 0.1f);
}

TEST(CurveCtl, SplineCoefficientsOfAnUnfittedRunStay) {
    CurveCtl c;
    c.AddKnot(0.5f, 0.75f);
    const float fitted = c.GetValue(0, 0.25f);
    c.SetKnotType(2, CURVE_SMOOTH); // now the run reaches the end of the list
    EXPECT_EQ(c.GetValue(0, 0.25f), fitted);
    CurveCtl fresh;
    fresh.SetKnotType(1, CURVE_SMOOTH);
    EXPECT_EQ(fresh.GetValue(0, 0.5f), 0.0f); // coefficients start at 0
}

} // namespace
