#pragma once
// Draws the hair of one emitter into a render buffer.

#include <atomic>
#include <cstdint>

#include "Base/CreateHair/GenerationRun.h"
#include "Base/CreateHair/StrandShading.h"

class HRendBuf;

/// What a render run did.
struct RenderStats {
    int64_t strands = 0; ///< handed to the rasteriser
    int64_t vertices = 0;
    bool failed = false; ///< an exception ended a thread's work
};

/// Makes and draws all strands of a prepared run into the bucket that `buffer` is drawing, on the buffer's number of
/// threads. Strands enter in (face, strand) order, control strands, where they are drawn, before them in vertex order,
/// whatever the number of threads. `firstUnit` numbers the work units and is advanced, so that several emitters of one
/// source follow each other. Stops early when `abort` is set.
RenderStats RenderHair(GenerationRun& run, const ShadingSetup& shading, HRendBuf& buffer,
                       const std::atomic<bool>* abort, uint32_t& firstUnit);
