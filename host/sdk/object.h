#pragma once
// Scene objects: what a node shows.

#include "sdk/box3.h"
#include "sdk/channels.h"
#include "sdk/color.h"
#include "sdk/interval.h"
#include "sdk/matrix3.h"
#include "sdk/mesh.h"
#include "sdk/ref.h"
#include "sdk/spline.h"

class INode;
class Object;
class ViewExp;

/// The result of evaluating a node's pipeline.
struct ObjectState {
    Object* obj = nullptr;
    Interval valid = FOREVER;
    Matrix3 tm{}; ///< object space to world space, for modifiers that use TM_CHANNEL; the identity in results

    const Matrix3& GetTM() const { return tm; }
};

/// Moves points.
class Deformer {
public:
    virtual ~Deformer() = default;
    /// The place of point `i` that stands at `p`.
    virtual Point3 Map(int i, const Point3& p) = 0;
};

/// Anything a node can hold, before or after modifiers.
class BaseObject : public ReferenceTarget {
public:
    virtual const char* GetObjectName() { return "Object"; }
};

/// An object of the geometry pipeline.
class Object : public BaseObject {
public:
    /// The object itself at `t`.
    virtual ObjectState Eval(TimeValue t) { return {this, ObjectValidity(t)}; }
    virtual Interval ObjectValidity(TimeValue t) { return FOREVER; }
    // Validity of single channels (sdk/channels.h), for classes that keep them apart.
    virtual Interval ChannelValidity(TimeValue t, int channel) { return ObjectValidity(t); }
    virtual void SetChannelValidity(int channel, const Interval& valid) {}
    virtual void InvalidateChannels(ChannelMask mask) {}
    /// A copy at `t` for modifiers to work on: what the object converts to as defObjectClassID when that is another
    /// object, else a clone. Null when the class cannot be copied.
    virtual Object* PipelineCopy(TimeValue t);
    /// Takes the channels of `mask` over from an object of which this is a pipeline copy. False when that cannot be
    /// done; a new copy is made then.
    virtual bool CopyChannels(Object* from, ChannelMask mask) { return false; }

    virtual bool CanConvertToType(Class_ID id) { return id == ClassID(); }
    /// The object as another class. The result is the object itself or a new one, which the caller deletes.
    virtual Object* ConvertToType(TimeValue t, Class_ID id) { return id == ClassID() ? this : nullptr; }
    /// True when the renderer should ask for a mesh.
    virtual bool IsRenderable() { return false; }

    // Points that deformers move.
    virtual bool IsDeformable() { return false; }
    virtual int NumPoints() { return 0; }
    virtual Point3 GetPoint(int i) { return {}; }
    virtual void SetPoint(int i, const Point3& p) {}
    /// How much point `i` follows a deformation of the selection, 0..1.
    virtual float PointSelection(int i) { return 1.0f; }
    /// To be called after points were set.
    virtual void PointsWereChanged() {}
    /// Moves all points; with `useSel` by their selection.
    virtual void Deform(Deformer* deformer, bool useSel = false);
    /// The box of the points, of the selected ones with `useSel`; empty when there are none.
    virtual Box3 GetDeformBBox(bool useSel = false);
};

class GeomObject : public Object {
public:
    SClass_ID SuperClassID() override { return GEOMOBJECT_CLASS_ID; }
    bool IsRenderable() override { return true; }
    /// The mesh to render; `needDelete` tells whether the caller deletes it. Null when there is none.
    virtual Mesh* GetRenderMesh(TimeValue t, INode* node, bool& needDelete) { return nullptr; }
};

/// Geometry that keeps a validity for each of its channels.
class ChannelObject : public GeomObject {
public:
    Interval ObjectValidity(TimeValue) override { return valid_.All(); }
    Interval ChannelValidity(TimeValue, int channel) override { return valid_[channel]; }
    void SetChannelValidity(int channel, const Interval& valid) override { valid_[channel] = valid; }
    void InvalidateChannels(ChannelMask mask) override { valid_.Invalidate(mask); }

protected:
    ChannelIntervals valid_;
};

/// A triangle mesh in the pipeline.
class TriObject : public ChannelObject {
public:
    Mesh mesh;
    Class_ID ClassID() override { return TRIOBJ_CLASS_ID; }
    const char* GetObjectName() override { return "Mesh"; }
    RefTargetHandle Clone(RemapDir&) override { return PipelineCopy(0); }
    Object* PipelineCopy(TimeValue) override;
    bool CopyChannels(Object* from, ChannelMask mask) override;
    bool CanConvertToType(Class_ID id) override;
    Object* ConvertToType(TimeValue t, Class_ID id) override { return CanConvertToType(id) ? this : nullptr; }
    Mesh* GetRenderMesh(TimeValue t, INode* node, bool& needDelete) override {
        needDelete = false;
        return &mesh;
    }
    bool IsDeformable() override { return true; }
    int NumPoints() override { return mesh.getNumVerts(); }
    Point3 GetPoint(int i) override { return mesh.verts[size_t(i)]; }
    void SetPoint(int i, const Point3& p) override { mesh.verts[size_t(i)] = p; }
    float PointSelection(int i) override { return mesh.VertexSelection(i); }
    /// Explicit normals no longer fit and go.
    void PointsWereChanged() override;
};

/// A shape of Bezier splines.
class ShapeObject : public ChannelObject {
public:
    BezierShape shape;
    SClass_ID SuperClassID() override { return SHAPE_CLASS_ID; }
    Class_ID ClassID() override { return splineShapeClassID; }
    const char* GetObjectName() override { return "Shape"; }
    bool IsRenderable() override { return false; }
    RefTargetHandle Clone(RemapDir&) override { return PipelineCopy(0); }
    Object* PipelineCopy(TimeValue) override;
    bool CopyChannels(Object* from, ChannelMask mask) override;
    /// Itself as splineShapeClassID and genericShapeClassID; a new TriObject of the areas inside its splines when all
    /// of them are closed, flat and do not cross themselves.
    bool CanConvertToType(Class_ID id) override;
    Object* ConvertToType(TimeValue t, Class_ID id) override;
    // Points: for every knot its place, its incoming and its outgoing handle.
    bool IsDeformable() override { return true; }
    int NumPoints() override { return 3 * shape.KnotCount(); }
    Point3 GetPoint(int i) override { return shape.ControlPoint(i); }
    void SetPoint(int i, const Point3& p) override { shape.ControlPoint(i) = p; }
};

/// The name under which parts of the host and plug-ins make shapes of their own.
using SplineShape = ShapeObject;

class HelperObject : public Object {
public:
    SClass_ID SuperClassID() override { return HELPER_CLASS_ID; }
};

/// A force on moving points. World space.
class ForceField {
public:
    virtual ~ForceField() = default;
    /// Force at `pos` on a point moving with `vel`.
    virtual Point3 Force(TimeValue t, const Point3& pos, const Point3& vel, int index) = 0;
};

/// A space warp: gravity, wind, deflector.
class WSMObject : public Object {
public:
    SClass_ID SuperClassID() override { return WSM_OBJECT_CLASS_ID; }
    /// The force of this warp at `node`, or null when it is none. The caller deletes it.
    virtual ForceField* GetForceField(INode* node) { return nullptr; }
};

/// A camera at a time.
struct CameraState {
    bool isOrtho = false;
    float fov = 0.785398f; ///< horizontal angle in radians
    float tdist = 100.0f;  ///< distance to the target
    bool manualClip = false;
    float hither = 1.0f, yon = 1000.0f;         ///< clip range, used when manualClip is set
    float nearRange = 0.0f, farRange = 1000.0f; ///< environment ranges
    float roll = 0.0f; ///< turn about the view axis in radians, clockwise as the camera sees itself
};

class CameraObject : public Object {
public:
    SClass_ID SuperClassID() override { return CAMERA_CLASS_ID; }
    virtual RefResult EvalCameraState(TimeValue t, Interval& valid, CameraState* cs) = 0;
};

enum LightType { OMNI_LGT, SPOT_LGT, DIRECT_LGT, AMBIENT_LGT };

/// How a light fades with distance, by the ratio of the decay's start to the distance.
enum LightDecay { DECAY_NONE, DECAY_INVERSE, DECAY_INVERSE_SQUARE };

/// A light at a time.
struct LightState {
    LightType type = OMNI_LGT;
    Color color{1, 1, 1};
    float intens = 1;
    float hotsize = 43, fallsize = 45; ///< cone angles in degrees (spot) or radii (direct)
    bool on = true, shadow = false, affectDiffuse = true, affectSpecular = true, ambientOnly = false;
    bool rectangular = false; ///< the cone's or cylinder's cross section
    float aspect = 1;         ///< of a rectangle: width by height; hotsize and fallsize are its width's
    bool useNearAtten = false, useFarAtten = false;
    float nearAttenStart = 0, nearAttenEnd = 40; ///< no light before the start, full light from the end on
    float farAttenStart = 80, farAttenEnd = 200; ///< full light up to the start, none beyond the end
    LightDecay decay = DECAY_NONE;
    float decayStart = 40; ///< distance of full light
};

class ShadowType;

class LightObject : public Object {
public:
    SClass_ID SuperClassID() override { return LIGHT_CLASS_ID; }
    virtual RefResult EvalLightState(TimeValue t, Interval& valid, LightState* ls) = 0;
    /// The light prepared for a frame. The caller deletes it.
    virtual class ObjLightDesc* CreateLightDesc(INode* node) = 0;
    virtual ShadowType* GetShadowType() { return nullptr; }
};
