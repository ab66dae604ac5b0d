// Control strands of fur: grown along the vertex normals, leaned and bent.

#include <memory>

#include "Base/CtlHairMesh/CtlHairMesh.h"
#include "Base/CtlHairMesh/FurDirection.h"
#include "Base/HUtil/Subdivide.h"
#include "Base/HairMath.h"

namespace {

// A strand before its knots: a straight line, or one cubic Bezier. World space until it is tilted.
struct FurArc {
    Point3 root, out, in, tip;
    bool curved = false;

    void Transform(const Matrix3& m) { out = out * m, in = in * m, tip = tip * m; }
    void TurnAroundRoot(const Matrix3& rotation) {
        const auto turn = [&](const Point3& p) { return VectorTransform(p - root, rotation) + root; };
        out = turn(out), in = turn(in), tip = turn(tip);
    }
};

// A circular arc that starts along the normal n and ends at a chord pointing along d (bend style "Use Leaning").
FurArc LeaningArc(const Point3& root, const Point3& n, const Point3& d, float length) {
    FurArc arc{root, root, root + d * length, root + d * length};
    const float c = DotProd(n, d);
    if (!(c > -0.96f && c < 1.0f)) return arc;
    const float theta = HairMath::Acos(c);
    const float radius = 1.0f / (2.0f * theta);
    const float handle = radius * 4.0f * HairMath::Tan(theta / 2.0f) / 3.0f;
    const Point3 w = Normalize(CrossProd(n, CrossProd(d, n)));
    const Point3 tangent = w * HairMath::Sin(2.0f * theta) + n * HairMath::Cos(2.0f * theta);
    arc.out = root + n * (length * handle);
    arc.tip = root + d * (length * 2.0f * radius * HairMath::Sin(theta));
    arc.in = arc.tip - tangent * (length * handle);
    arc.curved = true;
    return arc;
}

// A symmetric circular arc of the given length with its chord along d, bowed away from the bend vector.
FurArc PolarArc(const Point3& root, const Point3& n, const Point3& d, const Point3& bend, float amount, float length) {
    const float phi = amount * HairMath::kHalfPi;
    const Point3 w = DotProd(d, bend) > 0.999f ? Normalize(CrossProd(d, CrossProd(d, -n)))
                                               : Normalize(CrossProd(d, CrossProd(d, bend)));
    const float s = HairMath::Sin(phi), c = HairMath::Cos(phi);
    const float handle = 2.0f * length * HairMath::Tan(phi / 2.0f) / (3.0f * phi);
    FurArc arc;
    arc.root = root;
    arc.tip = root + d * (length * s / phi);
    arc.out = root + (d * c + w * s) * handle;
    arc.in = arc.tip + (w * s - d * c) * handle;
    arc.curved = true;
    return arc;
}

void PlaceKnots(const FurArc& arc, VertexStrand& strand, int knots) {
    strand.knots.resize(size_t(knots));
    const Point3 c[4] = {arc.root, arc.out, arc.in, arc.tip};
    for (int i = 0; i < knots; ++i) {
        const float u = float(i) / float(knots - 1);
        Point3& p = strand.knots[size_t(i)];
        if (!arc.curved)
            p = arc.root * (1.0f - u) + arc.tip * u;
        else if (i == 0)
            p = arc.root;
        else if (i == knots - 1)
            p = arc.tip;
        else
            p = BezierPoint(BezierWeightsAt(u), c);
    }
    strand.splineDirty = true;
}

} // namespace

// Builds the strands of all vertices in index order. A vertex that carries no strand draws exactly what one that does
// would, so that a selection never changes the other strands.
void CtlHairMesh::BuildFurStrands(const HairParams& params) {
    FurDirections directions(params, mesh_, tmNow_, surfaces_);
    const Matrix3 worldToObject = Inverse(tmNow_);
    const float length = params.Float(pid_length);
    HairRandom rng;
    rng.Seed(uint32_t(params.Int(pid_randSeed)));
    for (int v = 0; v < mesh_->getNumVerts(); ++v) {
        const bool carries = vertexCarries_[v] && knotsPerStrand_ >= 2;
        const FurDirection dir = directions.Next(v, carries, rng); // draws of leaning, then of bending
        const float tilt = carries ? directions.TiltAmount(v) : 0.0f;
        Matrix3 tiltRotation;
        if (tilt > 0.0f)
            tiltRotation = RandomTilt(rng, dir.normalObject, tilt); // three draws
        else
            rng.Skip(3); // three draws, discarded
        if (!carries) {
            strands_[size_t(v)].reset();
            continue;
        }
        auto& slot = strands_[size_t(v)];
        if (!slot || slot->owner != this) slot = std::make_shared<VertexStrand>();
        VertexStrand& s = *slot;
        s.vertex = v;
        s.owner = this;
        s.root = mesh_->verts[size_t(v)];
        s.normal = dir.normalObject;
        s.display[0] = s.root - 5.0f * s.normal;
        s.display[1] = s.root + 5.0f * s.normal;
        s.leanAngle = dir.leanAngle, s.leanDirection = dir.leanDirection;
        s.bendAmount = dir.bendAmount, s.bendDirection = dir.bendDirection;

        const Point3 root = s.root * tmNow_;
        FurArc arc{root, root, root + dir.lean * length, root + dir.lean * length};
        if (dir.bend == FurDirection::BendLeaning)
            arc = LeaningArc(root, dir.normal, dir.lean, length);
        else if (dir.bend == FurDirection::BendPolar)
            arc = PolarArc(root, dir.normal, dir.lean, dir.polarBend, dir.polarAmount, length);
        arc.Transform(worldToObject);
        arc.root = s.root;
        if (tilt > 0.0f) arc.TurnAroundRoot(tiltRotation);
        PlaceKnots(arc, s, knotsPerStrand_);
    }
    randomState_ = rng;
}
