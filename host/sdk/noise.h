#pragma once
// The host's noise functions.

/// Smooth one-dimensional gradient noise in about -1..1: zero at whole numbers, mean zero, continuous first and second
/// derivative, repeating every 256. (Lattice noise after K. Perlin, "Improving Noise", 2002, in one dimension.)
float noise1(float x);
/// Three-dimensional form of the same noise.
float noise3(float x, float y, float z);
