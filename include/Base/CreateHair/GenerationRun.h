#pragma once
// One generation run: the hair of one emitter at one time, for one purpose. Built on the main thread, then only read.

#include <cstdint>
#include <memory>
#include <vector>

#include "Base/CtlHairMesh/CtlHairMesh.h"
#include "Base/HUtil/RandDist.h"
#include "Base/HairParams.h"
#include "sdk/matrix3.h"

class HairImageInfo;

/// What a run is for.
enum GenerationMode { GEN_RENDER = 1, GEN_MESH = 2, GEN_ESTIMATE = 3, GEN_SHAPE = 4 };
/// Which render pass.
enum GenerationPass { PASS_COLOR = 1, PASS_SHADOW = 2, PASS_OTHER = 3 };

/// One emitter face of a run.
struct EmitterFace {
    int face = 0;
    uint32_t seed = 0;     ///< seeds the face; strand i is seeded with i * 13737 + seed
    float strandCount = 0; ///< expected number of middle strands
    float clumpValue = 0;  ///< area, or the expected number of clump attractors
    Point3 centre;         ///< world space, like the corners
    Point3 corner[3];
    const VertexStrand* strand[3] = {nullptr, nullptr, nullptr};
    int strands = 0;    ///< drawn number of middle strands; 0 when the face grows none
    int attractors = 0; ///< drawn number of clump attractors
    int AttractorLimit() const { return attractors < 1 || attractors >= strands ? strands : attractors; }
};

/// Region of the screen a render run draws into, in pixels; the upper ends are exclusive.
struct ScreenRegion {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    float filterRadius = 0; ///< how far a strand's edge spreads, in pixels
};

/// What the caller of a run asks for.
struct RunRequest {
    GenerationMode mode = GEN_RENDER;
    int pass = PASS_COLOR;
    bool shading = true; ///< render: middle strands are shaded (and so need colours)
    const HairParams* params = nullptr;
    CtlHairMesh* control = nullptr;       ///< evaluated at the run's time
    Matrix3 worldToOutput;                ///< world to camera for render runs, else the identity
    const HairImageInfo* image = nullptr; ///< projection, render runs
    bool perspective = true;
    const ScreenRegion* region = nullptr; ///< culls faces and segments; null: nothing is culled
    int selectedFace = -1;                ///< only this face, or -1
    int selectedStrand = -1;              ///< only the strand of this index in each face, or -1
};

/// Control points of all vertex strands in the output space, one array a component, `stride` floats a strand.
struct OutputStrands {
    int stride = 0;
    std::vector<float> x, y, z;
    const float* X(int vertex) const { return x.data() + size_t(vertex) * size_t(stride); }
    const float* Y(int vertex) const { return y.data() + size_t(vertex) * size_t(stride); }
    const float* Z(int vertex) const { return z.data() + size_t(vertex) * size_t(stride); }
};

/// Everything a run's threads read.
struct GenerationRun {
    RunRequest request;
    const HairParams* params = nullptr;
    const CtlHairMesh* control = nullptr;
    std::shared_ptr<const Mesh> mesh;
    Matrix3 objectTM; ///< object to world
    Matrix3 objectToOutput;
    Matrix3 normalToOutput; ///< for normals: inverse transpose, no translation
    std::vector<EmitterFace> faces;
    OutputStrands strands;
    std::vector<Point3> bendDirection; ///< by vertex, object space; zero where the strand has none
    RandDist randDist[kNumRandDists];
    int knots = 0;              ///< K
    int steps = 0;              ///< subdivisions a segment
    int maxPoints = 0;          ///< (K - 1) * steps + 1
    std::vector<float> profile; ///< thickness profile of an unshortened strand; used when no cut factor applies
    float profileMax = 1;
    bool needsColors = true;   ///< base and tip colours are computed
    bool needsMapping = false; ///< the root's emitter coordinates are computed
    bool needsCylinderU = false;
    Color plainBase, plainTip; ///< the colours after a round trip through HSV, when nothing varies them
    bool plainColors = false;

    /// Prepares the run. False when the emitter has no mesh, no vertex or fewer than two knots.
    bool Prepare(const RunRequest& r);
    /// Sum of the drawn strand numbers.
    int64_t TotalStrands() const;

private:
    void PrepareStrands();
    void PrepareProfile();
    void PrepareColors();
    void PrepareFaces();
};
