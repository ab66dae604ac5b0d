#pragma once
// Pictures of the golden ball, by the program.

#include <string>
#include <vector>

#include "apps/run_program.h"

namespace system_test {

/// Renders tests/data/golden/ball.toml in a folder of its own.
class BallTest : public apps_test::ProgramTest {
protected:
    using Args = std::vector<std::string>;
    static constexpr const char* kBall = VELMAR_TEST_DATA "/golden/ball.toml";

    /// `--set render.NAME=VALUE` for every pair.
    static Args Settings(const std::vector<std::pair<std::string, std::string>>& values) {
        Args args;
        for (const auto& [name, value] : values) {
            args.emplace_back("--set");
            args.push_back(std::string("render.").append(name).append("=").append(value));
        }
        return args;
    }
    /// The bytes of the picture file `name`, which carries no time stamp; empty (and a failure) when the run fails.
    std::string RenderFile(const std::string& name, const Args& extra) const {
        Args args{"render", kBall, "-o", name};
        args.insert(args.end(), extra.begin(), extra.end());
        const apps_test::RunResult r = Run(args);
        EXPECT_EQ(r.status, 0) << r.err;
        return r.status == 0 ? apps_test::FileText(folder_ + "/" + name) : std::string();
    }
};

} // namespace system_test
