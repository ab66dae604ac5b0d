#include "Base/CreateHair/StrandContext.h"

#include <cmath>

#include "Base/CreateHair/ShapeTables.h"
#include "Base/HUtil/Subdivide.h"

StrandContext::StrandContext(const GenerationRun& r, int threadIndex)
    : run(&r), thread(threadIndex), surfaces_(size_t(kNumSurfDists)) {
    const int controls = 3 * (r.knots - 1) + 1;
    control.Resize(controls);
    position.Resize(r.maxPoints);
    tangent.Resize(r.maxPoints);
    unitTangent.Resize(r.maxPoints);
    frame.Resize(r.maxPoints);
    sine.Resize(r.maxPoints);
    cosine.Resize(r.maxPoints);
    profile.Resize(r.maxPoints);
    width.Resize(r.maxPoints);
    segmentVisible.assign(size_t(r.knots - 1), 1);
    if (r.needsMapping) mapRoot.resize(size_t(r.mesh->getNumMaps()) + 2);
    tables = std::make_unique<Tables>(r);
    const ISurfaceProvider* provider = r.control->Surfaces();
    for (int i = 0; provider && i < kNumSurfDists; ++i)
        if (const SurfDistSettings* s = r.params->Surface(kFirstSurfDistPid + i))
            surfaces_[size_t(i)] = provider->MakeEvaluator(*s, r.mesh, r.objectTM);
}

StrandContext::~StrandContext() = default;
StrandContext::StrandContext(StrandContext&&) noexcept = default;

void StrandContext::SetFace(const EmitterFace& f) {
    face = &f;
    const Face& corners = run->mesh->faces[size_t(f.face)];
    const ReferenceMesh* reference = run->control->Reference();
    const bool useReference = reference && reference->VertexCount() == run->mesh->getNumVerts();
    for (int i = 0; i < 3; ++i) {
        vertex[i] = corners.v[i];
        clumpCorner[i] = useReference ? reference->positions[size_t(vertex[i])] : f.corner[i];
    }
    faceNormal = Normalize(VectorTransform(run->mesh->FaceNormal(f.face), run->normalToOutput));
    attractorBary.clear();
}

float StrandContext::Factor(int pid) {
    SurfDistEvaluator* e = Evaluator(pid);
    if (!e) return 1.0f;
    const Point3 normal = run->mesh->FaceNormal(face->face);
    return e->AtFace(rootObject, bary, face->face, &normal);
}

float StrandContext::DensityFactor(const EmitterFace& f) {
    SurfDistEvaluator* e = Evaluator(pid_surfDist_density);
    if (!e) return 1.0f;
    const Face& corners = run->mesh->faces[size_t(f.face)];
    const Point3 third(0.333333f, 0.333333f, 0.333333f);
    const Point3 centre =
        BaryInterpolate(third, run->mesh->verts[size_t(corners.v[0])], run->mesh->verts[size_t(corners.v[1])],
                        run->mesh->verts[size_t(corners.v[2])]);
    const Point3 normal = run->mesh->FaceNormal(f.face);
    return e->AtFace(centre, third, f.face, &normal);
}

int StrandContext::PointCount(int n, float f) const {
    return (n - 1) * run->steps + 1 + int(std::ceil(f * float(run->steps)));
}
