#pragma once
// Rotations by angles.

#include "sdk/matrix3.h"

namespace host {

/// Rotation about X, then Y, then Z, in degrees, counter-clockwise as seen against the axis.
Matrix3 EulerMatrix(const Point3& degrees);

} // namespace host
