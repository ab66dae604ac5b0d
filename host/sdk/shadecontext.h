#pragma once
// The question that materials, maps and lights are asked: a point to shade.

#include <cstdint>

#include "sdk/basetypes.h"
#include "sdk/box3.h"
#include "sdk/color.h"
#include "sdk/matrix3.h"
#include "sdk/point2.h"
#include "sdk/ray.h"

class INode;
class Object;
class Texmap;
class Mtl;
class RenderGlobalContext;
class ShadeContext;
class LightDesc;
class IRenderElement;

inline constexpr int MAX_RENDER_ELEMENTS = 32;

/// Flag of a ShadeOutput: there is no surface here, e.g. on the back of a one-sided one.
inline constexpr uint32_t SHADEOUT_NOTHING = 1;

/// A material's answer.
class ShadeOutput {
public:
    uint32_t flags = 0;
    Color c; ///< colour, premultiplied by what is not transparent
    Color t; ///< transparency per channel
    float ior = 1.0f;
    int gbufId = 0;
    int nElements = 0;
    Color elements[MAX_RENDER_ELEMENTS]; ///< render-element slots in use: nElements
    void Reset() {
        flags = 0, c = Color(), t = Color(), ior = 1.0f, gbufId = 0;
        for (int i = 0; i < nElements; ++i) elements[i] = Color();
        nElements = 0;
    }
};

/// Per-light render data.
class RenderData {
public:
    virtual ~RenderData() = default;
};

/// A light prepared for shading.
class LightDesc : public RenderData {
public:
    bool affectDiffuse = true;
    bool affectSpecular = true;
    bool ambientOnly = false;
    /// Light arriving at the context's point: colour (shadows, attenuation and cone included), unit direction to the
    /// light in camera space, cosine against `normal`, and the diffuse coefficient. False when the point gets none.
    virtual bool Illuminate(ShadeContext& sc, const Point3& normal, Color& color, Point3& dir, float& dot_nl,
                            float& diffuseCoef) {
        return false;
    }
    /// Where the light stands, camera space; the origin for a light without a place.
    virtual Point3 LightPosition() { return {0, 0, 0}; }
    /// Simple form: colour, direction and cosine only.
    virtual bool Illuminate(ShadeContext& sc, const Point3& normal, Color& color, Point3& dir, float& dot_nl) {
        float diffuseCoef = 1;
        return Illuminate(sc, normal, color, dir, dot_nl, diffuseCoef);
    }
};

enum RefFrame { REF_CAMERA, REF_WORLD, REF_OBJECT };
enum ShadeMode { SCMODE_NORMAL = 0, SCMODE_SHADOW = 1 };

/// A point to shade. Positions and directions are in camera space unless an operation says otherwise.
class ShadeContext {
public:
    uint32_t mode = SCMODE_NORMAL;
    int doMaps = 1;
    int filterMaps = 0;
    int shadow = 0; ///< whether lights look for shadows
    int backFace = 0;
    int mtlNum = 0; ///< material index of the face, zero-based
    Color ambientLight;
    int nLights = 0;
    int rayLevel = 0;
    int xshadeID = 0;
    LightDesc* atmosSkipLight = nullptr;
    RenderGlobalContext* globContext = nullptr;
    ShadeOutput out;

    virtual ~ShadeContext() = default;
    /// Whose question this is, for shaders that answer some of them differently.
    virtual Class_ID ClassID() { return Class_ID(0, 0); }
    virtual LightDesc* Light(int n) { return nullptr; }
    virtual TimeValue CurTime() = 0;
    virtual int NodeID() { return -1; }
    virtual INode* Node() { return nullptr; }
    virtual Object* GetEvalObject() { return nullptr; }
    virtual Point3 BarycentricCoords() { return {0, 0, 0}; }
    virtual int FaceNumber() { return 0; }
    virtual int ProjType() { return 0; } ///< 0 perspective, 1 parallel
    virtual Point3 Normal() { return {0, 0, 1}; }
    virtual void SetNormal(const Point3&) {}
    virtual Point3 OrigNormal() { return Normal(); }
    virtual Point3 GNormal() { return Normal(); }
    virtual float Curve() { return 0; }
    virtual Point3 V() = 0; ///< unit view vector, from the camera to the point
    virtual void SetView(const Point3&) {}
    virtual Point3 OrigView() { return V(); }
    virtual Point3 ReflectVector() { return V() - 2.0f * DotProd(V(), Normal()) * Normal(); }
    virtual Point3 RefractVector(float ior) { return V(); }
    virtual Point3 CamPos() { return {0, 0, 0}; }
    virtual Point3 P() = 0;
    virtual Point3 DP() { return {0, 0, 0}; }
    virtual Point3 PObj() = 0;
    virtual Point3 DPObj() { return {0, 0, 0}; }
    virtual Box3 ObjectBox() { return Box3(); }
    virtual Point3 PObjRelBox() { return {0, 0, 0}; }
    virtual void ScreenUV(Point2& uv, Point2& duv) { uv = duv = Point2(); }
    virtual IPoint2 ScreenCoord() { return {}; }
    virtual Point3 UVW(int channel = 1) { return {0, 0, 0}; }
    virtual Point3 DUVW(int channel = 1) { return {0, 0, 0}; }
    virtual void DPdUVW(Point3 dP[3], int channel = 1) { dP[0] = dP[1] = dP[2] = Point3(); }
    virtual Point3 UVWNormal(int channel = 0) { return {0, 0, 1}; }
    virtual Point3 PointTo(const Point3& p, RefFrame frame) { return p; }
    virtual Point3 PointFrom(const Point3& p, RefFrame frame) { return p; }
    virtual Point3 VectorTo(const Point3& v, RefFrame frame) { return v; }
    virtual Point3 VectorFrom(const Point3& v, RefFrame frame) { return v; }
    virtual Color EvalEnvironMap(Texmap* map, const Point3& view) { return Color(); }
    virtual void GetBGColor(Color& bg, Color& transparency, bool withFog = true) { bg = transparency = Color(); }
    virtual int NRenderElements() { return 0; }
    virtual IRenderElement* GetRenderElement(int n) { return nullptr; }
};
