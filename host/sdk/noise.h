#pragma once
// The host's noise functions. Lattice gradient noise after K. Perlin, "Improving Noise", 2002, over a fixed
// permutation: the same on every machine. Zero where all coordinates are whole numbers, mean zero, continuous first and
// second derivatives, repeating every 256 along every axis. Coordinates that are no finite numbers, or too large to
// have fractions, count as whole numbers.

/// One dimension: range -1..1, mean 0, variance 0.084 (standard deviation 0.29).
float noise1(float x);
/// Three dimensions: range -1.04..1.04, mean 0, variance 0.077 (standard deviation 0.28).
float noise3(float x, float y, float z);
/// Four dimensions, e.g. three of space and one of time: inside -1.5..1.5, mean 0, variance 0.087 (standard deviation
/// 0.30).
float noise4(float x, float y, float z, float w);
