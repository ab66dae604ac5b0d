#pragma once
// Evaluates one surface distribution on one emitter mesh.

#include <memory>
#include <vector>

#include "Base/CtlHairMesh/VertexFaces.h"
#include "Base/HUtil/ThreadVector.h"
#include "Base/SurfDist/SurfDistSettings.h"
#include "sdk/basetypes.h"
#include "sdk/color.h"
#include "sdk/matrix3.h"
#include "sdk/mesh.h"

class HairShadeContext;
class INode;
class LightDesc;
class Mtl;

/// What an evaluator needs to know of its emitter.
struct SurfDistScene {
    std::shared_ptr<const Mesh> mesh; ///< with normals built; null: the distribution answers 1
    Matrix3 objectTM;                 ///< object space to world space
    Matrix3 worldToCam;
    TimeValue time = 0;
    INode* node = nullptr;
    Mtl* material = nullptr; ///< for source "Sub-Material ID"; null: a default material in the wire colour
    /// Makes that default material; the evaluator deletes it.
    Mtl* (*makeDefaultMaterial)(const Color& color) = nullptr;
    Color wireColor{0.5f, 0.5f, 0.5f};
    std::vector<LightDesc*> lights; ///< lights of the run; used by maps and by final shading only
};

/// A surface distribution at work. One thread uses one evaluator at a time; materials and maps must allow concurrent
/// evaluation.
class alignas(kThreadAlignment) SurfDistEvaluator {
public:
    SurfDistEvaluator(const SurfDistSettings& settings, const SurfDistScene& scene);
    ~SurfDistEvaluator();
    SurfDistEvaluator(const SurfDistEvaluator&) = delete;
    SurfDistEvaluator& operator=(const SurfDistEvaluator&) = delete;

    /// Scalar 0..1 at barycentric `bary` of `face`; `point` and `normal` (may be null: the Z axis) in object space.
    float AtFace(const Point3& point, const Point3& bary, int face, const Point3* normal = nullptr);
    /// Scalar 0..1 at a vertex, with the vertex's own channel values.
    float AtVertex(int vertex);
    /// Colour and alpha of the last evaluation, before the component was picked.
    const AColor& Result() const { return result_; }

private:
    void FindMaterial();
    void Interpolate(const Point3& bary, int face);
    void SetUpContext(const Point3& point, const Point3& bary, int face, const Point3& normal, int mtlNum);
    void Evaluate(const Point3& point, const Point3& bary, int face, const Point3& normal);
    void EvaluateChannel(const Point3& bary, int face);
    void ShadeMaterial(const Point3& point, const Point3& bary, int face, const Point3& normal);
    void ShadeMap(const Point3& point, const Point3& bary, int face, const Point3& normal);
    float Component() const;

    SurfDistSettings settings_;
    SurfDistScene scene_;
    Matrix3 normalTM_;
    AColor result_{1, 1, 1, 1};
    ThreadVector<Point3> channels_; ///< coordinate by channel + 2
    std::unique_ptr<HairShadeContext> context_;
    Mtl* ownMaterial_ = nullptr;     ///< the default material, when the emitter has none
    std::vector<FaceCorner> lowest_; ///< lowest face that uses each vertex, built on first use
};
