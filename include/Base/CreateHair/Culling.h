#pragma once
// Leaving out faces and segments that cannot reach the region being rendered.

#include "Base/CreateHair/StrandContext.h"

/// Finds which segments of the current face's strands can touch the rendered region and stores them in
/// c.segmentVisible. A segment is tested by the box around its corner strands' control points, enlarged by the curl
/// radius and by how far a direction random may lead outside the face, projected with a margin for width and filter.
/// The test never leaves out a segment that would have drawn a pixel of the region, and neighbours of visible segments
/// count as visible, so that the joints of what is drawn do not depend on the region. False when no segment is visible:
/// the face is skipped.
bool CullFace(StrandContext& c);
