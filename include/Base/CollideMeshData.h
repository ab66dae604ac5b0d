#pragma once
// The world-space copy of a collision or cutter mesh that rays are shot at.

#include <memory>

#include "sdk/inode.h"

/// Collision parameters of a node: the object's own, where the node's user properties do not override them.
struct CollideParams {
    float friction = 0.2f;       ///< "HairCollisionFriction"
    float staticFriction = 0.4f; ///< "HairCollisionStaticFriction"
    float distance = 1.0f;       ///< "HairCollisionDistance", world units
    float distanceRandom = 0.6f; ///< "HairCollisionDistanceRandomFactor"
};

/// What a renderer keeps with a collision mesh; released through CollideMeshData::FreeRenderData.
struct MeshRenderData {
    virtual ~MeshRenderData() = default;
};

/// One node's mesh in world space. Build it on one thread; afterwards any number of threads may shoot rays.
class CollideMeshData {
public:
    /// `type` of a collider.
    static constexpr int kCollider = 3;

    virtual ~CollideMeshData() = default;
    /// Releases the render data.
    virtual void FreeRenderData() { renderData.reset(); }

    /// Reads the node's user properties over `own` and brings the copy to time `t`. The copy is rebuilt only when `t`
    /// leaves its validity, or node or node transform changed. False, with an empty copy, when the node is null or has
    /// no mesh.
    bool Build(INode* node, TimeValue t, const CollideParams& own = {});

    /// Nearest hit of the ray (the direction need not be unit): distance along it in units of its direction's length,
    /// and the unit face normal. Rejects by the bounding box first. False without a hit.
    bool IntersectRay(const Point3& origin, const Point3& direction, float& at, Point3& normal) const;

    INode* node = nullptr;
    int type = kCollider;
    CollideParams params;
    Mesh mesh; ///< vertices, faces and mapping in world space
    Box3 box;  ///< of the vertices
    Interval valid = NEVER;
    Matrix3 tm; ///< node transform that the copy was built with
    std::unique_ptr<MeshRenderData> renderData;

private:
    bool CopyMesh(TimeValue t);
};
