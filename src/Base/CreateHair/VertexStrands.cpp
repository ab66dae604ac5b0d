#include "Base/CreateHair/VertexStrands.h"

#include <algorithm>

#include "Base/CreateHair/Colors.h"
#include "Base/CreateHair/Orientation.h"
#include "Base/CreateHair/Shaping.h"
#include "Base/CreateHair/StrandCurve.h"
#include "Base/CreateHair/Thickness.h"
#include "Base/CtlHairMesh/VertexFaces.h"

VertexStrandList::VertexStrandList(const GenerationRun& run) : run_(run) {
    const std::vector<FaceCorner> lowest = FindLowestFaces(*run.mesh);
    for (int v = 0; v < run.mesh->getNumVerts(); ++v) {
        if (!run.control->Strand(v) || lowest[size_t(v)].face < 0) continue;
        vertices_.push_back(v);
        EmitterFace f = run.faces[size_t(lowest[size_t(v)].face)];
        // The vertex's own strand stands at all three corners, so that every blend of corners is that strand.
        for (auto& s : f.strand) s = run.control->Strand(v);
        faces_.push_back(f);
    }
}

void VertexStrandList::Make(StrandContext& c, int i) const {
    const int v = Vertex(i);
    c.SetFace(faces_[size_t(i)]);
    std::fill(std::begin(c.vertex), std::end(c.vertex), v);
    c.strandIndex = i;
    // Weights of the vertex's corner on its lowest face, for mapping; its own strand at every corner makes them
    // harmless.
    const Face& corners = run_.mesh->faces[size_t(c.face->face)];
    c.bary = {float(corners.v[0] == v), 0.0f, 0.0f};
    if (corners.v[0] != v) (corners.v[1] == v ? c.bary.y : c.bary.z) = 1.0f;
    c.weights = c.bary;
    PlaceRoot(c);
    c.cutFactor = 1.0f;
    c.dirRand = 0.0f;
    c.materialId = run_.params->Int(pid_mtlIDUsage) == 0 ? run_.params->Int(pid_mtlID) - 1 : corners.MatID();
    c.thickness = run_.params->Float(pid_thickness) * c.Factor(pid_surfDist_thickness);
    if (run_.request.pass == PASS_SHADOW) c.thickness = c.thickness * run_.params->Float(pid_thickShadow);

    c.rng = run_.control->RandomState();
    c.rng.Skip(kDrawsPerStrand * uint64_t(i));
    DrawOrientationAngle(c); // draw: orientation
    DrawColors(c);           // draws: hue, saturation, value
    c.orientation = OrientControlStrand(run_, v, c.orientAngle);
    c.segments = run_.knots - 1;
    c.fraction = 1.0f;
    BuildControlPoints(c);
    SubdivideStrand(c);
    SpreadThickness(c);
    std::fill(c.segmentVisible.begin(), c.segmentVisible.end(), char(1));
}

void ShadeKnots(const VertexStrandList& list, int first, int step, StrandContext& c, StrandShading& shading,
                KnotColors& out) {
    const GenerationRun& run = *c.run;
    for (int i = first; i < list.Count(); i += step) {
        list.Make(c, i);
        StrandSurface s;
        s.base = c.base, s.tip = c.tip;
        s.bary = c.bary;
        s.orientation = c.orientation;
        s.mapRoot = c.mapRoot.data(), s.mapRootCount = int(c.mapRoot.size());
        s.materialId = c.materialId;
        s.face = c.face->face;
        shading.SetStrand(s);
        for (int k = 0; k < run.knots; ++k) {
            const int point = k * run.steps;
            const size_t at = size_t(list.Vertex(i)) * size_t(run.knots) + size_t(k);
            if (StrandShading::Degenerate(c.tangent[point])) {
                out.color[at] = Color(0, 0, 0);
                out.opacity[at] = 1.0f;
                continue;
            }
            const float v = float(point) / float(c.points - 1);
            shading.ShadeSingle(c.position[point], c.tangent[point], v, out.color[at], out.opacity[at]);
        }
    }
}
