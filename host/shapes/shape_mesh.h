#pragma once
// Meshes from shapes.

#include "sdk/mesh.h"
#include "sdk/spline.h"

namespace host {

/// Straight pieces that stand for one curved piece.
inline constexpr int kShapeSteps = 6;

/// The corners of a spline: its knots, and `steps` - 1 points between two knots where the piece is curved. A closed
/// spline's first corner is not repeated.
std::vector<Point3> SplineCorners(const Spline3D& spline, int steps = kShapeSteps);

/// The areas inside the splines of a shape, each spline filled on its own (holes are not cut). False when there is no
/// spline, or one that is open, has less than three corners, is not flat (to a ten-thousandth of its size), has no area
/// or crosses itself. Faces run round like the spline and share smoothing group 1.
bool CapShape(const BezierShape& shape, Mesh& mesh);

} // namespace host
