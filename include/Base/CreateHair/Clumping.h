#pragma once
// Direction random and clumping: which corner strands shape a strand, and how much.

#include "Base/CreateHair/StrandContext.h"

/// Adds `x` to component `i` of weights that sum to one, taking it from the other two in proportion to their absolute
/// values (half each when those sum below 0.001).
void ShiftWeight(Point3& weights, int i, float x);

/// Starts c.weights as the root's weights and perturbs them by the direction random. Two draws, always made.
void PerturbWeights(StrandContext& c);

/// Collects the roots of the current face's clump attractors, when they are counted per face.
void CollectAttractors(StrandContext& c);

/// Moves c.weights toward the nearest attractor's. No draw.
void ApplyClumping(StrandContext& c);
