#pragma once
// Cloning with remapping.

#include <functional>
#include <map>
#include <memory>
#include <utility>
#include <vector>

class MakerHandle;
class ReferenceMaker;
class ReferenceTarget;

/// A handle to a reference target (the target itself).
using RefTargetHandle = ReferenceTarget*;

/// Keeps source-to-clone pairs while a graph is cloned, so that shared targets stay shared, and settles at the end what
/// could not be settled on the way.
class RemapDir {
public:
    RemapDir() = default;
    RemapDir(const RemapDir&) = delete;
    RemapDir& operator=(const RemapDir&) = delete;
    /// Finishes.
    ~RemapDir();
    /// The clone of `from`, made on first request; null when it cannot be cloned.
    RefTargetHandle CloneRef(RefTargetHandle from);
    RefTargetHandle FindMapping(RefTargetHandle from) const;
    void AddEntry(RefTargetHandle from, RefTargetHandle to);
    /// Puts the clone of `from` into slot `which` of `maker` as soon as it exists: at once, or when something else of
    /// this remapping clones it. When nothing does, the slot stays as it is. For references to things that are not
    /// cloned along (other nodes, a back reference), whatever the order of cloning.
    void Backpatch(ReferenceMaker* maker, int which, RefTargetHandle from);
    /// The same for a pointer that is no reference.
    void Backpatch(RefTargetHandle* pointer, RefTargetHandle from);
    /// Called once when the remapping finishes, in the order of adding.
    void AddPostPatchProc(std::function<void(RemapDir&)> proc) { postPatch_.push_back(std::move(proc)); }
    /// Runs what waits for the end. Nothing new is patched afterwards.
    void Finish();

private:
    struct Patch {
        std::shared_ptr<MakerHandle> maker; ///< or none
        int which = 0;
        RefTargetHandle* pointer = nullptr;
    };
    void AddPatch(RefTargetHandle from, Patch patch);
    static void Apply(const Patch& patch, RefTargetHandle to);

    std::map<RefTargetHandle, RefTargetHandle> map_;
    std::multimap<RefTargetHandle, Patch> patches_;
    std::vector<std::function<void(RemapDir&)>> postPatch_;
};

/// A clone of `from` with everything it refers to, as its class clones it.
RefTargetHandle CloneRefHierarchy(RefTargetHandle from);
