#pragma once
// Work units: runs of consecutive strands in face order. They are what threads share out, and what orders their
// samples.

#include <vector>

#include "Base/CreateHair/Clumping.h"
#include "Base/CreateHair/Culling.h"
#include "Base/CreateHair/FaceRecords.h"
#include "Base/CreateHair/Shaping.h"

/// `count` strands from strand `strand` of face record `face` on, going over into the following faces.
struct WorkUnit {
    int face = 0, strand = 0, count = 0;
};

/// Cuts a run's strands into units of about `strandsPerUnit`, in order. A run with a selected face gets that face only.
std::vector<WorkUnit> MakeWorkUnits(const GenerationRun& run, int strandsPerUnit);

/// Makes the strands of one unit and hands each finished one to `consumer.OnStrand(context)`. Stops when
/// `consumer.Aborted()`.
template <class Consumer>
void BuildUnit(StrandContext& c, const WorkUnit& unit, Consumer& consumer) {
    const GenerationRun& run = *c.run;
    const bool perFace = run.params->Int(pid_clumpAttract) != 0;
    int left = unit.count, first = unit.strand;
    for (size_t i = size_t(unit.face); i < run.faces.size() && left > 0; ++i, first = 0) {
        const EmitterFace& f = run.faces[i];
        const int count = f.strands - first < left ? f.strands - first : left;
        if (count <= 0) continue;
        left -= count;
        c.SetFace(f);
        if (!CullFace(c)) continue;
        CollectAttractors(c);
        const int limit = f.AttractorLimit();
        const int only = run.request.selectedStrand;
        HairRandom roots = RootGenerator(f, first);
        for (int s = first; s < first + count; ++s) {
            const Point3 bary = RandomBarycentric(roots); // two draws a root, from the face's generator
            if (only >= 0 && s != only) continue;
            if (consumer.Aborted()) return;
            c.attracted = perFace && s >= limit;
            if (!MakeStrand(c, s, bary)) continue;
            ++c.strandsMade;
            consumer.OnStrand(c);
        }
    }
}
