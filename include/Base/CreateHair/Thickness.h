#pragma once
// Thickness of a strand: profile along its length, base thickness, width on screen.

#include "Base/CreateHair/StrandContext.h"

/// Fills the thickness profile of an unshortened strand, (K - 1) * steps + 1 values: the thickness curve at
/// cutFactor * (i + j / steps) / (K - 1), or 1 everywhere without one. A cut strand so keeps the thickness of what is
/// left.
void FillThicknessProfile(const HairParams& params, int knots, int steps, float cutFactor, float* profile);

/// Base thickness and length sample of the strand, and whether it counts as thick.
/// Two draws: length, thickness (discarded when thickness is linked to length).
void DrawLengthAndThickness(StrandContext& c);

/// Fills c.width with the thickness of every point of the finished strand, in world units.
void SpreadThickness(StrandContext& c);
