// The seeds of the fuzz targets and the cases that fuzzing found once.

#include "../../../fuzz/targets.h"

#include "import_helpers.h"

namespace {

int Replay(const std::string& kind, void (*run)(const std::string&)) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(VELMAR_SOURCE_DIR "/fuzz/corpus/" + kind)) {
        run(host::ReadWholeFile(entry.path().string()));
        ++count;
    }
    return count;
}

TEST(Corpus, EveryCaseGivesAWholeResultOrOneLine) {
    EXPECT_GE(Replay("obj", fuzz::RunObj), 1);
    EXPECT_GE(Replay("ply", fuzz::RunPly), 3);
    EXPECT_GE(Replay("3ds", fuzz::Run3ds), 1);
    EXPECT_GE(Replay("gltf", fuzz::RunGltf), 4);
    EXPECT_GE(Replay("fbx", fuzz::RunFbx), 1);
}

} // namespace
