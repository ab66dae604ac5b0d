#include "Base/CreateHair/Shaping.h"

#include "Base/CreateHair/Clumping.h"
#include "Base/CreateHair/Colors.h"
#include "Base/CreateHair/Curl.h"
#include "Base/CreateHair/FaceRecords.h"
#include "Base/CreateHair/Orientation.h"
#include "Base/CreateHair/StrandCurve.h"
#include "Base/CreateHair/Thickness.h"
#include "Base/HUtil/Subdivide.h"

namespace {

// Length factor that the modelling cutters left, blended from the corners.
void FindCutFactor(StrandContext& c) {
    c.cutFactor = 1.0f;
    if (!c.run->params->On(pid_useModCutters)) return;
    const CtlHairMesh& control = *c.run->control;
    c.cutFactor = c.bary.x * control.CutFactor(c.vertex[0]) + c.bary.y * control.CutFactor(c.vertex[1]) +
                  c.bary.z * control.CutFactor(c.vertex[2]);
}

// Whether the run has no use for the strand, by its thickness.
bool Unwanted(const StrandContext& c) {
    const HairParams& p = *c.run->params;
    switch (c.run->request.mode) {
    case GEN_ESTIMATE:
        return !c.thick;
    case GEN_MESH:
        return !p.On(pid_useGeom) || !c.thick;
    case GEN_SHAPE:
        return p.On(pid_useGeom) && !c.thick;
    default:
        if (!p.On(pid_useGeom)) return false;
        return c.thick || p.Int(pid_geomThin) != 1;
    }
}

} // namespace

void PlaceRoot(StrandContext& c) {
    const GenerationRun& run = *c.run;
    const Mesh& mesh = *run.mesh;
    c.rootObject = BaryInterpolate(c.bary, mesh.verts[size_t(c.vertex[0])], mesh.verts[size_t(c.vertex[1])],
                                   mesh.verts[size_t(c.vertex[2])]);
    c.rootOutput = c.rootObject * run.objectToOutput;
    if (!run.needsMapping) return;
    for (size_t i = 0; i < c.mapRoot.size(); ++i) {
        const MeshMap* map = mesh.Map(int(i) - 2);
        if (!map) continue;
        const TVFace& t = map->tf[size_t(c.face->face)];
        c.mapRoot[i] =
            BaryInterpolate(c.bary, map->tv[size_t(t.t[0])], map->tv[size_t(t.t[1])], map->tv[size_t(t.t[2])]);
    }
}

bool MakeStrand(StrandContext& c, int index, const Point3& bary) {
    const GenerationRun& run = *c.run;
    c.strandIndex = index;
    c.bary = bary;
    c.rng.Seed(StrandSeed(c.face->seed, index));
    c.rng.Draw(); // draw: discarded
    PlaceRoot(c);
    FindCutFactor(c);
    c.materialId = run.params->Int(pid_mtlIDUsage) == 0 ? run.params->Int(pid_mtlID) - 1
                                                        : run.mesh->faces[size_t(c.face->face)].MatID();
    DrawLengthAndThickness(c); // draws: length, thickness
    if (Unwanted(c)) return false;
    if (run.request.mode == GEN_ESTIMATE) return true;
    DrawColors(c);           // draws: hue, saturation, value
    DrawOrientationAngle(c); // draw: orientation
    PerturbWeights(c);       // draws: direction random, two
    ApplyClumping(c);
    if (!FindLength(c)) return false;
    BuildControlPoints(c);
    SubdivideStrand(c);
    OrientStrand(c);
    ApplyCurl(c); // draw: curl orientation
    SpreadThickness(c);
    return true;
}
