// Preparing a generation run: transforms, control points in the output space, tables, face records.

#include "Base/CreateHair/GenerationRun.h"

#include <algorithm>

#include "Base/CreateHair/Colors.h"
#include "Base/CreateHair/FaceRecords.h"
#include "Base/CreateHair/Thickness.h"
#include "Base/HUtil/Frames.h"

bool GenerationRun::Prepare(const RunRequest& r) {
    request = r;
    params = r.params;
    control = r.control;
    mesh = control->SharedMesh();
    knots = control->KnotsPerStrand();
    if (!mesh || mesh->verts.empty() || knots < 2) return false;
    objectTM = control->ObjectTM();
    objectToOutput = objectTM * r.worldToOutput;
    normalToOutput = NormalMatrix(objectToOutput);
    steps = params->Int(pid_bezierSteps);
    maxPoints = (knots - 1) * steps + 1;
    for (int i = 0; i < kNumRandDists; ++i) randDist[i].Build(params->RandCurve(kFirstRandDistPid + i));
    needsMapping = std::any_of(params->mappingChannels.begin(), params->mappingChannels.end(),
                               [](int c) { return c > 0 || c == STRANDMAP_EMITTER_COLOR; });
    PrepareStrands();
    PrepareProfile();
    PrepareColors();
    PrepareFaces();
    return true;
}

void GenerationRun::PrepareStrands() {
    const int n = mesh->getNumVerts(), controls = 3 * (knots - 1) + 1;
    strands.stride = (controls + 3) / 4 * 4;
    // Vector code may read up to a vector beyond the last strand.
    const size_t size = size_t(n) * size_t(strands.stride) + 4;
    strands.x.assign(size, 0.0f);
    strands.y.assign(size, 0.0f);
    strands.z.assign(size, 0.0f);
    const bool bends = params->Int(pid_orientAxis) == 3;
    bendDirection.assign(bends ? size_t(n) : 0, Point3());
    for (int v = 0; v < n; ++v) {
        const VertexStrand* s = control->Strand(v);
        if (!s) continue;
        const size_t base = size_t(v) * size_t(strands.stride);
        for (int k = 0; k < controls; ++k) {
            const Point3 p = s->ControlPoint(k + 1) * objectToOutput;
            strands.x[base + size_t(k)] = p.x;
            strands.y[base + size_t(k)] = p.y;
            strands.z[base + size_t(k)] = p.z;
        }
        if (bends) s->BendDirection(bendDirection[size_t(v)]);
    }
}

void GenerationRun::PrepareProfile() {
    profile.resize(size_t(maxPoints));
    FillThicknessProfile(*params, knots, steps, 1.0f, profile.data());
    profileMax = *std::max_element(profile.begin(), profile.end());
}

void GenerationRun::PrepareColors() {
    // A render run needs strand colours in its colour pass only, and only when the strands are shaded.
    needsColors = request.mode != GEN_RENDER || (request.pass == PASS_COLOR && request.shading);
    plainColors = !params->Surface(pid_surfDist_colBase) && !params->Surface(pid_surfDist_colTip);
    for (const int pid : {pid_randDist_colorH, pid_randDist_colorS, pid_randDist_colorV})
        plainColors = plainColors && !randDist[pid - kFirstRandDistPid].Active();
    plainBase = HsvRoundTrip(params->colBase);
    plainTip = HsvRoundTrip(params->colTip);
}

void GenerationRun::PrepareFaces() {
    BuildFaceRecords(*this, faces);
}

int64_t GenerationRun::TotalStrands() const {
    int64_t n = 0;
    for (const EmitterFace& f : faces) n += f.strands;
    return n;
}
