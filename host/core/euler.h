#pragma once
// Rotations by angles.

#include "sdk/matrix3.h"

namespace host {

/// Rotation about X, then Y, then Z, in degrees, counter-clockwise as seen against the axis.
Matrix3 EulerMatrix(const Point3& degrees);
/// Its inverse, of a rotation's matrix. About Y -90..90; where X and Z turn about the same axis, X is 0.
Point3 EulerDegrees(const Matrix3& rotation);

} // namespace host
