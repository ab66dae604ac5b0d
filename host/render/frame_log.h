#pragma once
// What the host's log says about a frame.

#include <string>

#include "core/core.h"
#include "render/frame.h"

namespace host {

/// One line: frame number, scene time, size, camera samples, strands when an effect counts them, and seconds that it
/// took: "frame 12 at 0.500 s: 1280 x 720, 1107000 samples, 639567 strands, 15.27 s".
std::string FrameLogLine(Core& core, const FrameSettings& settings, const FrameStats& stats);

} // namespace host
