#pragma once
// The working state of one generation thread: the strand it is making.

#include <memory>

#include "Base/CreateHair/GenerationRun.h"
#include "Base/CreateHair/PaddedPoints.h"
#include "Base/HUtil/HairRandom.h"
#include "Base/SurfDist/SurfDistEvaluator.h"

/// One generation thread's state. All arrays are sized once a run for the largest strand.
class alignas(kThreadAlignment) StrandContext {
public:
    /// Sizes everything for `run`.
    StrandContext(const GenerationRun& run, int threadIndex);
    ~StrandContext();
    StrandContext(StrandContext&&) noexcept;

    const GenerationRun* run;
    int thread = 0;
    HairRandom rng{};

    // The current face.
    const EmitterFace* face = nullptr;
    int vertex[3] = {0, 0, 0};
    Point3 faceNormal;                  ///< unit, output space
    Point3 clumpCorner[3];              ///< corners that clump distances are measured on
    ThreadVector<Point3> attractorBary; ///< roots of the face's clump attractors
    ThreadVector<char> segmentVisible;  ///< by segment of the unshortened strand
    ThreadVector<char> cullScratch;     ///< room for culling

    // The current strand.
    int strandIndex = 0;
    bool attracted = false;
    Point3 bary, weights; ///< root weights; final weights (direction random and clumping applied)
    Point3 rootObject, rootOutput;
    ThreadVector<Point3> mapRoot; ///< root's coordinate by emitter channel + 2
    float cutFactor = 1;
    int materialId = 0;                    ///< zero-based
    float lengthSample = 1, thickness = 0; ///< thickness: base thickness T, world units
    bool thick = false;
    Color base, tip;
    float orientAngle = 0; ///< degrees
    Point3 orientation;    ///< cross-section orientation, output space
    float dirRand = 0;
    int segments = 0;   ///< n
    float fraction = 1; ///< f: how much of the last segment is used
    int lastSteps = 0;  ///< subdivision steps of the last segment
    int points = 0;
    PaddedPoints control, position, tangent;
    PaddedPoints unitTangent, frame; ///< room for curling
    PaddedFloats sine, cosine;
    PaddedFloats profile; ///< thickness profile of this strand (cut strands), world units / T
    PaddedFloats width;   ///< thickness by point; width on screen in render runs
    int64_t strandsMade = 0, verticesMade = 0;

    /// Makes `f` current: corner strands, normal, clump corners.
    void SetFace(const EmitterFace& f);
    /// Factor of a surface distribution at the root; 1 when it is switched off.
    float Factor(int pid);
    /// The distribution's evaluator, or null when it is switched off.
    SurfDistEvaluator* Evaluator(int pid) { return surfaces_[size_t(pid - kFirstSurfDistPid)].get(); }
    /// Density factor at the centre of a face.
    float DensityFactor(const EmitterFace& f);
    /// Number of points of a strand of `n` segments whose last one is used up to `f`.
    int PointCount(int n, float f) const;

    // Tables that depend on the run only, filled on demand; see ShapeTables.
    struct Tables;
    std::unique_ptr<Tables> tables;

private:
    ThreadVector<std::unique_ptr<SurfDistEvaluator>> surfaces_;
};
