// Parameter blocks: references, tables, controllers, tracks, cloning.

#include <algorithm>
#include <utility>

#include "core/paramblock2.h"
#include "sdk/hold.h"
#include "sdk/inode.h"
#include "sdk/mtl.h"

namespace host {

namespace {

bool HasControlSlot(const ParamDef& def) {
    return (def.flags & P_ANIMATABLE) && IsNumber(def.type);
}

// How many reference slots a parameter with `entries` values takes.
int NumSlots(const ParamDef& def, size_t entries) {
    if (IsReference(def.type)) return int(entries);
    return HasControlSlot(def) ? 1 : 0;
}

bool IsTrack(const ParamDef& def) {
    return HasControlSlot(def) || (IsReference(def.type) && (def.flags & P_SUBANIM));
}

} // namespace

int ParamBlock2::NumRefs() {
    int n = 0;
    for (const Param& p : params_) n += NumSlots(*p.def, p.values.size());
    return n;
}

ParamBlock2::Place ParamBlock2::PlaceOf(int ref) {
    if (ref < 0) return {};
    for (Param& p : params_) {
        const int n = NumSlots(*p.def, p.values.size());
        if (ref < n) return {&p, IsReference(p.def->type) ? ref : -1};
        ref -= n;
    }
    return {};
}

int ParamBlock2::SlotOf(const Param& p, int entry) {
    int slot = 0;
    for (const Param& before : params_) {
        if (&before == &p) break;
        slot += NumSlots(*before.def, before.values.size());
    }
    return slot + std::max(entry, 0);
}

RefTargetHandle ParamBlock2::GetReference(int i) {
    const Place place = PlaceOf(i);
    if (!place.param) return nullptr;
    return place.entry < 0 ? place.param->control : place.param->values[size_t(place.entry)].r;
}

void ParamBlock2::SetReference(int i, RefTargetHandle target) {
    const Place place = PlaceOf(i);
    if (!place.param) return;
    if (place.entry < 0)
        place.param->control = static_cast<Control*>(target);
    else
        place.param->values[size_t(place.entry)].r = target;
}

void ParamBlock2::TellChanged(const Param& p, int tabIndex, PartID part, const Interval& when) {
    const TargetWatch alive(this);
    const ParamID outerParam = std::exchange(lastParam_, p.def->id);
    const int outerEntry = std::exchange(lastEntry_, tabIndex);
    NotifyDependents(when, part, REFMSG_CHANGE);
    if (alive.Deleted()) return;
    lastParam_ = outerParam;
    lastEntry_ = outerEntry;
}

ParamID ParamBlock2::LastNotifyParamID(int* tabIndex) {
    if (tabIndex) *tabIndex = lastEntry_;
    return lastParam_;
}

// Passes changes of controllers and sub-objects on under the block's own name, with the parameter they belong to.
RefResult ParamBlock2::NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                                        RefMessage message) {
    if (message == REFMSG_TARGET_DELETED) {
        // Which parameter lost its value cannot be told any more: the slot is empty already.
        NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
        return REF_STOP;
    }
    if (message != REFMSG_CHANGE) return REF_SUCCEED;
    if (target == silenced_) return REF_STOP;
    for (const Param& p : params_) {
        for (size_t i = 0; i < p.values.size(); ++i) {
            if (p.control != target && p.values[i].r != target) continue;
            TellChanged(p, int(i), partID, changeInt);
            return REF_STOP;
        }
    }
    return REF_STOP;
}

bool ParamBlock2::Accepts(const Param& p, ReferenceTarget* v, int tabIndex) {
    if (!p.def->validator) return true;
    PB2Value value;
    value.r = v;
    return p.def->validator->Validate(value, GetOwner(), p.def->id, tabIndex);
}

// Puts a reference into an entry and lets the accessor have its say. False when it would make a circle.
bool ParamBlock2::StoreReference(Param& p, TimeValue t, ReferenceTarget* v, int tabIndex) {
    const TargetWatch alive(this), keepNew(v), keepOld(p.values[size_t(tabIndex)].r);
    if (ReplaceReference(SlotOf(p, tabIndex), v) != REF_SUCCEED) return false;
    if (p.def->accessor) {
        PB2Value value;
        value.r = v;
        p.def->accessor->Set(value, GetOwner(), p.def->id, tabIndex, t);
        if (alive.Deleted() || size_t(tabIndex) >= p.values.size()) return true;
        if (value.r != v) ReplaceReference(SlotOf(p, tabIndex), value.r);
    }
    ReferenceTarget* const kept = p.values[size_t(tabIndex)].r;
    if (kept && (p.def->flags & P_SUBANIM) && !IsNodeType(p.def->type)) kept->SetAutoDelete(true);
    return true;
}

bool ParamBlock2::SetReferenceValue(ParamID id, TimeValue t, ReferenceTarget* v, int tabIndex, bool node) {
    Param* const p = Entry(id, tabIndex);
    if (!p || !IsReference(p->def->type)) return false;
    // Nodes fit everywhere but into map slots; other targets never fit into node slots.
    if (v && p->def->type == TYPE_TEXMAP && v->SuperClassID() != TEXMAP_CLASS_ID) return false;
    if (v && !node && IsNodeType(p->def->type) && v->SuperClassID() != BASENODE_CLASS_ID) return false;
    const bool accessorDecides = p->def->type == TYPE_INODE_TAB && p->def->accessor;
    if (v && !accessorDecides && !Accepts(*p, v, tabIndex)) return false;
    const TargetWatch alive(this);
    if (!StoreReference(*p, t, v, tabIndex)) return false;
    if (!alive.Deleted()) TellChanged(*p, tabIndex);
    return true;
}

bool ParamBlock2::SetValue(ParamID id, TimeValue t, INode* v, int tabIndex) {
    return SetReferenceValue(id, t, v, tabIndex, true);
}

bool ParamBlock2::SetValue(ParamID id, TimeValue t, ReferenceTarget* v, int tabIndex) {
    return SetReferenceValue(id, t, v, tabIndex, false);
}

int ParamBlock2::Count(ParamID id) const {
    const int i = IDtoIndex(id);
    return i < 0 ? 0 : int(params_[size_t(i)].values.size());
}

bool ParamBlock2::SetCount(ParamID id, int n) {
    Param* const p = Find(id);
    if (!p || p->def->type != TYPE_INODE_TAB || n < 0) return false;
    const int now = int(p->values.size());
    if (n < now) return Delete(id, n, now - n);
    if (n == now) return true;
    for (int i = now; i < n; ++i) InsertEntry(*p, i);
    TellChanged(*p, -1);
    return true;
}

bool ParamBlock2::Append(ParamID id, INode* node) {
    Param* const p = Find(id);
    if (!p || p->def->type != TYPE_INODE_TAB || !node) return false;
    const int at = int(p->values.size());
    if (!Accepts(*p, node, at)) return false;
    const TargetWatch alive(this);
    HoldGroup group;
    InsertEntry(*p, at);
    const bool stored = StoreReference(*p, 0, node, at);
    if (alive.Deleted()) return true;
    if (!stored || !p->values[size_t(at)].r) {
        if (!group.TakeBack()) EraseEntry(*p, at);
        return false;
    }
    TellChanged(*p, at);
    return true;
}

bool ParamBlock2::Delete(ParamID id, int start, int count) {
    Param* const p = Find(id);
    if (!p || p->def->type != TYPE_INODE_TAB || start < 0 || count < 0 || start > int(p->values.size()) ||
        count > int(p->values.size()) - start)
        return false;
    if (count == 0) return true;
    for (int i = start; i < start + count; ++i) ReplaceReference(SlotOf(*p, i), nullptr);
    for (int i = start + count - 1; i >= start; --i) EraseEntry(*p, i);
    TellChanged(*p, -1);
    return true;
}

Control* ParamBlock2::GetController(ParamID id) {
    Param* const p = Find(id);
    return p ? p->control : nullptr;
}

bool ParamBlock2::SetController(ParamID id, Control* c) {
    Param* const p = Find(id);
    if (!p || !HasControlSlot(*p->def)) return false;
    const SClass_ID needed = IsPoint(p->def->type) ? CTRL_POINT3_CLASS_ID : CTRL_FLOAT_CLASS_ID;
    if (c && c->SuperClassID() != needed) return false;
    if (ReplaceReference(SlotOf(*p, -1), c) != REF_SUCCEED) return false;
    if (c) c->SetAutoDelete(true);
    TellChanged(*p, 0);
    return true;
}

const ParamBlock2::Param* ParamBlock2::TrackParam(int i) const {
    for (const Param& p : params_)
        if (IsTrack(*p.def) && i-- == 0) return &p;
    return nullptr;
}

int ParamBlock2::NumSubs() {
    return int(std::count_if(params_.begin(), params_.end(), [](const Param& p) { return IsTrack(*p.def); }));
}

Animatable* ParamBlock2::SubAnim(int i) {
    const Param* const p = TrackParam(i);
    if (!p) return nullptr;
    if (HasControlSlot(*p->def)) return p->control;
    return p->values.empty() ? nullptr : p->values[0].r;
}

TSTR ParamBlock2::SubAnimName(int i) {
    const Param* const p = TrackParam(i);
    if (!p) return {};
    return p->def->name.empty() ? p->def->intName : p->def->name;
}

RefTargetHandle ParamBlock2::Clone(RemapDir& remap) {
    auto* const copy = new ParamBlock2(desc_, nullptr);
    for (size_t k = 0; k < params_.size(); ++k) {
        const Param& from = params_[k];
        Param& to = copy->params_[k];
        to.values = from.values;
        for (PB2Value& v : to.values) v.r = nullptr;
        if (from.control) copy->ReplaceReference(copy->SlotOf(to, -1), remap.CloneRef(from.control));
        for (size_t i = 0; i < from.values.size(); ++i) {
            ReferenceTarget* const r = from.values[i].r;
            if (!r) continue;
            const bool isNode = r->SuperClassID() == BASENODE_CLASS_ID;
            ReferenceTarget* const own = isNode ? nullptr : remap.CloneRef(r);
            const int slot = copy->SlotOf(to, int(i));
            copy->ReplaceReference(slot, own ? own : r);
            if (isNode) remap.Backpatch(copy, slot, r);
        }
    }
    return copy;
}

} // namespace host
