#pragma once
// Rendering one frame of a scene into a picture.

#include <cstdint>
#include <string>

#include "core/core.h"
#include "core/error.h"
#include "image/picture.h"
#include "render/pixel_filter.h"
#include "sdk/progress.h"

namespace host {

/// A rectangle of pixels; x1 and y1 lie outside. Empty when x1 <= x0 or y1 <= y0.
struct PictureRegion {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    bool Empty() const { return x1 <= x0 || y1 <= y0; }
};

/// Which lines of a picture are a field of their own; the second field is half a frame later than the first.
enum class FieldMode { kNone, kEvenFirst, kOddFirst };

/// What a render is told. Background, environment map, ambient light and atmospheric effects are the scene's (Core).
struct FrameSettings {
    TimeValue time = 0;
    int width = 640, height = 480; ///< 1..kMaxPictureSide each
    float pixelAspect = 1;         ///< a pixel's width by its height, above 0
    std::string camera;            ///< a camera node's name; empty: the viewport's camera, else the scene's only one
    int threads = 0;               ///< 0: as many as there are processors; at most 256
    int samples = 3;               ///< pixels at edges take samples x samples camera samples, 1..16; others take one
    FilterKind filter = FilterKind::kBox; ///< how samples are weighed
    float filterWidth = 1;                ///< in pixels, 1..kMaxFilterWidth
    PictureRegion crop; ///< what is rendered, the rest stays empty; an empty region: the whole picture
    FieldMode fields = FieldMode::kNone;
};

/// The pixels that a render makes.
PictureRegion RegionOf(const FrameSettings& settings);

/// What a render cost.
struct FrameStats {
    double wallSeconds = 0;
    double cpuSeconds = 0;           ///< of all threads of the process meanwhile
    uint64_t cameraSamples = 0;      ///< that ended in the picture
    uint64_t atmosphereSegments = 0; ///< segments that atmospheric effects were asked about
    uint64_t peakRssBytes = 0;       ///< of the process so far
    double effectSeconds = 0;        ///< of wallSeconds, in render effects and image filters
    int threads = 0;
};

enum class FrameResult {
    kDone,
    kAborted ///< Core::CheckForRenderAbort said so; the picture is incomplete and must not be written
};

/// Adds the host's renderer, materials, maps, render effects and image filters to the core's classes, and lets lights
/// make their descriptors. Once a core, before scenes are loaded; again changes nothing.
void RegisterRenderClasses(Core& core);

/// Throws Error when the settings are out of range or the camera cannot be found (names the nearest ones).
void CheckFrameSettings(Core& core, const FrameSettings& settings);

/// Renders the scene at `settings.time` into `out` (reset to the size; colour, background, Z, and the channels that the
/// core's render parameters ask for), then lets the core's render effects and image filters work on it. The picture is
/// the same bit for bit for any thread count. The core's abort flag is polled, never cleared. `progress` may be null;
/// its object is "Rendering", or what an effect is busy with, and its steps are the lines done; afterwards the render
/// effect or image filter at work with its own steps. A frame that is done gets one line in the core's log. Throws
/// Error on bad settings; effects' RenderEnd is called in every case.
FrameResult RenderFrame(Core& core, const FrameSettings& settings, IProgressIndicator* progress, Picture& out,
                        FrameStats& stats);

} // namespace host
