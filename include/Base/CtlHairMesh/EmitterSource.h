#pragma once
// What generation needs of an emitter: its mesh and its place in the world.

#include <memory>

#include "sdk/bitarray.h"
#include "sdk/interval.h"
#include "sdk/matrix3.h"
#include "sdk/mesh.h"

class INode;
class Mtl;

/// An emitter at any time. Called on the main thread only.
class IEmitterSource {
public:
    virtual ~IEmitterSource() = default;
    /// The emitter's triangle mesh at `t` in object space, with normals built; null when it has none. `valid` is
    /// narrowed.
    virtual std::shared_ptr<const Mesh> MeshAt(TimeValue t, Interval& valid) = 0;
    /// Object space to world space at `t`; `valid` is narrowed.
    virtual Matrix3 ObjectTM(TimeValue t, Interval& valid) = 0;
    /// The named face selection set on the emitter; false when there is none of that name.
    virtual bool NamedFaceSet(const std::string& name, BitArray& faces) { return false; }
    /// The scene node, for consumers that need it; may be null.
    virtual INode* Node() { return nullptr; }
};
