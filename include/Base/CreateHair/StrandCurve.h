#pragma once
// Length, control points and subdivision of a strand.

#include "Base/CreateHair/StrandContext.h"

/// Segments and fraction of the last one, from the length parameters. False when the strand has no length. With a
/// direction random the strand will be cut again while its control points are built. No draw.
bool FindLength(StrandContext& c);

/// Interpolates the Bezier control points, fading from the root's weights to the final ones, and, with a direction
/// random, cuts the strand where it reaches the length that its unperturbed shape would have had.
void BuildControlPoints(StrandContext& c);

/// Subdivides every segment into points and tangents.
void SubdivideStrand(StrandContext& c);
