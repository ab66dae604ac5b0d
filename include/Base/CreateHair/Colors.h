#pragma once
// Base and tip colour of a strand.

#include "Base/CreateHair/StrandContext.h"

/// A colour converted to hue, saturation and value and back.
Color HsvRoundTrip(const Color& c);

/// Base and tip colour of the current strand with their surface distributions and the colour variations.
/// Three draws, made in any case: hue, saturation, value.
void DrawColors(StrandContext& c);

/// Colour at `v` along the strand: 0 at the root, 1 at the tip of an unshortened strand.
Color StrandColorAt(const StrandContext& c, float v);
