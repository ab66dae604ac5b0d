#pragma once
// The host's own modifiers.

#include <vector>

#include "core/block_class.h"
#include "core/block_holder.h"
#include "sdk/modifier.h"

namespace host {

inline constexpr Class_ID SMOOTH_CLASS_ID{0x3001, 0}, NORMAL_FLIP_CLASS_ID{0x3002, 0}, XFORM_CLASS_ID{0x3003, 0},
    BEND_CLASS_ID{0x3004, 0}, NOISE_CLASS_ID{0x3005, 0}, SKIN_CLASS_ID{0x3006, 0}, MORPH_CLASS_ID{0x3007, 0},
    MESH_CACHE_CLASS_ID{0x3008, 0};

/// Descriptors of all of them.
const std::vector<ClassDesc*>& ModifierClasses();

} // namespace host
