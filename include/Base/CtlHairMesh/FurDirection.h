#pragma once
// Where the control strands of fur point: leaning turns them away from the normal, bending curves them.

#include <memory>
#include <vector>

#include "Base/CtlHairMesh/CtlHairMesh.h"
#include "Base/CtlHairMesh/VertexFaces.h"
#include "Base/HUtil/Frames.h"

/// Direction of one control strand.
struct FurDirection {
    enum Bend { BendNone, BendLeaning, BendPolar };
    Point3 normalObject; ///< vertex normal, object space
    Point3 normal;       ///< the same in world space, unit
    Point3 lean;         ///< where the strand (or its chord) points, world space, unit
    Bend bend = BendNone;
    Point3 polarBend;      ///< combined bend vector, world space, unit
    float polarAmount = 0; ///< 1 turns the strand by 180 degrees in all
    float leanAngle = 0, leanDirection = 0, bendAmount = 0, bendDirection = 0; ///< base values, degrees and amount
};

/// Works out the directions of all vertices of one emitter, in index order. Directions are found in object space, so
/// that fur keeps its pose on the skin when the emitter turns, and are then taken to world space.
class FurDirections {
public:
    FurDirections(const HairParams& params, std::shared_ptr<const Mesh> mesh, const Matrix3& objectTM,
                  const ISurfaceProvider* surfaces);
    ~FurDirections();

    /// The direction of vertex `v`. When `carries` is false nothing is computed but the same values are drawn.
    /// Draws, in order: with leaning on, lean angle and lean direction; with bending on and the polar style, bend
    /// direction and bend amount.
    FurDirection Next(int v, bool carries, HairRandom& rng);
    /// Amount of the direction random at vertex `v`, with its surface distribution.
    float TiltAmount(int v);

private:
    /// How a mode's local direction becomes an object-space one.
    Matrix3 Frame(int mode, int v, const Point3& normal) const;
    float BaseValue(int pid, int surfPid, int v);
    Point3 AbsoluteDirection(int surfPid, int v);
    Point3 LeanToWorld(const Point3& local, int mode, int v, const FurDirection& d) const;
    Point3 Lean(int v, FurDirection& d, HairRandom& rng);
    void BendPolar(int v, FurDirection& d, HairRandom& rng);

    const HairParams& params_;
    std::shared_ptr<const Mesh> mesh_;
    Matrix3 objectTM_, worldToObject_, normalTM_;
    std::vector<FaceCorner> lowestFace_;
    std::vector<std::unique_ptr<SurfDistEvaluator>> surfaces_;
};
