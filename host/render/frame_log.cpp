#include "render/frame_log.h"

#include <cstdio>
#include <optional>

namespace host {

namespace {

/// Strands of the frame at `t`, of all active effects that count them in a parameter of that name.
std::optional<int64_t> RenderedStrands(Core& core, TimeValue t) {
    std::optional<int64_t> strands;
    for (int i = 0; i < core.NumAtmospheric(); ++i) {
        Atmospheric* const effect = core.GetAtmospheric(i);
        if (!effect->Active(t)) continue;
        for (int b = 0; b < effect->NumParamBlocks(); ++b) {
            IParamBlock2* const block = effect->GetParamBlock(b);
            if (!block || !block->GetDesc()) continue;
            for (const ParamDef& def : block->GetDesc()->params)
                if (def.intName == "statsNumRendStrands") strands = strands.value_or(0) + block->GetInt(def.id);
        }
    }
    return strands;
}

} // namespace

std::string FrameLogLine(Core& core, const FrameSettings& settings, const FrameStats& stats) {
    char text[200];
    std::snprintf(text, sizeof text, "frame %g at %.3f s: %d x %d, %llu samples, ",
                  double(settings.time) / double(core.GetTicksPerFrame()), double(settings.time) / TIME_TICKSPERSEC,
                  settings.width, settings.height, static_cast<unsigned long long>(stats.cameraSamples));
    std::string line = text;
    if (const auto strands = RenderedStrands(core, settings.time)) line += std::to_string(*strands) + " strands, ";
    std::snprintf(text, sizeof text, "%.2f s", stats.wallSeconds);
    return line + text;
}

} // namespace host
