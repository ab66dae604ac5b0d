// The written reference and the examples.

#include "scene/scene_docs.h"

#include <fstream>
#include <set>
#include <sstream>

#include "scene/key_table.h"
#include "scene/section_reader.h"
#include "scene_fixture.h"

using namespace host;

namespace {

std::string FileText(const std::string& path) {
    std::ostringstream out;
    out << std::ifstream(path, std::ios::binary).rdbuf();
    return out.str();
}

} // namespace

TEST(SceneDocs, TheCheckedInPageIsWhatTheProgramWrites) {
    EXPECT_EQ(FileText(VELMAR_SOURCE_DIR "/docs/scene.md"), SceneReference()) << "run `make docs`";
}

TEST(SceneDocs, EveryKeyIsDescribedAndEveryDefaultReads) {
    const std::string reference = SceneReference();
    for (const SceneSection& section : SceneSections()) {
        std::set<std::string> seen;
        for (const SceneKey& key : section.keys) {
            EXPECT_TRUE(seen.insert(key.name).second) << key.name;
            EXPECT_NE(std::string(key.text), "") << key.name;
            EXPECT_NE(reference.find(std::string("`").append(key.name).append("`")), std::string::npos) << key.name;
            if (!*key.defaultText) continue;
            const std::string text = std::string(key.name) + " = " + key.defaultText;
            const TomlValue table = ParseToml("default", text);
            EXPECT_EQ(scene_test::ErrorOf([&] { SectionReader("default", section, table); }), "") << text;
        }
    }
}
