// Shape fixing: the strands of the fixing reference frame, carried along with the emitter.

#include <memory>

#include "Base/CtlHairMesh/CtlHairMesh.h"
#include "Base/CtlHairMesh/VertexFaces.h"
#include "Base/HUtil/Frames.h"

namespace {

// The frame of a vertex: Z its normal, X toward the next corner of its lowest face, so that it turns with the surface.
Matrix3 VertexFrame(const Mesh& mesh, const Point3& normal, const FaceCorner& use, int vertex) {
    // The mesh may have other faces by now, with as many vertices.
    if (use.face < 0 || use.face >= mesh.getNumFaces()) return FrameFromDirection(normal);
    const Point3 edge =
        mesh.verts[size_t(mesh.faces[size_t(use.face)].v[(use.corner + 1) % 3])] - mesh.verts[size_t(vertex)];
    if (LengthSquared(CrossProd(normal, Normalize(edge))) < 1e-6f) return FrameFromDirection(normal);
    return FrameFromDirection(normal, Normalize(edge));
}

} // namespace

bool CtlHairMesh::PrepareSnapshot(const HairParams& params) {
    const TimeValue t = params.Int(pid_fixRefFrame) * params.ticksPerFrame;
    if (!snapshot_) snapshot_ = std::make_unique<CtlHairMesh>(emitter_, surfaces_);
    if (snapshot_->time_ == t && snapshot_->valid_.InInterval(t)) return true;
    if (snapshot_->Update(t, params, true)) return true;
    snapshot_.reset();
    return false;
}

void CtlHairMesh::CarrySnapshot(const HairParams& params) {
    const CtlHairMesh& from = *snapshot_;
    const Mesh &meshThen = *from.mesh_, &meshNow = *mesh_;
    const std::vector<Point3>&normalThen = meshThen.VertexNormals(), &normalNow = meshNow.VertexNormals();
    const bool follow = params.On(pid_fixFollow);
    const std::vector<FaceCorner> uses = follow ? FindLowestFaces(meshThen) : std::vector<FaceCorner>();

    strands_.resize(from.strands_.size());
    knotsPerStrand_ = from.knotsPerStrand_;
    faceSelected_ = from.faceSelected_;
    vertexCarries_ = from.vertexCarries_;
    randomState_ = from.randomState_;
    for (size_t v = 0; v < strands_.size(); ++v) {
        if (!from.strands_[v]) {
            strands_[v].reset();
            continue;
        }
        strands_[v] = from.strands_[v];
        // Strands are kept in object space, so moving from the fixing frame's transform to the current one changes
        // nothing.
        const Point3 rootThen = meshThen.verts[v], rootNow = meshNow.verts[v];
        Matrix3 turn;
        if (follow) {
            const Matrix3 frameThen = VertexFrame(meshThen, normalThen[v], uses[v], int(v));
            const Matrix3 frameNow = VertexFrame(meshNow, normalNow[v], uses[v], int(v));
            if (!(frameThen == frameNow)) turn = Inverse(frameThen) * frameNow;
        }
        if (rootThen == rootNow && turn == Matrix3()) continue;
        VertexStrand& s = *EditStrand(int(v));
        for (Point3& p : s.knots) p = (p - rootThen) * turn + rootNow;
        s.knots[0] = rootNow;
        s.root = rootNow;
        s.normal = VectorTransform(s.normal, turn);
        s.display[0] = rootNow - 5.0f * s.normal;
        s.display[1] = rootNow + 5.0f * s.normal;
        s.BuildSpline();
    }
}
