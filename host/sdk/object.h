#pragma once
// Scene objects: what a node shows.

#include "sdk/box3.h"
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
    virtual bool CanConvertToType(Class_ID) { return false; }
    /// The object as another class. The result is the object itself or a new one, which the caller deletes.
    virtual Object* ConvertToType(TimeValue t, Class_ID) { return nullptr; }
    /// True when the renderer should ask for a mesh.
    virtual bool IsRenderable() { return false; }
};

class GeomObject : public Object {
public:
    SClass_ID SuperClassID() override { return GEOMOBJECT_CLASS_ID; }
    bool IsRenderable() override { return true; }
    /// The mesh to render; `needDelete` tells whether the caller deletes it. Null when there is none.
    virtual Mesh* GetRenderMesh(TimeValue t, INode* node, bool& needDelete) { return nullptr; }
};

/// A triangle mesh in the pipeline.
class TriObject : public GeomObject {
public:
    Mesh mesh;
    Class_ID ClassID() override { return TRIOBJ_CLASS_ID; }
    RefTargetHandle Clone(RemapDir&) override {
        auto* copy = new TriObject;
        copy->mesh = mesh;
        return copy;
    }
    bool CanConvertToType(Class_ID id) override { return id == TRIOBJ_CLASS_ID; }
    Object* ConvertToType(TimeValue t, Class_ID id) override { return id == TRIOBJ_CLASS_ID ? this : nullptr; }
    Mesh* GetRenderMesh(TimeValue t, INode* node, bool& needDelete) override {
        needDelete = false;
        return &mesh;
    }
};

/// A spline shape.
class ShapeObject : public GeomObject {
public:
    BezierShape shape;
    SClass_ID SuperClassID() override { return SHAPE_CLASS_ID; }
    bool IsRenderable() override { return false; }
    RefTargetHandle Clone(RemapDir&) override {
        auto* copy = new ShapeObject;
        copy->shape = shape;
        return copy;
    }
};

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

/// A modifier on a node's stack.
class Modifier : public BaseObject {
public:
    SClass_ID SuperClassID() override { return OSM_CLASS_ID; }
    virtual Interval LocalValidity(TimeValue t) { return FOREVER; }
    /// Changes `os->obj`, a copy made for this evaluation when its class can be cloned, and narrows `os->valid`. A
    /// modifier that puts another object there hands over a new one.
    virtual void ModifyObject(TimeValue t, ObjectState* os, INode* node) {}
    bool enabled = true;
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
