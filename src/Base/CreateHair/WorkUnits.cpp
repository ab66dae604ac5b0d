#include "Base/CreateHair/WorkUnits.h"

std::vector<WorkUnit> MakeWorkUnits(const GenerationRun& run, int strandsPerUnit) {
    std::vector<WorkUnit> units;
    WorkUnit open;
    const auto close = [&] {
        if (open.count > 0) units.push_back(open);
        open.count = 0;
    };
    for (size_t i = 0; i < run.faces.size(); ++i) {
        const EmitterFace& f = run.faces[i];
        if (run.request.selectedFace >= 0 && f.face != run.request.selectedFace) {
            close(); // a unit never runs over faces that were not asked for
            continue;
        }
        for (int s = 0; s < f.strands;) {
            if (open.count == 0) open = {int(i), s, 0};
            const int take = f.strands - s < strandsPerUnit - open.count ? f.strands - s : strandsPerUnit - open.count;
            open.count += take;
            s += take;
            if (open.count >= strandsPerUnit) close();
        }
    }
    close();
    return units;
}
