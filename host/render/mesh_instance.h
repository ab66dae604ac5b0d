#pragma once
// A node with its mesh, prepared for a render.

#include <vector>

#include "render/ray_scene.h"
#include "sdk/inode.h"
#include "sdk/mesh.h"
#include "sdk/mtl.h"
#include "sdk/render.h"

namespace host {

/// What a render needs of a node, copied at the render's time: effects may evaluate the scene at other times meanwhile.
class MeshInstance : public RenderInstance {
public:
    /// The node's mesh at `t`; `worldToCam` is the view's.
    MeshInstance(INode* node, const Mesh& mesh, TimeValue t, const Matrix3& worldToCam);
    MeshInstance(const MeshInstance&) = delete;
    MeshInstance& operator=(const MeshInstance&) = delete;

    /// Adds the mesh to the rays' scene under this instance's nodeID.
    void AddTo(RayScene& scene) const;
    bool HasFace(int f) const { return f >= 0 && f < own_.getNumFaces(); }
    /// A place on the mesh in camera space: the point, the face's unit normal, and the rendering normal. Normals stand
    /// on the side that the corners run round counter-clockwise in object space.
    struct Place {
        Point3 p, faceNormal, normal;
    };
    /// In face `f` at weights `u` and `v` of its second and third corner.
    Place PlaceAt(int f, float u, float v) const;
    /// Coordinates of a mapping channel at the weights; zero when the mesh does not have it.
    Point3 MappingAt(int channel, int f, float u, float v) const;
    /// Camera-space tangents along u and v of a mapping channel.
    bool TangentsAt(int channel, int f, Point3 tangents[2]) const;
    /// Change of a mapping channel's coordinates in face `f` along `d`, camera space in the face's plane.
    Point3 MappingChange(int channel, int f, const Point3& d) const;
    int MaterialId(int f) const { return own_.faces[size_t(f)].MatID(); }
    const Box3& ObjectBox() const { return box_; }
    const Matrix3& CamToObj() const { return camToObj_; }
    const Matrix3& WorldToObj() const { return worldToObj_; }

    float visibility = 1;           ///< of the node at the time, 0..1
    bool receivesShadows = true;    ///< lights look for shadows at its points
    bool inAtmosphere = true;       ///< effects are asked about the air in front of it
    bool seen = true, casts = true; ///< by the camera; shadows
    bool clear = false;             ///< may let light through
    bool facesTurned = false;       ///< the transform mirrors

private:
    void MakeNormals();
    const MeshMap* MappingOf(int channel, int f, const TVFace*& face) const;

    Mesh own_;
    Box3 box_;
    Matrix3 camToObj_, worldToObj_;
    std::vector<Point3> points_;                ///< vertices in camera space
    std::vector<Point3> faceNormals_, normals_; ///< one and three a face, camera space
};

/// True when a material may let light through somewhere.
bool MayBeClear(Mtl* material);

} // namespace host
