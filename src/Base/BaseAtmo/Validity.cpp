// What still holds: change groups, validity intervals, bringing the object to a time.

#include "Base/BaseAtmo.h"
#include "sdk/core.h"

namespace {

constexpr int kGroups[] = {GROUP_SHAPE, GROUP_DYNAMICS, GROUP_RENDER, GROUP_VIEW};
constexpr int kAllGroups = GROUP_SHAPE | GROUP_DYNAMICS | GROUP_RENDER | GROUP_VIEW;
constexpr int kAllEmitters = -1;

/// Change groups of a node list, which has no record of its own.
int GroupsOfList(int list) {
    switch (list) {
    case pid_cutters:
        return GROUP_RENDER | GROUP_VIEW;
    case pid_winds:
    case pid_gravs:
    case pid_colls:
        return GROUP_DYNAMICS;
    default:
        return GROUP_SHAPE | GROUP_RENDER | GROUP_VIEW;
    }
}

/// Interval around `t` over which a node's object and place hold.
Interval NodeValidity(INode* node, TimeValue t) {
    Interval valid = node->EvalWorldState(t).valid;
    node->GetObjectTM(t, &valid);
    return valid;
}

/// An angle in degrees, reduced into 0..359.
int ReduceAngle(int angle) {
    angle -= 360 * (angle / 360);
    return angle < 0 ? angle + 360 : angle;
}

} // namespace

int BaseAtmo::GroupsOf(int pid) const {
    const bool list = pid >= kFirstNodeListPid && pid < kFirstNodeListPid + kNumNodeLists;
    return list ? GroupsOfList(pid) : ChangeGroupsOf(pid);
}

PartID BaseAtmo::PartsOf(int groups) const {
    return ((groups & (GROUP_SHAPE | GROUP_DYNAMICS)) ? 2u : 0u) | ((groups & GROUP_RENDER) ? 4u : 0u);
}

bool BaseAtmo::IsGroupRelevant(int groups) {
    if (groups & (GROUP_SHAPE | GROUP_VIEW)) return true;
    IParamBlock2* dynamics = blocks_[BLOCK_DYNAMICS];
    if ((groups & GROUP_DYNAMICS) && dynamics && dynamics->GetInt(pid_dyn_useDyn) != 0) return true;
    IParamBlock2* shade = blocks_[BLOCK_SHADE];
    return (groups & GROUP_RENDER) && shade && shade->GetInt(pid_useGeom) != 0;
}

bool BaseAtmo::IsGroupRelevantNow(int groups) {
    return !loading_ && IsGroupRelevant(groups);
}

void BaseAtmo::InvalidateGroups(int groups, bool notify) {
    diag::ScopedLock lock(lock_);
    for (int i = 0; i < kNumGroups; ++i)
        if (groups & kGroups[i]) groupValid_[i].SetEmpty();
    combinedValid_ = groupValid_[0];
    for (const Interval& valid : groupValid_) combinedValid_ &= valid;
    InvalidateCaches(groups, kAllEmitters, notify);
}

void BaseAtmo::InvalidateCaches(int groups, int emitter, bool notify) {
    diag::ScopedLock lock(lock_);
    if (groups & GROUP_SHAPE) {
        for (int i = 0; i < EmitterCount(); ++i)
            if (emitters_[size_t(i)] && (emitter < 0 || emitter == i)) emitters_[size_t(i)]->control.Reset();
        emitterValid_.SetEmpty();
    }
    lastUpdate_.SetEmpty();
    strandCount_ = -1;
    if (!notify || loading_) return;
    if (const PartID parts = PartsOf(groups)) NotifyDependents(FOREVER, parts, REFMSG_CHANGE);
    Interface* host = GetCOREInterface();
    if (host && (groups & GROUP_VIEW)) host->RedrawViews(host->GetTime());
}

void BaseAtmo::SetLoading(bool on) {
    if (loading_ == on) return;
    loading_ = on;
    if (!on) InvalidateGroups(kAllGroups, true);
}

void BaseAtmo::ParametersChanged() {
    InvalidateGroups(GROUP_SHAPE | GROUP_RENDER | GROUP_VIEW, true);
}

// A parameter changed, or something it refers to. Values are read anew in any case; strands on display are left alone
// and dependents are not told when the change does not show.
RefResult BaseAtmo::ParamChanged(int pid, int entry, PartID& part) {
    if (pid == pid_emitters) {
        SyncEmitterRecords();
        if (entry >= 0 && entry < EmitterCount() && emitters_[size_t(entry)]) emitters_[size_t(entry)]->source.Forget();
    }
    // Which parameter lost its value cannot always be told.
    const int groups = pid < 0 ? kAllGroups : GroupsOf(pid);
    if (pid < 0) SyncEmitterRecords();
    if (groups == 0) return REF_STOP;
    InvalidateGroups(groups, false);
    if (!IsGroupRelevantNow(groups) || PartsOf(groups) == 0) return REF_STOP;
    part = PartsOf(groups);
    return REF_SUCCEED;
}

RefResult BaseAtmo::NotifyRefChanged(const Interval&, RefTargetHandle target, PartID& part, RefMessage message) {
    if (message == REFMSG_NODE_MATERIAL_CHANGED) {
        // Surface distributions may read the emitter's material.
        InvalidateGroups(GROUP_SHAPE | GROUP_RENDER | GROUP_VIEW, false);
        return REF_SUCCEED;
    }
    if (message != REFMSG_CHANGE) return REF_SUCCEED;
    if (target == material_) {
        part = PartsOf(GROUP_RENDER);
        return loading_ ? REF_STOP : REF_SUCCEED;
    }
    for (IParamBlock2* block : blocks_) {
        if (!block || block != target) continue;
        int entry = -1;
        const int pid = block->LastNotifyParamID(&entry);
        return ParamChanged(pid, entry, part);
    }
    return REF_SUCCEED;
}

void BaseAtmo::ReadAllParams(TimeValue t) {
    for (IParamBlock2* block : blocks_) {
        for (int i = 0; block && i < block->NumParams(); ++i) {
            const int pid = block->IndextoID(i);
            Interval valid = FOREVER;
            UpdateParam(t, pid, valid);
            const int groups = ChangeGroupsOf(pid);
            for (int g = 0; g < kNumGroups; ++g)
                if (groups & kGroups[g]) groupValid_[g] &= valid;
        }
    }
    CachedValue& angle = cache_[pid_orientAngle];
    angle.i = ReduceAngle(angle.i);
}

void BaseAtmo::FoldNodes(int list, TimeValue t, int groups) {
    for (INode* node : nodeCache_[size_t(list - kFirstNodeListPid)]) {
        if (!node) continue;
        const Interval valid = NodeValidity(node, t);
        for (int g = 0; g < kNumGroups; ++g)
            if (groups & kGroups[g]) groupValid_[g] &= valid;
    }
}

void BaseAtmo::Refresh(TimeValue t) {
    if (!groupValid_[0].InInterval(t)) InvalidateCaches(GROUP_SHAPE, kAllEmitters, false);
    if (!groupValid_[3].InInterval(t)) InvalidateCaches(GROUP_VIEW, kAllEmitters, false);
    for (Interval& valid : groupValid_) valid = FOREVER;
    ReadAllParams(t);
    if (cache_[pid_useResCutters].i) FoldNodes(pid_cutters, t, GROUP_VIEW | GROUP_RENDER);
    if (cache_[pid_dyn_useDyn].i != 0) {
        if (cache_[pid_dyn_useWinds].i) FoldNodes(pid_winds, t, GROUP_DYNAMICS);
        if (cache_[pid_dyn_useGravs].i) FoldNodes(pid_gravs, t, GROUP_DYNAMICS);
        if (cache_[pid_dyn_useColls].i) FoldNodes(pid_colls, t, GROUP_DYNAMICS);
    }
    combinedValid_ = groupValid_[0];
    for (const Interval& valid : groupValid_) combinedValid_ &= valid;
    FillSnapshot(t);
    strandCount_ = -1;
}

void BaseAtmo::UpdateEmitters(TimeValue t) {
    SyncEmitterRecords();
    Interval valid = FOREVER;
    for (const auto& e : emitters_) {
        if (!e) continue;
        e->surfaces.time = t;
        e->usable = e->control.Evaluate(t, params_);
        // An emitter without a mesh may have one at any other time.
        if (e->usable)
            valid &= e->control.Validity();
        else
            valid &= Interval(t, t);
    }
    emitterValid_ = valid;
    strandCount_ = -1;
}

Interval BaseAtmo::UpdateAtTime(TimeValue t, Interval& validity) {
    diag::ScopedLock lock(lock_);
    // A fault or an exception ended the last update: it left values of two times, and intervals that say otherwise.
    if (updating_) InvalidateGroups(kAllGroups, false);
    params_.time = t;
    if (!lastUpdate_.InInterval(t)) {
        updating_ = true;
        if (!combinedValid_.InInterval(t)) Refresh(t);
        if (!emitterValid_.InInterval(t)) UpdateEmitters(t);
        lastUpdate_ = combinedValid_ & emitterValid_;
        updating_ = false;
    }
    validity &= lastUpdate_;
    return lastUpdate_;
}
