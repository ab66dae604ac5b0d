#include "modifiers/mesh_cache.h"

#include <algorithm>

#include "core/error.h"
#include "sdk/core.h"
#include "sdk/inode.h"

namespace host {

MeshFrames::MeshFrames(std::vector<TimeValue> times, Reader reader, size_t mostBytes)
    : times_(std::move(times)), reader_(std::move(reader)), mostBytes_(mostBytes), frames_(times_.size()) {}

int MeshFrames::Before(TimeValue t) const {
    const auto after = std::upper_bound(times_.begin(), times_.end(), t);
    return std::max(0, int(after - times_.begin()) - 1);
}

MeshFrames::Points MeshFrames::KeepLocked(int i, std::vector<Point3> points) {
    Points& slot = frames_[size_t(i)];
    if (slot) return slot;
    slot = std::make_shared<const std::vector<Point3>>(std::move(points));
    order_.push_front(i);
    bytes_ += slot->size() * sizeof(Point3);
    while (bytes_ > mostBytes_ && order_.size() > 2) {
        Points& oldest = frames_[size_t(order_.back())];
        bytes_ -= oldest->size() * sizeof(Point3);
        oldest.reset();
        order_.pop_back();
    }
    return slot;
}

void MeshFrames::Put(int i, std::vector<Point3> points) {
    const std::lock_guard<std::mutex> lock(mutex_);
    KeepLocked(i, std::move(points));
}

MeshFrames::Points MeshFrames::Get(int i, std::string& error) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (frames_[size_t(i)]) {
        order_.remove(i);
        order_.push_front(i);
        return frames_[size_t(i)];
    }
    try {
        return KeepLocked(i, reader_(i));
    } catch (const Error& e) {
        error = e.what();
        return nullptr;
    }
}

int MeshFrames::Kept() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return int(order_.size());
}

Interval MeshCacheModifier::LocalValidity(TimeValue t) {
    if (NumFrames() == 0) return FOREVER;
    const int i = frames_->Before(t), last = NumFrames() - 1;
    if (t <= frames_->Time(0)) return {TIME_NegInfinity, i == last ? TIME_PosInfinity : frames_->Time(0)};
    if (i == last) return {frames_->Time(last), TIME_PosInfinity};
    if (interpolate_) return {t, t};
    return {frames_->Time(i), frames_->Time(i + 1) - 1};
}

void MeshCacheModifier::ModifyObject(TimeValue t, ModContext&, ObjectState* os, INode* node) {
    if (NumFrames() == 0) return;
    auto* const tri = static_cast<TriObject*>(os->obj);
    std::vector<Point3>& verts = tri->mesh.verts;
    const int i = frames_->Before(t);
    const bool between = interpolate_ && i + 1 < NumFrames() && t > frames_->Time(i);
    std::string error;
    const MeshFrames::Points a = frames_->Get(i, error), b = between ? frames_->Get(i + 1, error) : a;
    if (a && b && (a->size() != verts.size() || b->size() != verts.size()))
        error = "a frame of the mesh cache has another number of vertices than the mesh";
    if (!error.empty()) {
        if (Interface* const host = GetCOREInterface())
            host->Log()->LogEntry(SYSLOG_ERROR, false, node->GetName(), error.c_str());
        return;
    }
    verts = *a;
    if (between) {
        const double span = double(frames_->Time(i + 1)) - double(frames_->Time(i));
        const float u = float((double(t) - double(frames_->Time(i))) / span);
        for (size_t v = 0; v < verts.size(); ++v) verts[v] += ((*b)[v] - verts[v]) * u;
    }
    tri->PointsWereChanged();
}

RefTargetHandle MeshCacheModifier::Clone(RemapDir&) {
    auto* const copy = new MeshCacheModifier(frames_, interpolate_);
    CopySwitches(*copy);
    return copy;
}

} // namespace host
