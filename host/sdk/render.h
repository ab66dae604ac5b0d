#pragma once
// What a renderer tells plug-ins about the picture it makes.

#include <vector>

#include "sdk/color.h"
#include "sdk/matrix3.h"
#include "sdk/object.h"
#include "sdk/point2.h"
#include "sdk/shadecontext.h"

class Bitmap;
class Renderer;
class Texmap;
class Atmospheric;

enum { PROJ_PERSPECTIVE = 0, PROJ_PARALLEL = 1 };

/// A view: projection and clip range.
class ViewParams {
public:
    virtual ~ViewParams() = default;
    Matrix3 affineTM; ///< world to camera
    int projType = PROJ_PERSPECTIVE;
    float hither = 0, yon = 0;
    float distance = 0;
    float zoom = 1;        ///< parallel views
    float fov = 0.785398f; ///< perspective views, horizontal, radians
    float nearRange = 0, farRange = 1000;
};

/// Settings of a render.
struct RendParams {
    int width = 0, height = 0;
    float devAspect = 1;
    bool fieldRender = false;
    int fieldOrder = 0;   ///< 0 even lines first, 1 odd
    int currentField = 0; ///< 1 while the first field is made, 0 for the second
    bool videoColorCheck = false;
    int maxThreads = 0;        ///< 0 = as many as there are processors
    uint32_t gbufChannels = 0; ///< channels the render asks for
};

/// A light prepared for a frame of a render.
class ObjLightDesc : public LightDesc {
public:
    LightState ls;
    INode* inode = nullptr;
    Matrix3 lightToWorld, worldToLight, lightToCam, camToLight;
    class ShadowGenerator* shadGen = nullptr;
    std::vector<INode*> exclude;
    bool include = false; ///< the list names the nodes that get light
    virtual int Update(TimeValue t, RenderGlobalContext* rgc) = 0;
    /// Camera matrices for this view.
    virtual void UpdateViewDepParams(const Matrix3& worldToCam) = 0;
    /// True when the light reaches `node` by its include / exclude list.
    bool Illuminates(INode* node) const {
        bool listed = false;
        for (INode* n : exclude) listed |= n == node;
        return listed == include;
    }
};

/// A node prepared for a render.
class RenderInstance {
public:
    virtual ~RenderInstance() = default;
    INode* node = nullptr;
    int nodeID = 0;
    Mesh* mesh = nullptr;
    Mtl* mtl = nullptr;
    Matrix3 objToWorld, objToCam;
    std::vector<LightDesc*> lights; ///< the lights whose lists accept the node
};

/// One extra picture that a render makes.
class IRenderElement;

/// The extra pictures of a render.
class IRenderElementMgr {
public:
    virtual ~IRenderElementMgr() = default;
    virtual int NumRenderElements() = 0;
    virtual IRenderElement* GetRenderElement(int i) = 0;
};

/// The picture being rendered.
class RenderGlobalContext {
public:
    virtual ~RenderGlobalContext() = default;
    Renderer* renderer = nullptr;
    int projType = PROJ_PERSPECTIVE;
    int devWidth = 0, devHeight = 0;
    float xscale = 1, yscale = 1; ///< camera to screen, in the sense of MapToScreen
    float xc = 0, yc = 0;         ///< screen position of the optical axis
    float devAspect = 1;
    float nearRange = 0, farRange = 1000;
    Matrix3 camToWorld, worldToCam;
    bool antialias = true;
    Texmap* envMap = nullptr;
    Color globalLightLevel{1, 1, 1};
    Atmospheric* atmos = nullptr;
    TimeValue time = 0;
    bool wireMode = false;
    float wireThick = 0;
    bool inMtlEdit = false;
    bool fieldRender = false, first_field = true, field_order = false;

    virtual int NumRenderInstances() { return 0; }
    virtual RenderInstance* GetRenderInstance(int i) { return nullptr; }
    virtual int NumLights() { return 0; }
    virtual ObjLightDesc* GetLight(int i) { return nullptr; }
    virtual IRenderElementMgr* GetRenderElementMgr() { return nullptr; }
    /// Optional extensions by number; null or 0 when unknown.
    virtual void* Execute(int cmd, void* arg1 = nullptr, void* arg2 = nullptr, void* arg3 = nullptr) { return nullptr; }
    /// Camera space to screen. The camera looks down -Z.
    Point2 MapToScreen(const Point3& p) const {
        if (projType == PROJ_PARALLEL) return {xc + xscale * p.x, yc + yscale * p.y};
        return {xc + xscale * p.x / p.z, yc + yscale * p.y / p.z};
    }
};

/// Progress and cancelling of a render, as plug-ins see it.
class RendProgressCallback {
public:
    virtual ~RendProgressCallback() = default;
    virtual void SetTitle(const char* title) = 0;
    /// Done / total; returns 0 when the user wants to stop.
    virtual int Progress(int done, int total) = 0;
    /// True once the user wants to stop.
    virtual bool Cancelled() { return false; }
};

/// A renderer class, known to plug-ins by its class id only.
class Renderer : public ReferenceTarget {
public:
    SClass_ID SuperClassID() override { return RENDERER_CLASS_ID; }
};
