// Scene nodes as emitters.

#include "Base/BaseAtmo/EmitterRecord.h"

#include <algorithm>

#include "Base/DumMtl.h"
#include "Base/SurfDist/SurfDistEvaluator.h"
#include "DebugTools/Log.h"
#include "sdk/object.h"

namespace {

/// Whether all indices of the mesh name vertices that exist.
bool IndicesFit(const Mesh& mesh) {
    const auto inside = [](int i, size_t count) { return i >= 0 && size_t(i) < count; };
    for (const Face& f : mesh.faces)
        for (const int v : f.v)
            if (!inside(v, mesh.verts.size())) return false;
    for (const auto& [channel, map] : mesh.maps)
        for (const TVFace& f : map.tf)
            for (const int v : f.t)
                if (!inside(v, map.tv.size())) return false;
    return true;
}

Mtl* MakeDefaultMaterial(const Color& color) {
    return new DumMtl(Point3(color), false);
}

} // namespace

NodeEmitter::Kept NodeEmitter::Copy(TimeValue t) {
    Kept kept;
    kept.valid = FOREVER;
    bool needDelete = false;
    TriObject* object = GetTriObjectFromNode(node_, t, kept.valid, needDelete);
    if (!object) return {nullptr, Interval(t, t)};
    if (IndicesFit(object->mesh)) {
        auto mesh = std::make_shared<Mesh>(object->mesh);
        mesh->checkNormals();
        kept.mesh = std::move(mesh);
    } else if (!complained_) {
        complained_ = true;
        LogPrintf(LogDefault(), kLogEndLine, "emitter \"%s\" has faces without vertices and grows no hair",
                  node_->GetName());
    }
    if (needDelete) object->DeleteThis();
    return kept;
}

std::shared_ptr<const Mesh> NodeEmitter::MeshAt(TimeValue t, Interval& valid) {
    int at = 0;
    while (at < 2 && !kept_[at].valid.InInterval(t)) ++at;
    if (at == 2) {
        at = older_;
        kept_[at] = Copy(t);
    }
    older_ = 1 - at;
    const Kept& slot = kept_[at];
    valid &= slot.valid;
    return slot.mesh;
}

bool NodeEmitter::NamedFaceSet(const std::string& name, BitArray& faces) {
    const std::shared_ptr<const Mesh>& mesh = kept_[1 - older_].mesh;
    if (!mesh) return false;
    for (const auto& [setName, set] : mesh->faceSets) {
        if (setName != name) continue;
        faces = set;
        return true;
    }
    return false;
}

void NodeEmitter::Forget() {
    for (Kept& kept : kept_) kept = Kept();
    complained_ = false;
}

std::unique_ptr<SurfDistEvaluator> NodeSurfaces::MakeEvaluator(const SurfDistSettings& settings,
                                                               std::shared_ptr<const Mesh> mesh,
                                                               const Matrix3& objectTM) const {
    SurfDistScene scene;
    scene.mesh = std::move(mesh);
    scene.objectTM = objectTM;
    scene.worldToCam = worldToCam;
    scene.time = time;
    scene.node = node_;
    scene.material = node_->GetMtl();
    scene.makeDefaultMaterial = MakeDefaultMaterial;
    scene.wireColor = node_->GetWireColor();
    scene.lights = lights;
    return std::make_unique<SurfDistEvaluator>(settings, scene);
}
