#pragma once
// What a hair object keeps for each of its emitters.

#include <memory>
#include <vector>

#include "Base/CtlHairMesh/CtlHairMesh.h"
#include "sdk/inode.h"
#include "sdk/mtl.h"
#include "sdk/shadecontext.h"

/// A scene node as emitter. Keeps a copy of its mesh while that holds.
class NodeEmitter : public IEmitterSource {
public:
    explicit NodeEmitter(INode* node) : node_(node) {}
    /// Null too for a mesh whose indices do not fit its vertices, which is logged once a node.
    std::shared_ptr<const Mesh> MeshAt(TimeValue t, Interval& valid) override;
    Matrix3 ObjectTM(TimeValue t, Interval& valid) override { return node_->GetObjectTM(t, &valid); }
    /// A named face set of the mesh as the modifier stack leaves it.
    bool NamedFaceSet(const std::string& name, BitArray& faces) override;
    INode* Node() override { return node_; }
    /// Drops the copy: the node changed.
    void Forget();

private:
    /// A copy with the interval over which it holds.
    struct Kept {
        std::shared_ptr<const Mesh> mesh;
        Interval valid = NEVER;
    };
    Kept Copy(TimeValue t);

    INode* node_;
    Kept kept_[2];  ///< of the current time and of the fixing frame, which alternate
    int older_ = 0; ///< the one that was not asked for last
    bool complained_ = false;
};

/// Evaluators of surface distributions on a node. Lights and camera are those of the running render; none otherwise.
class NodeSurfaces : public ISurfaceProvider {
public:
    explicit NodeSurfaces(INode* node) : node_(node) {}
    std::unique_ptr<SurfDistEvaluator> MakeEvaluator(const SurfDistSettings& settings, std::shared_ptr<const Mesh> mesh,
                                                     const Matrix3& objectTM) const override;

    TimeValue time = 0;
    Matrix3 worldToCam;
    std::vector<LightDesc*> lights;

private:
    INode* node_;
};

/// One emitter.
struct EmitterRecord {
    explicit EmitterRecord(INode* n) : node(n), source(n), surfaces(n), control(&source, &surfaces) {}
    INode* node;
    NodeEmitter source;
    NodeSurfaces surfaces;
    CtlHairMesh control;
    bool usable = false; ///< the control strands stand at the object's time
};
