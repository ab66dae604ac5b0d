// [[effect]] and [[image_filter]].

#include "core/host_classes.h"
#include "render/effects/blur.h"
#include "render/effects/color_effects.h"
#include "render/effects/negative_filter.h"
#include "scene_fixture.h"

using namespace host;
using EffectsScene = scene_test::SceneTest;

TEST_F(EffectsScene, EffectsStandInTheirOrderWithTheirValues) {
    const LoadedScene scene =
        Load("[[effect]]\nclass = 'blur'\nactive = false\n"
             "[[effect]]\nclass = 'Color balance'\nname = 'warm'\nset = { red = 0.2, keepIntensity = true }\n"
             "[[effect]]\nclass = 'depth_fog'\nname = 'mist'\n[effect.set]\ncolor = [0.1, 0.2, 0.3]\nonlyId = 3\n"
             "[[keys]]\nobject = 'warm'\nparameter = 'green'\nvalues = [[0, 0.0], [10, 1.0]]\n");
    ASSERT_EQ(core.Effects().size(), 3u);
    EXPECT_EQ(core.Effects()[0]->ClassID(), Blur::kClassId);
    EXPECT_FALSE(core.Effects()[0]->Active(0));
    auto* const warm = dynamic_cast<ColorBalance*>(core.Effects()[1]);
    ASSERT_NE(warm, nullptr);
    EXPECT_EQ(FindObject(scene, "warm"), warm);
    EXPECT_TRUE(warm->Active(0));
    EXPECT_EQ(FloatOf(warm, "red"), 0.2f);
    EXPECT_EQ(warm->Params()->GetInt(ColorBalance::kKeepIntensity, 0), 1);
    EXPECT_EQ(FloatOf(warm, "green", 5 * core.GetTicksPerFrame()), 0.5f);
    EXPECT_EQ(ColorOf(core.Effects()[2], "color"), Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(core.Effects()[2]->GBufferChannelsRequired(0), BMM_CHAN_Z | BMM_CHAN_NODE_ID);
}

TEST_F(EffectsScene, FiltersStandInTheirOrderWithTheirConfiguration) {
    Load("[[image_filter]]\nclass = 'negative'\nconfig = [25]\n[[image_filter]]\nclass = 'Negative'\nactive = false\n");
    std::vector<FilterQueue::Entry>& entries = core.Filters().Entries();
    ASSERT_EQ(entries.size(), 2u);
    const int expected[] = {25, 100};
    for (size_t i = 0; i < 2; ++i) {
        int32_t percent = 0;
        ASSERT_TRUE(entries[i].filter->SaveConfigure(&percent));
        EXPECT_EQ(percent, expected[i]);
        EXPECT_EQ(entries[i].active, i == 0);
        EXPECT_EQ(entries[i].name, "Negative");
    }
    core.ResetScene();
    EXPECT_TRUE(core.Filters().Entries().empty());
    EXPECT_TRUE(core.Effects().empty());
}

namespace {

/// What a plug-in's descriptor is when the class is not there: it makes nothing.
class EmptyDesc : public SimpleClassDesc<Blur> {
public:
    using SimpleClassDesc<Blur>::SimpleClassDesc;
    void* Create(bool) override { return nullptr; }
};

} // namespace

TEST_F(EffectsScene, WhatCannotBe) {
    static EmptyDesc effect("Nothing Effect", RENDER_EFFECT_CLASS_ID, {1, 2}), filter("Nothing", FLT_CLASS_ID, {1, 3});
    core.Classes().Register(&effect);
    core.Classes().Register(&filter);
    const std::pair<const char*, const char*> cases[] = {
        {"[[effect]]\nname = 'a'\n", "s.toml:1: no 'class' in [[effect]], expected one"},
        {"[[effect]]\nclass = 'blurr'\n",
         "s.toml:2: unknown effect 'blurr', expected brightness_contrast, color_balance, depth_fog, blur or Nothing "
         "Effect"},
        {"[[effect]]\nclass = 'negative'\n",
         "s.toml:2: unknown effect 'negative', expected brightness_contrast, color_balance, depth_fog, blur or Nothing "
         "Effect"},
        {"[[effect]]\nclass = 'nothing effect'\n",
         "s.toml:2: effect 'nothing effect' cannot be made here, expected another one"},
        {"[[effect]]\nclass = 'blur'\nset = { radiu = 1 }\n",
         "s.toml:3: unknown parameter 'radiu' of 'blur', expected one like 'radius', 'onlyId'"},
        {"[[effect]]\nclass = 'blur'\nset = { radius = 101 }\n",
         "s.toml:3: 'radius' is 101, expected a number in 0 .. 100"},
        {"[[effect]]\nclass = 'blur'\nname = 'a'\n[[effect]]\nclass = 'blur'\nname = 'a'\n",
         "s.toml:6: second object 'a', expected a name of its own"},
        {"[[effect]]\nclass = 'blur'\nradius = 1\n",
         "s.toml:3: unknown key 'radius' in [[effect]], expected 'class' or another key of it"},
        {"[[image_filter]]\nactive = true\n", "s.toml:1: no 'class' in [[image_filter]], expected one"},
        {"[[image_filter]]\nclass = 'blur'\n", "s.toml:2: unknown image filter 'blur', expected Negative or Nothing"},
        {"[[image_filter]]\nclass = 'nothing'\n",
         "s.toml:2: image filter 'nothing' cannot be made here, expected another one"},
        {"[[image_filter]]\nclass = 'negative'\nconfig = [1, 2]\n",
         "s.toml:3: a configuration of 8 bytes, expected one of 4 for 'negative'"},
        {"[[image_filter]]\nclass = 'negative'\nconfig = [101]\n",
         "s.toml:3: image filter 'negative' refuses its configuration, expected another one"},
    };
    for (const auto& [text, message] : cases) EXPECT_EQ(Problem(text), message) << text;
}
