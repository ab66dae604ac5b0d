#pragma once
// What changes over time in a scene, as text.

#include <string>
#include <vector>

#include "scene/loader.h"
#include "sdk/control.h"

namespace host {

/// A controller with keys and where it is.
struct KeyedTrack {
    std::string place; ///< e.g. "horse, Transform, Position"
    Control* control;
};

/// Every controller with keys: of the nodes with all they hold, then of the scene's other objects, each once.
std::vector<KeyedTrack> ListKeyedTracks(Core& core, const LoadedScene& scene);

/// A block of lines: place, class, range and ends, then a line a key with frame, value and tangents. Rotations are in
/// degrees as a node's rotation, tangents of own shape as the change a frame.
std::string KeyTableText(const KeyedTrack& track, int ticksPerFrame);

} // namespace host
