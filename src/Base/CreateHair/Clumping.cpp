#include "Base/CreateHair/Clumping.h"

#include <cmath>

#include "Base/CreateHair/FaceRecords.h"
#include "Base/HUtil/Subdivide.h"

void ShiftWeight(Point3& weights, int i, float x) {
    const int j = (i + 1) % 3, k = (i + 2) % 3;
    const float a = std::fabs(weights[j]), b = std::fabs(weights[k]);
    const float sum = a + b;
    weights[i] += x;
    if (sum < 0.001f) {
        weights[j] -= x * 0.5f;
        weights[k] -= x * 0.5f;
    } else {
        weights[j] -= x * (a / sum);
        weights[k] -= x * (b / sum);
    }
}

void PerturbWeights(StrandContext& c) {
    const float s1 = RandomSignedUnit(c.rng),
                s2 = RandomSignedUnit(c.rng); // draws: shift of component 0, of component 1
    c.weights = c.bary;
    c.dirRand = c.run->params->Float(pid_dirRand);
    if (c.dirRand == 0.0f) return;
    const float d = c.dirRand = c.dirRand * c.Factor(pid_surfDist_dirRand);
    ShiftWeight(c.weights, 0, d * s1);
    ShiftWeight(c.weights, 1, d * s2);
    for (int i = 0; i < 3; ++i) {
        if (c.weights[i] < -d) ShiftWeight(c.weights, i, -d - c.weights[i]);
        if (c.weights[i] > 1.0f + d) ShiftWeight(c.weights, i, 1.0f + d - c.weights[i]);
    }
}

void CollectAttractors(StrandContext& c) {
    c.attractorBary.clear();
    const HairParams& p = *c.run->params;
    if (!(p.Float(pid_clumpAmount) > 0.0f) || p.Int(pid_clumpAttract) == 0) return;
    const EmitterFace& f = *c.face;
    if (f.AttractorLimit() >= f.strands) return; // then no strand is attracted
    for (int i = 0; i < f.attractors; ++i) c.attractorBary.push_back(StrandRoot(f, i));
}

void ApplyClumping(StrandContext& c) {
    const HairParams& p = *c.run->params;
    if (!(p.Float(pid_clumpAmount) > 0.0f)) return;
    const float amount = p.Float(pid_clumpAmount) * c.Factor(pid_surfDist_clumpAmount);
    const float radius = p.Float(pid_clumpRadius) * c.Factor(pid_surfDist_clumpRadius);

    static constexpr Point3 kCorners[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    const bool atCorners = p.Int(pid_clumpAttract) == 0;
    if (!atCorners && !c.attracted) return;
    const Point3* candidates = atCorners ? kCorners : c.attractorBary.data();
    const size_t count = atCorners ? 3 : c.attractorBary.size();
    float nearest = 1.0e30f;
    const Point3* winner = nullptr;
    for (size_t i = 0; i < count; ++i) {
        const float distance =
            Length(BaryInterpolate(candidates[i] - c.bary, c.clumpCorner[0], c.clumpCorner[1], c.clumpCorner[2]));
        if (distance < nearest) nearest = distance, winner = &candidates[i];
    }
    if (winner && nearest < radius && amount > 0.0f) c.weights = (1.0f - amount) * c.weights + amount * *winner;
}
