#pragma once
// Curliness: the strand's points wind around it.

#include "Base/CreateHair/StrandContext.h"

/// Unit tangents of the first `points` points; degenerate ones become zero.
void NormalizeTangents(const PaddedPoints& tangents, int points, PaddedPoints& unit);

/// Moving frame along a strand from its unit tangents T and the cross-section orientation: U_i = T_i x S_i, with
/// S_i = U_(i-1) x T_i normalised, never turning over from one point to the next.
void BuildStrandFrame(const PaddedPoints& unitTangents, int points, const Point3& orientation, PaddedPoints& frame);

/// Curls the strand when curliness is on and recomputes its tangents. One draw, made whether it is on or not.
void ApplyCurl(StrandContext& c);
