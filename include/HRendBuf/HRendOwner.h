#pragma once
// What the render buffer asks of those above it: the renderer's settings, and the hair to draw.

#include <chrono>
#include <cstdint>
#include <vector>

#include "HRendBuf/LineFilter.h"
#include "sdk/render.h"

class HRendBuf;

/// Milliseconds of a steady clock, wrapping at 32 bits.
inline uint32_t SteadyTick() {
    using namespace std::chrono;
    return uint32_t(duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

/// The renderer's effective parameters, as far as a buffer needs them.
struct HRendSettings {
    float quality = 5.0f;               ///< Quality_Memory, 0..10
    int bucketType = 1;                 ///< 0 none, 1 stripe, 2 square
    int bucketSize = 256;               ///< 10..10000 pixels
    int threadCount = 1;                ///< 1..16
    const LineFilter* filter = nullptr; ///< null: the rasterisers' own box filters
    float filterSize = 1.5f;            ///< of those box filters
    float thickLimit = 0.05f;           ///< widest strand, in pixels, that takes the thin method
    bool useThick = true;               ///< off: every strand takes the thin method
    bool shadeMiddle = true;            ///< objects may shade their middle strands
    bool hairShadows = true;            ///< hair casts shadows on anything at all
    uint32_t idleTimeout = 3000;        ///< milliseconds until an unused bucket is freed
    size_t batchBytes = 4u << 20;       ///< samples of one thread between two merges
    uint32_t (*tick)() = SteadyTick;
};

/// The interface of an atmospheric effect that has hair to draw: GetInterface(id) answers its IHairSource.
inline constexpr uint32_t HAIR_SOURCE_INTERFACE_ID = 0x27110002;

/// A hair object, or anything else that draws strands.
class IHairSource {
public:
    virtual ~IHairSource() = default;
    /// Brings the hair up to `t`. True when it is to be drawn in this pass.
    virtual bool Update(TimeValue t) = 0;
    /// Strands it will draw, for the progress.
    virtual int StrandCount() = 0;
    /// Its own depth precision 0..10; at most 0.001 takes the pass's.
    virtual float MinHairDist() = 0;
    /// Draws its strands through the buffer's ordered path; answers how many.
    virtual int Render(HRendBuf& buffer) = 0;
};

/// The owner of render buffers: the hair renderer.
class IHRendOwner {
public:
    virtual ~IHRendOwner() = default;
    virtual HRendSettings& Settings() = 0;
    /// The hair of the scene that is not switched off, in scene order.
    virtual std::vector<IHairSource*> HairSources() = 0;
    /// The host's settings of the render.
    virtual RendParams RenderParams() = 0;
    /// True when the render is to stop.
    virtual bool Aborted() = 0;
    /// True when the program's memory exceeds a quarter of the machine's, so that nothing may be copied for comfort.
    virtual bool MemoryIsTight() = 0;
    /// An internal check failed.
    virtual void Assert(const char* what) = 0;
};
