// Updating and evaluating the control layer of one emitter.

#include "Base/CtlHairMesh/CtlHairMesh.h"

#include <utility>

#include "Base/FaceSel.h"
#include "Base/SurfDist/SurfDistEvaluator.h"

CtlHairMesh::CtlHairMesh(IEmitterSource* emitter, const ISurfaceProvider* surfaces)
    : emitter_(emitter), surfaces_(surfaces) {}
CtlHairMesh::~CtlHairMesh() = default;

void CtlHairMesh::Reset() {
    valid_.SetEmpty();
    meshValid_.SetEmpty();
    strandsValid_.SetEmpty();
    if (snapshot_) snapshot_->Reset();
    reference_.reset();
    boundsValid_ = false;
    for (auto& s : strands_)
        if (s && s->owner == this) s->splineDirty = true;
    time_ = TIME_NegInfinity;
    cutFactors_.clear();
}

// The mesh at the fixing reference frame; null when it cannot be had.
std::unique_ptr<ReferenceMesh> CtlHairMesh::MakeReference(const HairParams& params) {
    const TimeValue t = params.Int(pid_fixRefFrame) * params.ticksPerFrame;
    Interval valid = FOREVER;
    auto reference = std::make_unique<ReferenceMesh>();
    reference->mesh = emitter_->MeshAt(t, valid);
    if (!reference->mesh) return nullptr;
    reference->objectTM = emitter_->ObjectTM(t, valid);
    const Mesh& mesh = *reference->mesh;
    reference->positions.reserve(mesh.verts.size());
    for (const Point3& v : mesh.verts) reference->positions.push_back(v * reference->objectTM);
    reference->faceArea.reserve(mesh.faces.size());
    for (const Face& f : mesh.faces) {
        const Point3 &a = reference->positions[size_t(f.v[0])], &b = reference->positions[size_t(f.v[1])],
                     &c = reference->positions[size_t(f.v[2])];
        reference->faceArea.push_back(Length(CrossProd(c - a, b - a)) / 2.0f);
    }
    return reference;
}

// Stores the meshes of an update that cannot fail any more.
void CtlHairMesh::TakeMeshes(std::unique_ptr<ReferenceMesh> reference, std::shared_ptr<const Mesh> mesh, TimeValue t,
                             Interval valid) {
    reference_ = std::move(reference);
    mesh_ = std::move(mesh);
    tmNow_ = emitter_->ObjectTM(t, valid);
    time_ = t;
    meshValid_ = strandsValid_ = valid_ = valid;
    boundsValid_ = false;
}

void CtlHairMesh::SelectFaces(const HairParams& params) {
    faceSelected_ = ComputeFaceSelection(params.faceSelection, *mesh_, *emitter_).faces;
    vertexCarries_ = BitArray(mesh_->getNumVerts());
    for (int f = 0; f < mesh_->getNumFaces(); ++f)
        if (faceSelected_[f])
            for (const int v : mesh_->faces[size_t(f)].v) vertexCarries_.Set(v);
}

bool CtlHairMesh::FaceSelected(int face) const {
    return snapshot_ ? snapshot_->faceSelected_[face] : faceSelected_[face];
}

bool CtlHairMesh::Update(TimeValue t, const HairParams& params, bool isSnapshot) {
    std::unique_ptr<ReferenceMesh> reference;
    if (!isSnapshot && params.On(pid_fixDensity) && !(reference = MakeReference(params))) return false;
    Interval valid = FOREVER;
    std::shared_ptr<const Mesh> mesh = emitter_->MeshAt(t, valid);
    if (!mesh) return false;
    TakeMeshes(std::move(reference), std::move(mesh), t, valid);
    strands_.resize(size_t(mesh_->getNumVerts()));
    if (knotsPerStrand_ != params.Int(pid_knots)) {
        for (auto& s : strands_) s.reset();
        knotsPerStrand_ = params.Int(pid_knots);
    }
    SelectFaces(params);
    if (params.isFur) {
        BuildFurStrands(params);
    } else {
        // Hair is shaped by model hairs; without any, no control strand exists.
        for (auto& s : strands_) s.reset();
    }
    for (auto& s : strands_)
        if (s && s->splineDirty) s->BuildSpline();
    return true;
}

bool CtlHairMesh::Evaluate(TimeValue t, const HairParams& params) {
    if (valid_.InInterval(t)) return true;
    if (!params.On(pid_fixShape)) {
        snapshot_.reset();
        return Update(t, params);
    }
    if (!PrepareSnapshot(params)) return false;
    std::unique_ptr<ReferenceMesh> reference;
    if (params.On(pid_fixDensity) && !(reference = MakeReference(params))) return false;
    Interval valid = FOREVER;
    std::shared_ptr<const Mesh> mesh = emitter_->MeshAt(t, valid);
    if (!mesh) return false;
    if (mesh->getNumVerts() != snapshot_->VertexCount()) {
        // Strands of another topology cannot be carried along; they grow anew instead.
        snapshot_.reset();
        return Update(t, params);
    }
    TakeMeshes(std::move(reference), std::move(mesh), t, valid);
    CarrySnapshot(params);
    return true;
}

VertexStrand* CtlHairMesh::EditStrand(int vertex) {
    auto& slot = strands_[size_t(vertex)];
    if (slot && slot->owner != this) {
        slot = std::make_shared<VertexStrand>(*slot);
        slot->owner = this;
    }
    return slot.get();
}

float CtlHairMesh::CutFactor(int vertex) const {
    const float c = size_t(vertex) < cutFactors_.size() ? cutFactors_[size_t(vertex)] : 1.0f;
    return c < 0.0f ? 1.0f : c;
}

const Box3& CtlHairMesh::Bounds(const HairParams& params, int densityPercent) {
    if (boundsValid_) return bounds_;
    HairRandom rng;
    rng.Seed(uint32_t(params.Int(pid_randSeed)));
    bounds_.Init();
    for (const auto& s : strands_) {
        const int r = rng.Draw(); // one draw a vertex: whether its strand is kept
        if (s && r * 100 <= densityPercent * HairRandom::kMax) bounds_ += s->Bounds();
    }
    boundsValid_ = true;
    return bounds_;
}
