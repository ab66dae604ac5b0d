#pragma once
// Meshes from a series of frames.

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "modifiers/modifier_classes.h"

namespace host {

/// Vertex positions over time, frame by frame, read when they are needed. Any thread may ask.
class MeshFrames {
public:
    using Points = std::shared_ptr<const std::vector<Point3>>;
    /// Reads frame `i`; throws Error.
    using Reader = std::function<std::vector<Point3>(int i)>;

    /// `times` ascend; `mostBytes` is what may be kept in memory (at least two frames are).
    MeshFrames(std::vector<TimeValue> times, Reader reader, size_t mostBytes = size_t(1) << 30);
    int Count() const { return int(times_.size()); }
    TimeValue Time(int i) const { return times_[size_t(i)]; }
    /// Frame `i`; null when it cannot be read, with the reason in `error`.
    Points Get(int i, std::string& error);
    /// Hands in a frame that was read already.
    void Put(int i, std::vector<Point3> points);
    /// The last frame at or before `t`; the first one before it.
    int Before(TimeValue t) const;
    /// Frames in memory.
    int Kept();

private:
    Points KeepLocked(int i, std::vector<Point3> points);

    std::vector<TimeValue> times_;
    Reader reader_;
    size_t mostBytes_, bytes_ = 0;
    std::vector<Points> frames_;
    std::list<int> order_; ///< kept frames, the one used last in front
    std::mutex mutex_;
};

/// Puts the vertices where the frames have them, in between straight from one to the next or held. Before the first
/// frame and after the last these hold. A frame that cannot be read, or with another number of vertices, changes
/// nothing; the host's log says so. Explicit normals go.
class MeshCacheModifier : public Modifier {
public:
    explicit MeshCacheModifier(std::shared_ptr<MeshFrames> frames = nullptr, bool interpolate = true)
        : frames_(std::move(frames)), interpolate_(interpolate) {}
    ~MeshCacheModifier() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return MESH_CACHE_CLASS_ID; }
    const char* GetObjectName() override { return "Mesh Cache"; }
    Class_ID InputType() override { return triObjectClassID; }
    ChannelMask ChannelsUsed() override { return TOPO_CHANNEL; }
    ChannelMask ChannelsChanged() override { return GEOM_CHANNEL; }
    Interval LocalValidity(TimeValue t) override;
    void ModifyObject(TimeValue t, ModContext& mc, ObjectState* os, INode* node) override;
    RefTargetHandle Clone(RemapDir& remap) override;
    int NumFrames() const { return frames_ ? frames_->Count() : 0; }
    bool Interpolates() const { return interpolate_; }

private:
    std::shared_ptr<MeshFrames> frames_; ///< copies share what is read
    bool interpolate_ = true;
};

} // namespace host
