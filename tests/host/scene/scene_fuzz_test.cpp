// Damaged scenes never crash the loader: they load or give one line.

#include "scene_fixture.h"

#include <rapidcheck/gtest.h>

#include "host/damage.h"
#include "scene/toml_value.h"

using namespace host;

namespace {

const std::string kScene =
    "[scene]\nfps = 24\nrange = [0, 10]\nbackground = [0.1, 0.2, 0.3] # grey\n[render]\nwidth = 64\ncamera = \"c\"\n"
    "[[camera]]\nname = 'c'\nposition = [1, 2, 3]\ntarget = [0, 0, 0]\nfov = 40.5\n[[light]]\nname = \"l\"\ntype = "
    "'spot'\n"
    "shadows = true\nexclude = ['n']\n[[map]]\nname = 'k'\ntype = 'checker'\n[[material]]\nname = 'm'\n"
    "maps = {diffuse = 'k'}\n[[material]]\nname = 'mm'\ntype = 'multi'\nmaterials = ['m']\n[[node]]\nname = 'n'\n"
    "primitive = 'plane'\nsegments = 2\nmaterial = 'mm'\nproperties = {a = 1}\n[[keys]]\nnode = 'n'\n"
    "position = [[0, 0, 0, 0], [5, 1, 1, 1]]\n[[keys]]\nobject = 'l'\nparameter = 'multiplier'\nvalues = [[0, 1]]\n";

std::string DamagedScene() {
    return test::Damage(kScene, "0129-+.e_[]{}='\",#\n tf", 6, 40);
}

class SceneFuzz : public scene_test::SceneTest {};

} // namespace

RC_GTEST_PROP(TomlFuzz, Text, ()) {
    const std::string text = DamagedScene();
    const std::string problem = scene_test::ErrorOf([&] { ParseToml("f", text); });
    RC_ASSERT(problem.find('\n') == std::string::npos);
}

RC_GTEST_FIXTURE_PROP(SceneFuzz, Loading, ()) {
    core.ResetScene();
    const std::string problem = scene_test::ErrorOf([&] { Load(DamagedScene()); });
    RC_ASSERT(problem.find('\n') == std::string::npos);
}
