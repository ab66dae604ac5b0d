// Reading parameters into the value cache and noticing what changed.

#include <algorithm>
#include <utility>

#include "Base/BaseAtmo.h"
#include "Base/SurfDist/SurfDist.h"
#include "CurveCtl/CurveCtl.h"
#include "sdk/core.h"

namespace {

int TicksPerFrame() {
    Interface* host = GetCOREInterface();
    return host ? host->GetTicksPerFrame() : 160;
}

/// A scene time as a frame number, within the record's range unless it is one that is kept as it is.
int FrameOf(int ticks, int pid) {
    const int frame = ticks / TicksPerFrame();
    const ParamDefRecord& record = ParamDefTable[size_t(pid)];
    if (record.kind & KIND_NOT_CLAMPED) return frame;
    return std::clamp(frame, int(record.min), int(record.max));
}

float Clamped(const ParamDef& def, float v) {
    return def.hasRange ? std::clamp(v, def.rangeLow, def.rangeHigh) : v;
}

int Clamped(const ParamDef& def, int v) {
    return def.hasRange ? std::clamp(v, int(def.rangeLow), int(def.rangeHigh)) : v;
}

} // namespace

const std::array<uint8_t, kNumPids>& BaseAtmo::BlockMap() const {
    static const std::array<uint8_t, kNumPids> fur = BuildBlockMap(true), hair = BuildBlockMap(false);
    return fur_ ? fur : hair;
}

bool BaseAtmo::Store(int pid, int value) {
    return std::exchange(cache_[size_t(pid)].i, value) != value;
}

bool BaseAtmo::Store(int pid, float value) {
    return std::exchange(cache_[size_t(pid)].f, value) != value;
}

bool BaseAtmo::UpdateReference(ReferenceTarget* now, TimeValue t, int pid, Interval& valid) {
    if (auto* curve = dynamic_cast<CurveCtl*>(now)) curve->Update(t, valid);
    if (auto* surface = dynamic_cast<SurfDist*>(now)) surface->Update(t, valid);
    return std::exchange(cache_[size_t(pid)].ref, now) != now;
}

bool BaseAtmo::UpdateNodeList(IParamBlock2& block, int pid, TimeValue t) {
    std::vector<INode*> now;
    for (int i = 0; i < block.Count(ParamID(pid)); ++i) now.push_back(block.GetINode(ParamID(pid), t, i));
    std::vector<INode*>& kept = nodeCache_[size_t(pid - kFirstNodeListPid)];
    const bool changed = kept != now;
    kept = std::move(now);
    return changed;
}

bool BaseAtmo::UpdateParam(TimeValue t, int pid, Interval& validity) {
    IParamBlock2* block = BlockOf(pid);
    if (!block) return false;
    const ParamID id = ParamID(pid);
    const ParamDef& def = block->GetDesc()->params[size_t(block->IDtoIndex(id))];
    Interval valid = FOREVER;
    bool changed = false;
    switch (def.type) {
    case TYPE_TIMEVALUE:
        changed = Store(pid, FrameOf(block->GetInt(id, t, valid), pid));
        break;
    case TYPE_INT:
    case TYPE_BOOL:
        changed = Store(pid, Clamped(def, block->GetInt(id, t, valid)));
        break;
    case TYPE_FLOAT:
        changed = Store(pid, Clamped(def, block->GetFloat(id, t, valid)));
        break;
    case TYPE_RGBA: {
        Color& kept = cachedColors_[pid == pid_colBase ? 0 : 1];
        const Color now = block->GetColor(id, t, valid);
        Store(pid, pid == pid_colBase ? 0 : 1);
        changed = !(std::exchange(kept, now) == now);
        break;
    }
    case TYPE_REFTARG:
        changed = UpdateReference(block->GetReferenceTarget(id, t, valid), t, pid, valid);
        break;
    case TYPE_INODE_TAB:
        changed = UpdateNodeList(*block, pid, t);
        break;
    default: // texts are read where they are used
        break;
    }
    cache_[size_t(pid)].valid = valid;
    validity &= valid;
    return changed;
}
