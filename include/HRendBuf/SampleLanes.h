#pragma once

#include <cstring>

#include "HRendBuf/FragmentList.h"

/// A sample of the image pass in memory that is written and copied as a whole: the members of ImagePoint in their
/// order, and two more that are not used.
struct alignas(32) SampleLane {
    float values[8];
    ImagePoint Point() const { return {values[0], values[1], values[2], {values[3], values[4], values[5]}}; }
};
static_assert(sizeof(ImagePoint) == 6 * sizeof(float));
