// Curve knots.

#include "CurveCtl/CurveCtl.h"
#include "HairDLL/StringTable.h"

namespace {

/// The block of every knot: X and Y may be animated, the type may not.
const ParamBlockDesc2& KnotBlockDesc() {
    static const ParamBlockDesc2 desc = [] {
        ParamBlockDesc2 d;
        d.intName = "CurveKnot";
        constexpr struct {
            ParamID id;
            ParamType2 type;
            unsigned flags;
            int name;
        } kParams[] = {
            {KNOT_X, TYPE_FLOAT, P_ANIMATABLE, kNameKnotX},
            {KNOT_Y, TYPE_FLOAT, P_ANIMATABLE, kNameKnotY},
            {KNOT_TYPE, TYPE_INT, 0, kNameKnotType},
        };
        for (const auto& row : kParams) {
            ParamDef p;
            p.id = row.id;
            p.type = row.type;
            p.flags = row.flags;
            p.nameId = row.name;
            p.name = p.intName = FindString(row.name);
            d.params.push_back(p);
        }
        return d;
    }();
    return desc;
}

} // namespace

CurveKnot::CurveKnot(float x, float y, int type) {
    IParamBlock2* block = CreateParameterBlock2(&KnotBlockDesc(), this);
    ReplaceReference(0, block);
    SetX(0, x);
    SetY(0, y);
    SetType(type);
}

float CurveKnot::X(TimeValue t) const {
    return block_ ? block_->GetFloat(KNOT_X, t) : stored_.x;
}

float CurveKnot::Y(TimeValue t) const {
    return block_ ? block_->GetFloat(KNOT_Y, t) : stored_.y;
}

int CurveKnot::Type() const {
    return block_ ? block_->GetInt(KNOT_TYPE) : stored_.type;
}

void CurveKnot::SetX(TimeValue t, float x) {
    if (block_) block_->SetValue(KNOT_X, t, x);
}

void CurveKnot::SetY(TimeValue t, float y) {
    if (block_) block_->SetValue(KNOT_Y, t, y);
}

void CurveKnot::SetType(int type) {
    if (block_) block_->SetValue(KNOT_TYPE, 0, type);
}

const CurveShapeKnot& CurveKnot::Evaluate(TimeValue t, Interval& valid) {
    if (!valid_.InInterval(t)) {
        valid_.SetInfinite();
        if (block_) {
            stored_.x = block_->GetFloat(KNOT_X, t, valid_);
            stored_.y = block_->GetFloat(KNOT_Y, t, valid_);
            stored_.type = block_->GetInt(KNOT_TYPE, t, valid_);
        }
    }
    valid &= valid_;
    return stored_;
}

const char* CurveKnot::ParamName(int index) {
    return index >= KNOT_X && index <= KNOT_TYPE ? FindString(kNameKnotX + index) : nullptr;
}

void CurveKnot::GetClassName(TSTR& s) {
    s = FindString(kClassCurveKnot);
}

TSTR CurveKnot::SubAnimName(int) {
    return FindString(kTextParameters);
}

void CurveKnot::SetReference(int i, RefTargetHandle target) {
    if (i != 0) return;
    block_ = static_cast<IParamBlock2*>(target);
    valid_.SetEmpty();
}

RefResult CurveKnot::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage) {
    valid_.SetEmpty();
    return REF_SUCCEED;
}

RefTargetHandle CurveKnot::Clone(RemapDir& remap) {
    CurveKnot* copy = new CurveKnot(WithoutBlock{});
    remap.AddEntry(this, copy);
    copy->ReplaceReference(0, remap.CloneRef(block_));
    copy->evaluated = evaluated;
    copy->stored_ = stored_;
    copy->locked = locked;
    return copy;
}
