// The checked-in parameter reference is what the tables say.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "Base/ParamDefs.h"

TEST(ParameterPage, IsUpToDate) {
    std::ifstream file(VELMAR_SOURCE_DIR "/docs/parameters.md");
    std::stringstream text;
    text << file.rdbuf();
    EXPECT_EQ(text.str(), ParameterPage() + "\n") << "run `make docs`";
}
