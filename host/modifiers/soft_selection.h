#pragma once
// Soft selection: weights that fade away from what is selected.

#include <vector>

#include "sdk/bitarray.h"
#include "sdk/mesh.h"

namespace host {

struct SoftSelection {
    float falloff = 20; ///< distance at which the weight is 0
    float pinch = 0;    ///< raises the weights far from the selection, lowers them below 0
    float bubble = 0;   ///< raises the weights near the selection, lowers them below 0
    bool operator==(const SoftSelection&) const = default;
};

/// Weight at a distance from the selection: 1 at 0 and 0 from `falloff` on, between them the cubic Bezier curve over
/// the values 0, pinch, 1 + bubble, 1, kept within 0..1. Without pinch and bubble that is 3u^2 - 2u^3 with
/// u = 1 - distance / falloff.
float SoftWeight(float distance, const SoftSelection& soft);

/// The weight of every vertex by its distance from the nearest selected one; all 0 when nothing is selected.
std::vector<float> SoftWeights(const Mesh& mesh, const BitArray& selected, const SoftSelection& soft);

} // namespace host
