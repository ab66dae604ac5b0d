#pragma once
// Shade contexts that the plug-in fills itself: a point on a strand, and the background behind a pixel.

#include "Base/HUtil/ThreadVector.h"
#include "sdk/box3.h"
#include "sdk/matrix3.h"
#include "sdk/mtl.h"
#include "sdk/render.h"
#include "sdk/shadecontext.h"

/// Stand-by light of a context without a light list: white, along the given vector, cosine 1.
class LDTmp : public LightDesc {
public:
    bool Illuminate(ShadeContext& sc, const Point3& normal, Color& color, Point3& dir, float& dot_nl,
                    float& diffuseCoef) override;
    bool Illuminate(ShadeContext& sc, const Point3& normal, Color& color, Point3& dir, float& dot_nl) override;
};

/// Position around a strand's cross section, worked out only when a map asks for it.
class IAroundStrand {
public:
    virtual ~IAroundStrand() = default;
    /// 0..1 around the strand at the point being shaded.
    virtual float Around() = 0;
};

/// A point on a strand (or on an emitter) as materials, maps and lights see it.
/// Each thread owns its context; setting one up allocates nothing.
class alignas(kThreadAlignment) HairShadeContext final : public ShadeContext {
public:
    HairShadeContext();

    /// The six transforms; with either of the first two missing all become absent. The others are computed when null.
    void SetTransforms(const Matrix3* objToWorld, const Matrix3* worldToCam, const Matrix3* objToCam = nullptr,
                       const Matrix3* camToWorld = nullptr, const Matrix3* worldToObj = nullptr,
                       const Matrix3* camToObj = nullptr);
    /// The point: `p` and `normal` in camera space, `pObj` in object space, `uvw` one coordinate a channel from channel
    /// `firstChannel` on (not copied).
    void SetPoint(const Point3& p, const Point3& pObj, const Point3& normal, const Point3& bary, const Point3* uvw,
                  int firstChannel, int channelCount, const Point2& screen, int mtlNum, int faceNumber, bool backFace);
    /// Channels flagged in `mask` (one flag a channel of SetPoint) take their u from `around`; null: none does.
    void SetAround(IAroundStrand* around, const char* mask) { around_ = around, aroundMask_ = mask; }
    void SetLights(int count, LightDesc* const* lights);
    void SetNode(INode* node, TimeValue t) { node_ = node, curTime_ = t; }
    void SetCurve(float curve) { curve_ = curve; }
    void SetHalfImageSize(float halfWidth, float halfHeight) { halfWidth_ = halfWidth, halfHeight_ = halfHeight; }
    void SetObjectBox(const Box3& box) { objectBox_ = box; }
    void SetEvalObject(Object* o) { evalObject_ = o; }
    void SetCamPos(const Point3& p) { camPos_ = p; }
    void SetDuvw(const Point3* duvw) { duvw_ = duvw; }
    void SetUvwNormals(const Point3* normals) { uvwNormal_ = normals; }

    LightDesc* Light(int n) override;
    TimeValue CurTime() override { return curTime_; }
    int NodeID() override;
    INode* Node() override { return node_; }
    Object* GetEvalObject() override { return evalObject_; }
    Point3 BarycentricCoords() override { return bary_; }
    int FaceNumber() override { return faceNumber_; }
    int ProjType() override;
    Point3 Normal() override { return backFace ? -normal_ : normal_; }
    void SetNormal(const Point3& n) override { normal_ = n; }
    Point3 OrigNormal() override { return backFace ? -origNormal_ : origNormal_; }
    Point3 GNormal() override { return backFace ? -gNormal_ : gNormal_; }
    float Curve() override { return curve_; }
    Point3 V() override { return v_; }
    void SetView(const Point3& v) override { v_ = v; }
    Point3 OrigView() override { return v_; }
    Point3 ReflectVector() override;
    Point3 RefractVector(float ior) override;
    Point3 CamPos() override { return camPos_; }
    Point3 P() override { return p_; }
    Point3 DP() override { return dp_; }
    Point3 PObj() override { return pObj_; }
    Point3 DPObj() override { return dp_; }
    Box3 ObjectBox() override { return objectBox_; }
    Point3 PObjRelBox() override;
    void ScreenUV(Point2& uv, Point2& duv) override;
    IPoint2 ScreenCoord() override { return pixel_; }
    Point3 UVW(int channel = 1) override;
    Point3 DUVW(int channel = 1) override;
    void DPdUVW(Point3 dP[3], int channel = 1) override {} ///< intended: leaves the vectors as they are
    Point3 UVWNormal(int channel = 0) override;
    Point3 PointTo(const Point3& p, RefFrame frame) override;
    Point3 PointFrom(const Point3& p, RefFrame frame) override;
    Point3 VectorTo(const Point3& v, RefFrame frame) override;
    Point3 VectorFrom(const Point3& v, RefFrame frame) override;
    Color EvalEnvironMap(Texmap* map, const Point3& view) override;
    int NRenderElements() override;
    IRenderElement* GetRenderElement(int n) override;

private:
    TimeValue curTime_ = 0;
    Point3 p_, pObj_, v_, camPos_, dp_, bary_;
    const Point3* uvw_ = nullptr;
    int firstChannel_ = 0, channelCount_ = 0;
    IAroundStrand* around_ = nullptr;
    const char* aroundMask_ = nullptr;
    const Point3* duvw_ = nullptr;
    Point2 screen_;
    IPoint2 pixel_;
    float curve_ = 0, halfWidth_ = 0, halfHeight_ = 0;
    INode* node_ = nullptr;
    Point3 normal_, origNormal_, gNormal_;
    const Point3* uvwNormal_ = nullptr;
    int faceNumber_ = 0;
    LDTmp defaultLight_;
    LightDesc* const* lights_ = nullptr;
    bool hasLights_ = false;
    Box3 objectBox_;
    Matrix3 stored_[4]; ///< objToCam, camToWorld, worldToObj, camToObj when computed here
    const Matrix3 *objToWorld_ = nullptr, *worldToCam_ = nullptr, *objToCam_ = nullptr, *camToWorld_ = nullptr,
                  *worldToObj_ = nullptr, *camToObj_ = nullptr;
    Object* evalObject_ = nullptr;
};

/// Context for looking up the background behind a pixel.
class BGContext : public ShadeContext {
public:
    /// `view` is the unit view direction in camera space.
    BGContext(RenderGlobalContext* context, TimeValue t, const Point3& view);
    TimeValue CurTime() override { return time_; }
    Point3 V() override { return view_; }
    Point3 P() override { return view_; }
    Point3 PObj() override { return view_; }
    void GetBGColor(Color& bg, Color& transparency, bool withFog = true) override;
    Color EvalEnvironMap(Texmap* map, const Point3& view) override;

private:
    TimeValue time_;
    Point3 view_;
};
