// The seeds of the scene file's fuzz target and the cases that fuzzing found once.

#include "../../../fuzz/scene_target.h"

#include <gtest/gtest.h>

namespace {

TEST(SceneCorpus, EveryCaseLoadsOrGivesOneLine) {
    const fuzz::SceneFolder folder(VELMAR_SOURCE_DIR "/fuzz/corpus");
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(VELMAR_SOURCE_DIR "/fuzz/corpus/scene")) {
        folder.Run(host::ReadWholeFile(entry.path().string()));
        ++count;
    }
    EXPECT_GE(count, 2);
}

} // namespace
