#pragma once
// Turns one middle strand's root into a finished strand.

#include "Base/CreateHair/StrandContext.h"

/// Makes strand `index` of the current face with root `bary`: seeds the generator, then shapes. False when the strand
/// is dropped. The strand's draws, in order: one discarded after seeding, length, thickness, colour (3), orientation,
/// direction random (2), curl orientation.
bool MakeStrand(StrandContext& c, int index, const Point3& bary);

/// Places the root of the strand with weights c.bary on the current face, with its emitter mapping coordinates.
void PlaceRoot(StrandContext& c);
