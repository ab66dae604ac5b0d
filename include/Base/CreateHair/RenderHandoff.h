#pragma once
// Hands finished strands to the rasteriser: widths on screen, shading, segments.

#include <atomic>
#include <vector>

#include "Base/CreateHair/StrandContext.h"
#include "Base/CreateHair/StrandShading.h"
#include "HRB_Thick/HRB_Thick.h"

struct HRendSettings;

/// Colours and opacities of the control strands at their knots, for runs that do not shade middle strands: these take
/// the blend of their corner strands.
struct KnotColors {
    int knots = 0;
    std::vector<Color> color; ///< vertex * knots + knot
    std::vector<float> opacity;
};

/// One thread's hand-off. The consumer of strands in render runs.
class alignas(kThreadAlignment) RenderHandoff {
public:
    /// `shading` null: strands take their colours from `knotColors`.
    RenderHandoff(const GenerationRun& run, const HRendSettings& settings, HRB_Thick& raster, StrandShading* shading,
                  const KnotColors* knotColors, const std::atomic<bool>* abort);

    bool Aborted() const { return abort_ && abort_->load(std::memory_order_relaxed); }
    void OnStrand(StrandContext& c);
    int64_t VerticesDrawn() const { return verticesDrawn_; }
    int64_t StrandsDrawn() const { return strandsDrawn_; }

private:
    bool MeasureWidths(const StrandContext& c);
    void ChooseSegments(const StrandContext& c);
    bool FarEnough(const StrandContext& c, int segment) const;
    void Shade(StrandContext& c);
    void ShadePoint(const StrandContext& c, int i, int stride);
    void BlendPoints(int first, int steps);
    void BlendKnotColors(const StrandContext& c);
    void Draw(const StrandContext& c);
    void DrawThin(const StrandContext& c);
    void DrawThick(const StrandContext& c);
    Point2 Screen(float x, float y, float z) const;
    int StepsOf(const StrandContext& c, int segment) const {
        return segment == c.segments - 1 ? c.lastSteps : run_.steps;
    }

    const GenerationRun& run_;
    const HRendSettings& settings_;
    HRB_Thick& raster_;
    StrandShading* shading_;
    const KnotColors* knotColors_;
    const std::atomic<bool>* abort_;
    const HairImageInfo& image_;
    int samples_;
    bool filterWidth_;
    PaddedFloats screenWidth_;
    float largestWidth_ = 0;
    ThreadVector<char> handed_; ///< by segment
    ThreadVector<char> shaded_; ///< by point
    ThreadVector<Color> color_; ///< by point and width sample
    ThreadVector<float> opacity_;
    StrandVertex vertex_;
    int64_t verticesDrawn_ = 0, strandsDrawn_ = 0;
};
