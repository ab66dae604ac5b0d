#pragma once
// Small reference targets and meshes for the tests of the host core.

#include <functional>
#include <vector>

#include "sdk/mesh.h"
#include "sdk/ref.h"

/// A target with a fixed number of slots that counts its lives and records what it hears.
class Thing : public ReferenceTarget {
public:
    static inline int alive = 0;
    struct Heard {
        RefTargetHandle target;
        PartID part;
        RefMessage message;
    };

    explicit Thing(int slots = 0) : slots_(size_t(slots)) { ++alive; }
    ~Thing() override {
        DeleteAllRefs();
        --alive;
    }
    int NumRefs() override { return int(slots_.size()); }
    RefTargetHandle GetReference(int i) override { return slots_.at(size_t(i)); }
    void SetReference(int i, RefTargetHandle t) override { slots_.at(size_t(i)) = t; }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle target, PartID& part, RefMessage message) override {
        heard.push_back({target, part, message});
        return onNotify ? onNotify(target, part, message) : REF_SUCCEED;
    }
    RefTargetHandle Clone(RemapDir& remap) override {
        if (!canClone) return nullptr;
        auto* const copy = new Thing(NumRefs());
        for (int i = 0; i < NumRefs(); ++i) copy->ReplaceReference(i, remap.CloneRef(GetReference(i)));
        copy->number = number;
        return copy;
    }
    void Tell(PartID part = PART_ALL, RefMessage message = REFMSG_CHANGE) { NotifyDependents(FOREVER, part, message); }

    std::vector<Heard> heard;
    std::function<RefResult(RefTargetHandle, PartID&, RefMessage)> onNotify;
    bool canClone = true;
    int number = 0;

private:
    std::vector<RefTargetHandle> slots_;
};

/// Remembers for which times it was told of the last change.
class TimesListener : public Thing {
public:
    TimesListener() : Thing(1) {}
    RefResult NotifyRefChanged(const Interval& changed, RefTargetHandle, PartID&, RefMessage) override {
        told = changed;
        return REF_STOP;
    }
    Interval told = NEVER;
};

/// Adds a triangle; corners count from 0.
inline void AddFace(Mesh& mesh, int a, int b, int c, uint32_t smGroup = 0) {
    Face face;
    face.v[0] = a, face.v[1] = b, face.v[2] = c;
    face.smGroup = smGroup;
    mesh.faces.push_back(face);
}

/// The cube 0..1, corner i at (bit 0, bit 1, bit 2); every side is two triangles, outward normals. The sides' diagonals
/// are 0-3, 4-7, 0-5, 2-7, 0-6, 1-7.
inline Mesh UnitCube(uint32_t smGroup = 0) {
    Mesh mesh;
    for (int i = 0; i < 8; ++i) mesh.verts.push_back({float(i & 1), float((i >> 1) & 1), float(i >> 2)});
    const int quads[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (const auto& q : quads) {
        AddFace(mesh, q[0], q[1], q[2], smGroup);
        AddFace(mesh, q[0], q[2], q[3], smGroup);
    }
    return mesh;
}
