// Editing and evaluation of curve controls.

#include "CurveCtl/CurveCtl.h"

#include <algorithm>
#include <cstdio>

#include "HairDLL/StringTable.h"

namespace {

/// Least distance in x that editing keeps between neighbouring knots.
constexpr float kKnotGap = 0.001f;

/// Keeps a curve's knots from telling its dependents for a scope.
class BatchUpdate {
public:
    explicit BatchUpdate(CurveCtl& curve) : curve_(curve), before_(curve.SetBatch(true)) {}
    ~BatchUpdate() { curve_.SetBatch(before_); }
    BatchUpdate(const BatchUpdate&) = delete;
    BatchUpdate& operator=(const BatchUpdate&) = delete;

private:
    CurveCtl& curve_;
    bool before_;
};

} // namespace

CurveCtl::CurveCtl(float xMin, float xMax, float yMin, float yMax) : title_(FindString(kTextEditCurve)) {
    shape_.xMin = xMin, shape_.xMax = xMax, shape_.yMin = yMin, shape_.yMax = yMax;
    shape_.noiseSize = (yMax - yMin) / 2.0f;
    InsertKnot(0, new CurveKnot(xMin, yMin, CURVE_CORNER));
    InsertKnot(1, new CurveKnot(xMax, yMax, CURVE_CORNER));
    selection.SetSize(2);
}

// Slots. Pointers may move between the slots of one curve freely: the host counts back references a slot, not by
// number.

void CurveCtl::InsertKnot(int index, CurveKnot* knot) {
    knot->SetAutoDelete(true);
    knots_.insert(knots_.begin() + index, nullptr);
    ReplaceReference(index, knot);
}

void CurveCtl::RemoveKnot(int index) {
    ReplaceReference(index, nullptr);
    knots_.erase(knots_.begin() + index);
    selection.DeleteSet(index);
}

void CurveCtl::RemoveAllKnots() {
    for (int i = KnotCount(); i-- > 0;) ReplaceReference(i, nullptr);
    knots_.clear();
}

void CurveCtl::SetSlotCount(int n) {
    RemoveAllKnots();
    knots_.resize(size_t(n), nullptr);
    selection.SetSize(n);
    selection.ClearAll();
}

bool CurveCtl::SetKnot(TimeValue t, int index, float x, float y, bool relative) {
    CurveKnot* knot = Knot(index);
    if (!knot) return false;
    if (relative) {
        x += knot->X(t);
        y += knot->Y(t);
    }
    const CurveKnot *before = Knot(index - 1), *after = Knot(index + 1);
    if (before && after) {
        x = std::max(x, before->X(t) + kKnotGap);
        x = std::min(x, after->X(t) - kKnotGap);
        knot->SetX(t, x);
    }
    knot->SetY(t, std::min(std::max(y, shape_.yMin), shape_.yMax));
    valid_.SetEmpty();
    return true;
}

int CurveCtl::AddKnot(float x, float y) {
    const int count = KnotCount();
    if (count >= kMaxCurveKnots) return -1;
    int index = std::min(count, 1);
    for (int i = 0; i < count; ++i)
        if (knots_[size_t(i)] && knots_[size_t(i)]->X(0) < x) index = i + 1;
    InsertKnot(index, new CurveKnot(x, y, defaultType));
    selection.SetSize(KnotCount());
    RebuildAndNotify();
    return index;
}

void CurveCtl::DeleteKnot(int index) {
    if (index < 1 || index > KnotCount() - 2 || (Knot(index) && Knot(index)->locked)) return;
    RemoveKnot(index);
    RebuildAndNotify();
}

void CurveCtl::DeleteSelected() {
    for (int i = 1; i < KnotCount() - 1;) {
        if (!selection[i]) {
            ++i;
            continue;
        }
        if (Knot(i) && Knot(i)->locked) return;
        RemoveKnot(i);
        valid_.SetEmpty();
    }
    RebuildAndNotify();
}

void CurveCtl::SetKnotType(int index, int type) {
    if (CurveKnot* knot = Knot(index)) knot->SetType(type);
}

void CurveCtl::SetLock(int index, int state) {
    if (CurveKnot* knot = Knot(index)) knot->locked = state < 0 ? !knot->locked : state != 0;
}

void CurveCtl::SetEnabled(int flag) {
    enabled_ = flag < 0 ? !enabled_ : flag != 0;
    RebuildAndNotify();
}

void CurveCtl::SetNoise(bool use, float size, float density, float phase) {
    shape_.useNoise = use;
    shape_.noiseSize = size;
    shape_.noiseDensity = density;
    shape_.noisePhase = phase;
    RebuildAndNotify();
}

void CurveCtl::FlipHorizontal() {
    {
        const BatchUpdate batch(*this);
        const TimeValue t = lastTime_;
        const int count = KnotCount();
        const float ends = shape_.xMin + shape_.xMax;
        for (int i = 0; i < (count + 1) / 2; ++i) {
            CurveKnot *a = Knot(i), *b = Knot(count - 1 - i);
            if (!a || !b) continue;
            const float ax = a->X(t), ay = a->Y(t), bx = b->X(t), by = b->Y(t);
            a->SetX(t, ends - bx);
            a->SetY(t, by);
            b->SetX(t, ends - ax);
            b->SetY(t, ay);
        }
    }
    RebuildAndNotify();
}

void CurveCtl::FlipVertical() {
    {
        const BatchUpdate batch(*this);
        for (CurveKnot* knot : knots_)
            if (knot) knot->SetY(lastTime_, shape_.yMin + shape_.yMax - knot->Y(lastTime_));
    }
    RebuildAndNotify();
}

void CurveCtl::Copy(const CurveCtl& source) {
    if (&source == this) return;
    {
        const BatchUpdate batch(*this);
        RemoveAllKnots();
        RemapDir remap;
        for (CurveKnot* knot : source.knots_)
            if (knot) InsertKnot(KnotCount(), static_cast<CurveKnot*>(remap.CloneRef(knot)));
        selection = source.selection;
        shape_.useNoise = source.shape_.useNoise;
        shape_.noiseSize = source.shape_.noiseSize;
        shape_.noiseDensity = source.shape_.noiseDensity;
        shape_.noisePhase = source.shape_.noisePhase;
    }
    Changed();
}

void CurveCtl::SetMarks(int n) {
    if (n == marks_) return;
    marks_ = n;
    if (editor_) editor_->Redraw();
}

void CurveCtl::SetColorBar(int component, const Color& color) {
    barComponent_ = component;
    barColor_ = color;
}

bool CurveCtl::SetBatch(bool on) {
    const bool before = batch_;
    batch_ = on;
    return before;
}

void CurveCtl::Update(TimeValue t, Interval& valid) {
    if (!valid_.InInterval(t)) Rebuild(t);
    valid &= valid_;
}

float CurveCtl::GetValue(TimeValue t, float x) {
    return Shape(t).Eval(x);
}

const CurveShape& CurveCtl::Shape(TimeValue t) {
    Interval valid = FOREVER;
    Update(t, valid);
    return shape_;
}

// Knots keep their stored values apart from the corrected ones, so that a knot that an animated neighbour pushed aside
// comes back when the neighbour does, whatever time was evaluated before.
void CurveCtl::Rebuild(TimeValue t) {
    valid_.SetInfinite();
    shape_.knots.clear();
    for (CurveKnot* knot : knots_) {
        if (!knot) continue;
        const CurveShapeKnot& stored = knot->Evaluate(t, valid_);
        CurveShapeKnot k = knot->evaluated;
        k.x = stored.x, k.y = stored.y, k.type = stored.type;
        shape_.knots.push_back(k);
    }
    shape_.Fit();
    auto fitted = shape_.knots.cbegin();
    for (CurveKnot* knot : knots_)
        if (knot) knot->evaluated = *fitted++;
    lastTime_ = t;
    if (editor_) editor_->Redraw();
}

void CurveCtl::RebuildAndNotify() {
    valid_.SetEmpty();
    Rebuild(lastTime_);
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
}

void CurveCtl::Changed() {
    valid_.SetEmpty();
    NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    if (editor_) editor_->Redraw();
}

void CurveCtl::GetClassName(TSTR& s) {
    s = FindString(kClassCurveControl);
}

void CurveCtl::SetReference(int i, RefTargetHandle target) {
    if (i < 0 || i >= KnotCount()) return;
    knots_[size_t(i)] = static_cast<CurveKnot*>(target);
    valid_.SetEmpty();
}

RefResult CurveCtl::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage) {
    valid_.SetEmpty();
    return batch_ ? REF_STOP : REF_SUCCEED;
}

TSTR CurveCtl::SubAnimName(int i) {
    char name[32];
    std::snprintf(name, sizeof name, FindString(kNameKnotTrack), i + 1);
    return name;
}

RefTargetHandle CurveCtl::Clone(RemapDir& remap) {
    CurveCtl* copy = new CurveCtl(shape_.xMin, shape_.xMax, shape_.yMin, shape_.yMax);
    remap.AddEntry(this, copy);
    copy->RemoveAllKnots();
    for (CurveKnot* knot : knots_)
        if (knot) copy->InsertKnot(copy->KnotCount(), static_cast<CurveKnot*>(remap.CloneRef(knot)));
    copy->enabled_ = enabled_;
    copy->shape_ = shape_;
    copy->selection = selection;
    copy->defaultType = defaultType;
    copy->viewUpdateMode = viewUpdateMode;
    copy->xLabelFormat = xLabelFormat, copy->yLabelFormat = yLabelFormat;
    copy->displayRange = displayRange;
    copy->title_ = title_;
    copy->marks_ = marks_;
    copy->barComponent_ = barComponent_, copy->barColor_ = barColor_;
    copy->lastTime_ = lastTime_;
    return copy;
}
