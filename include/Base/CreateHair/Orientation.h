#pragma once
// Orientation of a strand's cross section.

#include "Base/CreateHair/StrandContext.h"

/// Direction at `degrees` around `n`, starting from (-n.y, n.x, 0) (from X when n has almost no x and y).
Point3 RotateAbout(const Point3& n, float degrees);

/// Draws the strand's orientation angle. One draw.
void DrawOrientationAngle(StrandContext& c);

/// Sets c.orientation in the output space.
void OrientStrand(StrandContext& c);

/// Orientation for a strand without neighbours: axis 3 takes its own bend direction.
Point3 OrientControlStrand(const GenerationRun& run, int vertex, float degrees);
