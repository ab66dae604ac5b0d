#pragma once
// The commands. Each returns an exit status; bad input and failed work leave as host::Error or Failure.

#include <string>
#include <vector>

#include "session.h"

namespace velmar {

struct RenderOptions {
    SceneOptions open;
    std::string output;
    std::vector<int> frames{0};
    int width = -1, height = -1; ///< below 0: the scene's
    int threads = -1;            ///< below 0: the scene's
    std::string stats;           ///< empty: none
    bool quiet = false, farm = false;
};
int RunRender(const RenderOptions& options);

struct InfoOptions {
    SceneOptions open;
    bool keys = false; ///< what changes over time instead
};
int RunInfo(const InfoOptions& options);

struct ParamsOptions {
    SceneOptions open;
    std::string object; ///< empty: all
    bool list = false;
};
int RunParams(const ParamsOptions& options);

} // namespace velmar
