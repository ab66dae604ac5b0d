#pragma once
// Colour and opacity of strand points: the run's material asked at each of them.

#include "Base/CreateHair/PaddedPoints.h"
#include "Base/HairParams.h"
#include "Base/HairShadeContext.h"

class HairImageInfo;
class ViewParamsEx;

/// What shading needs to know of a run. Read-only while threads run.
struct ShadingSetup {
    Mtl* material = nullptr;        ///< never null in a run that shades
    std::vector<LightDesc*> lights; ///< lights that reach the hair
    bool useLights = true;          ///< false: no light list at all, which means the stand-by light
    RenderGlobalContext* context = nullptr;
    const HairImageInfo* image = nullptr;
    const ViewParamsEx* view = nullptr;
    Color ambient;
    INode* node = nullptr;
    TimeValue time = 0;
    float visibility = 1;           ///< of the hair node at the render time
    Matrix3 objectTM;               ///< the emitter's object space to world space
    bool castsShadowQueries = true; ///< lights look for shadows at strand points
};

/// What all points of one strand share.
struct StrandSurface {
    Color base, tip;
    Point3 bary;                     ///< root weights on the emitter face
    Point3 orientation;              ///< cross-section orientation, camera space
    const Point3* mapRoot = nullptr; ///< root's emitter coordinates by channel + 2; null when none are needed
    int mapRootCount = 0;
    int materialId = 0; ///< zero-based
    int face = 0;       ///< emitter face
};

/// Class id of the hair-aware shader.
inline constexpr Class_ID HAIR_SHADER_CLASS_ID{0x4eac6307, 0x1ba16fc3};

/// True when `material` (through multi-materials, by material id) is a standard material with the hair-aware shader.
bool UsesHairShader(Mtl* material, int materialId);

/// One thread's shading of strand points.
class alignas(kThreadAlignment) StrandShading : private IAroundStrand {
public:
    StrandShading(const ShadingSetup& setup, const HairParams& params);
    StrandShading(const StrandShading&) = delete;
    StrandShading& operator=(const StrandShading&) = delete;

    void SetStrand(const StrandSurface& s);
    int WidthSamples() const { return samples_; }
    /// Prepares the first `count` points of a strand, whose camera-space positions and tangents these are.
    void SetPoints(const PaddedPoints& position, const PaddedPoints& tangent, int count);
    /// Shades the width samples of point `i` of SetPoints, whose tangent is not degenerate: thickness there, and the
    /// parameter along the strand. Writes WidthSamples() colours and opacities.
    void ShadeSamples(int i, float thickness, float v, Color* colors, float* opacities);
    /// One colour at the point itself.
    void ShadeSingle(const Point3& p, const Point3& tangent, float v, Color& color, float& opacity);
    /// A tangent that is too short to shade with.
    static bool Degenerate(const Point3& tangent);

private:
    struct Frame {
        Point3 normal, side, contextNormal;
        bool backFace = false;
    };
    Point3 Eye(const Point3& p) const;
    Point3 Facing(const Point3& p, const Point3& tangent) const;
    Frame RoundFrame(const Point3& facing, const Point3& tangent) const;
    Frame FlatFrame(const Point3& p, const Point3& tangent) const;
    void FillMapping(float u, float v);
    void SetU(float u);
    float Around() override;
    void ShadeAt(const Point3& p, const Point3& normal, bool backFace, Color& color, float& opacity);

    const ShadingSetup& setup_;
    bool flat_;
    int samples_;
    float bias_;
    ThreadVector<int> channels_;     ///< strand mapping by output channel
    ThreadVector<char> cylindrical_; ///< by output channel: shows the position around the strand
    Point3 aroundNormal_, aroundTangent_;
    const PaddedPoints* position_ = nullptr; ///< of the strand's points
    const PaddedPoints* tangent_ = nullptr;
    PaddedPoints facing_; ///< of round strands: Facing of every point
    bool wantsU_ = false; ///< a channel shows the position around the strand
    StrandSurface strand_;
    bool hairShader_ = false;
    ThreadVector<signed char> shaderById_; ///< cache of UsesHairShader by material id: -1 unknown
    ThreadVector<Point3> uvw_;
    HairShadeContext context_;
    Matrix3 objectToWorld_, worldToCam_, objectToCam_, camToWorld_, worldToObject_, camToObject_;
};
