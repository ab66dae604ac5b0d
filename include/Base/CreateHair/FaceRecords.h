#pragma once
// Where middle strands grow: face records with their seeds, strand numbers and attractor numbers.

#include <vector>

#include "Base/CreateHair/GenerationRun.h"
#include "Base/HUtil/HairRandom.h"

class StrandContext;

/// Seed of strand `index` on a face with seed `faceSeed`.
inline uint32_t StrandSeed(uint32_t faceSeed, int index) {
    return uint32_t(index) * 13737u + faceSeed;
}

/// Builds the record of every emitter face: seeds, areas, expected strand numbers and clump values, corner strands.
/// One draw a face, selected or not, so that seeds never shift.
void BuildFaceRecords(const GenerationRun& run, std::vector<EmitterFace>& faces);

/// Draws how many strands and attractors every growing face gets. Two draws a face from the face's own seed: strand
/// number, attractor number. A face that is not selected, or that misses a corner strand, gets none.
void DrawStrandCounts(GenerationRun& run, StrandContext& context);

/// The face's generator as it stands before the root of strand `index` is drawn.
HairRandom RootGenerator(const EmitterFace& face, int index);

/// Root of strand `index` of a face, as barycentric weights. The face's generator first draws the two numbers, then two
/// values a root.
Point3 StrandRoot(const EmitterFace& face, int index);
