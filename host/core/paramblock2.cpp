// Parameter blocks: layout, reading and writing of numbers and texts.

#include "core/paramblock2.h"

#include <algorithm>
#include <climits>
#include <cmath>

#include "sdk/inode.h"

namespace host {

bool IsPoint(ParamType2 type) {
    return type == TYPE_RGBA || type == TYPE_POINT3;
}
bool IsNodeType(ParamType2 type) {
    return type == TYPE_INODE || type == TYPE_INODE_TAB;
}
bool IsReference(ParamType2 type) {
    return IsNodeType(type) || type == TYPE_REFTARG || type == TYPE_TEXMAP;
}
bool IsNumber(ParamType2 type) {
    return !IsReference(type) && type != TYPE_STRING;
}

namespace {

// Whole numbers out of a double, saturated.
int Saturate(double v) {
    return v <= double(INT_MIN) ? INT_MIN : v >= double(INT_MAX) ? INT_MAX : int(v);
}

float ClampFloat(const ParamDef& def, float v) {
    return def.hasRange ? std::min(std::max(v, def.rangeLow), def.rangeHigh) : v;
}

} // namespace

int RoundToInt(float v) {
    return std::isnan(v) ? 0 : Saturate(std::floor(double(v) + 0.5));
}

void ClampToRange(const ParamDef& def, PB2Value& v) {
    switch (def.type) {
    case TYPE_FLOAT:
        v.f = ClampFloat(def, v.f);
        break;
    case TYPE_BOOL:
        v.i = v.i != 0;
        break;
    case TYPE_INT:
    case TYPE_TIMEVALUE:
        if (def.hasRange) v.i = Saturate(std::clamp(double(v.i), double(def.rangeLow), double(def.rangeHigh)));
        break;
    case TYPE_RGBA:
    case TYPE_POINT3:
        for (int i = 0; i < 3; ++i) v.p[i] = ClampFloat(def, v.p[i]);
        break;
    default:
        break;
    }
}

ParamBlock2::ParamBlock2(const ParamBlockDesc2* desc, ReferenceMaker* owner) : desc_(desc), madeFor_(owner) {
    params_.resize(desc->params.size());
    for (size_t i = 0; i < params_.size(); ++i) {
        const ParamDef& def = desc->params[i];
        params_[i].def = &def;
        if (def.type != TYPE_INODE_TAB) {
            params_[i].values.push_back(def.def);
            params_[i].values[0].r = nullptr; // a description is shared and cannot hold references
        }
        if (def.id < 0) continue;
        if (size_t(def.id) >= indexById_.size()) indexById_.resize(size_t(def.id) + 1, -1);
        if (indexById_[size_t(def.id)] < 0) indexById_[size_t(def.id)] = short(i);
    }
}

ReferenceMaker* ParamBlock2::GetOwner() const {
    const std::vector<ReferenceMaker*>& makers = Dependents();
    if (makers.empty() || std::find(makers.begin(), makers.end(), madeFor_) != makers.end()) return madeFor_;
    for (ReferenceMaker* const m : makers)
        if (desc_->refno < m->NumRefs() && m->GetReference(desc_->refno) == this) return m;
    return makers.front();
}

ParamID ParamBlock2::IndextoID(int index) const {
    return index >= 0 && index < NumParams() ? params_[size_t(index)].def->id : ParamID(-1);
}

int ParamBlock2::IDtoIndex(ParamID id) const {
    return id >= 0 && size_t(id) < indexById_.size() ? indexById_[size_t(id)] : -1;
}

ParamBlock2::Param* ParamBlock2::Find(ParamID id) {
    const int i = IDtoIndex(id);
    return i < 0 ? nullptr : &params_[size_t(i)];
}

// The parameter when it has such an entry.
ParamBlock2::Param* ParamBlock2::Entry(ParamID id, int tabIndex) {
    Param* const p = Find(id);
    return p && tabIndex >= 0 && size_t(tabIndex) < p->values.size() ? p : nullptr;
}

void ParamBlock2::ReadControl(const Param& p, TimeValue t, Interval& valid, PB2Value& v) {
    if (IsPoint(p.def->type)) {
        p.control->GetValue(t, &v.p, valid);
    } else {
        float f = 0;
        p.control->GetValue(t, &f, valid);
        v.f = f;
        v.i = RoundToInt(f);
    }
    ClampToRange(*p.def, v);
}

PB2Value ParamBlock2::Read(Param& p, TimeValue t, Interval& valid, int tabIndex) {
    PB2Value v = p.values[size_t(tabIndex)];
    if (p.control) ReadControl(p, t, valid, v);
    if (p.def->accessor) p.def->accessor->Get(v, GetOwner(), p.def->id, tabIndex, t, valid);
    return v;
}

float ParamBlock2::GetFloat(ParamID id, TimeValue t, Interval& valid, int tabIndex) {
    Param* const p = Entry(id, tabIndex);
    if (!p || !IsNumber(p->def->type) || IsPoint(p->def->type)) return 0;
    const PB2Value v = Read(*p, t, valid, tabIndex);
    return p->def->type == TYPE_FLOAT ? v.f : float(v.i);
}

int ParamBlock2::GetInt(ParamID id, TimeValue t, Interval& valid, int tabIndex) {
    Param* const p = Entry(id, tabIndex);
    if (!p || !IsNumber(p->def->type) || IsPoint(p->def->type)) return 0;
    const PB2Value v = Read(*p, t, valid, tabIndex);
    if (p->def->type == TYPE_FLOAT) return std::isnan(v.f) ? 0 : Saturate(double(v.f));
    return v.i;
}

Point3 ParamBlock2::GetPoint3(ParamID id, TimeValue t, Interval& valid, int tabIndex) {
    Param* const p = Entry(id, tabIndex);
    return p && IsPoint(p->def->type) ? Read(*p, t, valid, tabIndex).p : Point3();
}

TSTR ParamBlock2::GetStr(ParamID id, TimeValue t, Interval& valid, int tabIndex) {
    Param* const p = Entry(id, tabIndex);
    return p && p->def->type == TYPE_STRING ? Read(*p, t, valid, tabIndex).s : TSTR();
}

INode* ParamBlock2::GetINode(ParamID id, TimeValue t, Interval& valid, int tabIndex) {
    Param* const p = Entry(id, tabIndex);
    return static_cast<INode*>(p && IsNodeType(p->def->type) ? Read(*p, t, valid, tabIndex).r : nullptr);
}

ReferenceTarget* ParamBlock2::GetReferenceTarget(ParamID id, TimeValue t, Interval& valid, int tabIndex) {
    Param* const p = Entry(id, tabIndex);
    return p && IsReference(p->def->type) ? Read(*p, t, valid, tabIndex).r : nullptr;
}

void ParamBlock2::GetValidity(ParamID id, TimeValue t, Interval& valid) {
    if (Param* const p = Find(id))
        for (int i = 0; i < int(p->values.size()); ++i) Read(*p, t, valid, i);
}

// Puts a number where it belongs: into the controller when there is one.
void ParamBlock2::WriteNumber(Param& p, TimeValue t, const PB2Value& v, int tabIndex) {
    p.values[size_t(tabIndex)] = v;
    if (!p.control) return;
    silenced_ = p.control; // the block speaks once, when the accessor did its part
    if (IsPoint(p.def->type)) {
        p.control->SetValue(t, &v.p);
    } else {
        const float f = p.def->type == TYPE_FLOAT ? v.f : float(v.i);
        p.control->SetValue(t, &f);
    }
    silenced_ = nullptr;
}

bool ParamBlock2::SetNumber(Param& p, TimeValue t, PB2Value v, int tabIndex) {
    const auto same = [](const PB2Value& a, const PB2Value& b) {
        return a.i == b.i && a.f == b.f && a.p == b.p && a.s == b.s;
    };
    const TargetWatch alive(this); // the accessor may make the owner drop the block
    ClampToRange(*p.def, v);
    HoldNumber(p);
    WriteNumber(p, t, v, tabIndex);
    if (p.def->accessor) {
        const PB2Value stored = v;
        p.def->accessor->Set(v, GetOwner(), p.def->id, tabIndex, t);
        if (alive.Deleted()) return true;
        ClampToRange(*p.def, v);
        if (!same(v, stored)) WriteNumber(p, t, v, tabIndex);
    }
    TellChanged(p, tabIndex);
    return true;
}

bool ParamBlock2::SetValue(ParamID id, TimeValue t, float v, int tabIndex) {
    Param* const p = Entry(id, tabIndex);
    if (!p || p->def->type != TYPE_FLOAT || std::isnan(v)) return false;
    PB2Value value;
    value.f = v;
    return SetNumber(*p, t, value, tabIndex);
}

bool ParamBlock2::SetValue(ParamID id, TimeValue t, int v, int tabIndex) {
    Param* const p = Entry(id, tabIndex);
    if (!p || !IsNumber(p->def->type) || IsPoint(p->def->type)) return false;
    PB2Value value;
    value.i = v;
    value.f = float(v);
    return SetNumber(*p, t, value, tabIndex);
}

bool ParamBlock2::SetValue(ParamID id, TimeValue t, const Point3& v, int tabIndex) {
    Param* const p = Entry(id, tabIndex);
    if (!p || !IsPoint(p->def->type) || std::isnan(v.x) || std::isnan(v.y) || std::isnan(v.z)) return false;
    PB2Value value;
    value.p = v;
    return SetNumber(*p, t, value, tabIndex);
}

bool ParamBlock2::SetValue(ParamID id, TimeValue t, const TSTR& v, int tabIndex) {
    Param* const p = Entry(id, tabIndex);
    if (!p || p->def->type != TYPE_STRING) return false;
    PB2Value value;
    value.s = v;
    return SetNumber(*p, t, value, tabIndex);
}

} // namespace host

IParamBlock2* CreateParameterBlock2(const ParamBlockDesc2* desc, ReferenceMaker* owner) {
    if (!desc) return nullptr;
    auto* const block = new host::ParamBlock2(desc, owner);
    block->SetAutoDelete(true);
    return block;
}
