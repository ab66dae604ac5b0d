#pragma once
// The snapshot of a hair or fur object's values that one generation run reads.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "Base/ParamIds.h"
#include "Base/SurfDist/SurfDistSettings.h"
#include "CurveCtl/CurveShape.h"
#include "sdk/basetypes.h"
#include "sdk/color.h"

/// Which faces of an emitter grow hair.
struct FaceSelection {
    int type = 0;         ///< 0 whole object, 1 current face selection, 2 material id, 3 named set, 4 material id list
    int mtlId = 1;        ///< one-based, type 2
    std::string mtlIds;   ///< comma-separated ids and ranges, type 4
    std::string namedSet; ///< type 3
};

/// Kinds of entry in the strand mapping table; a positive entry is an emitter mapping channel.
enum StrandMapping {
    STRANDMAP_NONE = 0,
    STRANDMAP_CYLINDRICAL = -1,
    STRANDMAP_STRAND_COLOR = -2,
    STRANDMAP_EMITTER_COLOR = -3
};

/// Every value of one object at one time, addressed by parameter identifier. Plain data: filled by the object before a
/// run, only read while strands are made.
class HairParams {
public:
    bool isFur = true;
    TimeValue time = 0;
    int ticksPerFrame = 160;
    Color colBase{0.392f, 0.2745f, 0.243f}, colTip{0.651f, 0.5647f, 0.486f};
    FaceSelection faceSelection;
    /// One entry an output mapping channel (StrandMapping), channel 0 first.
    std::vector<int> mappingChannels;

    float Float(int pid) const { return scalars_[size_t(pid)].f; }
    int Int(int pid) const { return scalars_[size_t(pid)].i; }
    bool On(int pid) const { return scalars_[size_t(pid)].i != 0; }
    void SetFloat(int pid, float v) { scalars_[size_t(pid)].f = v; }
    void SetInt(int pid, int v) { scalars_[size_t(pid)].i = v; }

    /// An along-length curve (250..256), or null when it is switched off or has no knots.
    const CurveShape* Curve(int pid) const { return Active(curves_[size_t(pid - kFirstCurvePid)]); }
    /// The curve of a random distribution (400..404), or null when it is switched off or has no knots.
    const CurveShape* RandCurve(int pid) const { return Active(randDists_[size_t(pid - kFirstRandDistPid)]); }
    /// A surface distribution (300..316), or null when it is switched off.
    const SurfDistSettings* Surface(int pid) const {
        const SurfDistSettings& s = surfDists_[size_t(pid - kFirstSurfDistPid)];
        return s.enabled ? &s : nullptr;
    }
    /// Stores a curve or random distribution; an empty curve switches it off.
    void SetCurve(int pid, const CurveShape& c) { curves_[size_t(pid - kFirstCurvePid)] = c; }
    void SetRandCurve(int pid, const CurveShape& c) { randDists_[size_t(pid - kFirstRandDistPid)] = c; }
    void SetSurface(int pid, const SurfDistSettings& s) { surfDists_[size_t(pid - kFirstSurfDistPid)] = s; }

    /// The values a new fur (or hair) object has, with its default curves.
    static HairParams Defaults(bool fur);

private:
    union Scalar {
        int i = 0;
        float f;
    };
    static const CurveShape* Active(const CurveShape& c) { return c.knots.empty() ? nullptr : &c; }

    std::array<Scalar, kNumScalarPids> scalars_{};
    std::array<CurveShape, kNumCurves> curves_;
    std::array<CurveShape, kNumRandDists> randDists_;
    std::array<SurfDistSettings, kNumSurfDists> surfDists_;
};
