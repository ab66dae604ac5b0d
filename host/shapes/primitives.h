#pragma once
// Simple shapes.

#include "sdk/mesh.h"

namespace host {

// All with mapping channel 1 over 0..1, outward normals, corners counter-clockwise.

/// In the XY plane, `segments` x `segments` squares, facing +Z.
Mesh MakePlane(float sizeX, float sizeY, int segments);
/// `segments` x `segments` squares a side; every side has a smoothing group of its own (1..6) and the material id of
/// its number: -X, +X, -Y, +Y, -Z, +Z.
Mesh MakeBox(const Point3& size, int segments);
/// `segments` around (at least 3), half as many from pole to pole (at least 2); smooth. u goes around Z from +X towards
/// +Y, v from the lower pole up.
Mesh MakeSphere(float radius, int segments);

} // namespace host
