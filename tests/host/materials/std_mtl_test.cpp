#include "materials/std_mtl.h"

#include <cmath>

#include <gtest/gtest.h>

#include "core/controllers.h"
#include "core/core.h"
#include "flat_context.h"
#include "materials/checker_map.h"
#include "materials/multi_mtl.h"

namespace host {
namespace {

template <class T>
void Set(StdMtl& m, int param, const T& value) {
    m.Params()->SetValue(ParamID(param), 0, value);
}

/// A point in the light of a sun, above it unless said otherwise.
struct LitContext : FlatContext {
    SunDesc sun;
    explicit LitContext(const Point3& toLight = {0, 0, 1}, const Color& color = {1, 1, 1}) : sun(toLight, color) {
        Use(&sun);
    }
};

/// What the material shows there.
Color Shaded(Mtl& m, ShadeContext& sc) {
    m.Shade(sc);
    return sc.out.c;
}

/// A map of one colour.
class FlatMap : public Texmap {
public:
    explicit FlatMap(const AColor& c) : color_(c) {}
    ~FlatMap() override { DeleteAllRefs(); }
    AColor EvalColor(ShadeContext&) override { return color_; }
    void Update(TimeValue t, Interval&) override { updated = t; }
    TimeValue updated = -1;

private:
    AColor color_;
};

TEST(StdMtl, DiffuseLightFollowsTheCosine) {
    StdMtl m;
    Set(m, kStdDiffuse, Color(0.5f, 0.25f, 1));
    LitContext sc({0.6f, 0, 0.8f}, {1, 2, 0.5f});
    SunDesc other({0, 0, 1});
    ExpectColor(Shaded(m, sc), {0.4f, 0.4f, 0.4f});
    EXPECT_EQ(sc.out.t, Color());
    sc.Use(&other);
    ExpectColor(Shaded(m, sc), {0.9f, 0.65f, 1.4f});
}

TEST(StdMtl, HighlightIsBlinns) {
    StdMtl m;
    Set(m, kStdDiffuse, Color(0, 0, 0));
    Set(m, kStdSpecular, Color(1, 0.5f, 0));
    Set(m, kStdSpecularLevel, 2.0f);
    Set(m, kStdGlossiness, 0.3f);
    LitContext sc({0.6f, 0, 0.8f});
    m.Shade(sc);
    const float nh = Normalize(Point3(0.6f, 0, 1.8f)).z, s = 2 * std::pow(nh, 8.0f);
    ExpectColor(sc.out.c, {s, 0.5f * s, 0});
    sc.sun.affectSpecular = false;
    ExpectColor(Shaded(m, sc), {0, 0, 0});
}

TEST(StdMtl, AmbientLightMeetsTheDiffuseColourUnlessUnlocked) {
    StdMtl m;
    Set(m, kStdDiffuse, Color(0.5f, 0.5f, 0.5f));
    Set(m, kStdAmbient, Color(1, 0, 0));
    FlatContext sc;
    sc.ambientLight = {0.2f, 0.4f, 0.6f};
    ExpectColor(Shaded(m, sc), {0.1f, 0.2f, 0.3f});
    Set(m, kStdLockAmbient, 0);
    ExpectColor(Shaded(m, sc), {0.2f, 0, 0});
}

TEST(StdMtl, AmbientOnlyLightsCountAsAmbient) {
    StdMtl m;
    Set(m, kStdDiffuse, Color(0.5f, 0.5f, 0.5f));
    LitContext sc;
    sc.sun.ambientOnly = true;
    Set(m, kStdSpecularLevel, 1.0f);
    ExpectColor(Shaded(m, sc), {0.5f, 0.5f, 0.5f});
}

TEST(StdMtl, SelfIlluminationReplacesReflectedLight) {
    StdMtl m;
    Set(m, kStdDiffuse, Color(0.8f, 0.4f, 0));
    Set(m, kStdSelfIllum, 0.25f);
    LitContext sc({0, 0, 1}, {0.5f, 0.5f, 0.5f});
    ExpectColor(Shaded(m, sc), {0.8f * 0.625f, 0.4f * 0.625f, 0});
}

TEST(StdMtl, OpacityScalesAllButTheHighlight) {
    StdMtl m;
    Set(m, kStdDiffuse, Color(1, 1, 1));
    Set(m, kStdOpacity, 0.25f);
    Set(m, kStdSpecularLevel, 1.0f);
    Set(m, kStdSpecular, Color(0.5f, 0.5f, 0.5f));
    LitContext sc;
    ExpectColor(Shaded(m, sc), {0.75f, 0.75f, 0.75f});
    ExpectColor(sc.out.t, {0.75f, 0.75f, 0.75f});
    EXPECT_FLOAT_EQ(m.GetXParency(0, false), 0.75f);
}

TEST(StdMtl, InShadowModeOnlyTransparencyCounts) {
    StdMtl m;
    Set(m, kStdOpacity, 0.25f);
    Set(m, kStdSelfIllum, 1.0f);
    FlatContext sc;
    sc.mode = SCMODE_SHADOW;
    m.Shade(sc);
    EXPECT_EQ(sc.out.c, Color());
    ExpectColor(sc.out.t, {0.75f, 0.75f, 0.75f});
}

TEST(StdMtl, MapsReplaceTheirChannels) {
    StdMtl m;
    FlatMap diffuse({0.2f, 0.4f, 0.6f}), opacity({0.5f, 0.5f, 0.5f});
    m.SetSubTexmap(ID_DI, &diffuse);
    m.SetSubTexmap(ID_OP, &opacity);
    LitContext sc;
    ExpectColor(Shaded(m, sc), {0.1f, 0.2f, 0.3f});
    ExpectColor(sc.out.t, {0.5f, 0.5f, 0.5f});
    ExpectColor(m.ShadowTransparency(sc), {0.5f, 0.5f, 0.5f});
    EXPECT_EQ(m.Requirements(0), MTLREQ_UV);
    sc.doMaps = 0;
    ExpectColor(Shaded(m, sc), {0.588f, 0.588f, 0.588f});
    Interval valid = FOREVER;
    m.Update(160, valid);
    EXPECT_EQ(diffuse.updated, 160);
    EXPECT_EQ(opacity.updated, 160);
}

TEST(StdMtl, ChannelsWithoutMapsTakeNone) {
    StdMtl m;
    FlatMap map({1, 1, 1});
    for (const int channel : {int(ID_FI), -1, int(ID_NUM_CHANNELS), 99}) {
        m.SetSubTexmap(channel, &map);
        EXPECT_EQ(m.GetSubTexmap(channel), nullptr) << channel;
    }
    EXPECT_FALSE(map.HasDependents());
}

TEST(StdMtl, ADeletedMapLeavesItsSlot) {
    StdMtl m;
    {
        FlatMap map({0, 1, 0});
        m.SetSubTexmap(ID_DI, &map);
        EXPECT_EQ(m.GetSubTexmap(ID_DI), &map);
    }
    EXPECT_EQ(m.GetSubTexmap(ID_DI), nullptr);
}

TEST(StdMtl, AShaderIsAskedThroughItsParameters) {
    class Probe : public Shader {
    public:
        ~Probe() override { DeleteAllRefs(); }
        void Illum(ShadeContext& sc, IllumParams& ip) override {
            seen = ip;
            ip.finalC = {0.125f, 0.25f, 0.5f};
            ip.finalT = {0.75f, 0.5f, 0.25f};
        }
        void Update(TimeValue t, Interval&) override { updated = t; }
        IllumParams seen;
        TimeValue updated = -1;
    } shader;
    StdMtl m;
    Set(m, kStdDiffuse, Color(1, 0.5f, 0.25f));
    Set(m, kStdSpecularLevel, 3.0f);
    Set(m, kStdGlossiness, 0.7f);
    Set(m, kStdOpacity, 0.9f);
    m.SetShader(&shader);
    LitContext sc;
    m.Shade(sc);
    EXPECT_EQ(sc.out.c, Color(0.125f, 0.25f, 0.5f));
    EXPECT_EQ(sc.out.t, Color(0.75f, 0.5f, 0.25f));
    EXPECT_EQ(shader.seen.diffuse, Color(1, 0.5f, 0.25f));
    EXPECT_EQ(shader.seen.specLevel, 3.0f);
    EXPECT_EQ(shader.seen.glossiness, 0.7f);
    EXPECT_EQ(shader.seen.opacity, 0.9f);
    EXPECT_EQ(shader.seen.nLights, 1);
    Interval valid = FOREVER;
    m.Update(320, valid);
    EXPECT_EQ(shader.updated, 320);
    m.SetShader(nullptr);
    m.Shade(sc);
    EXPECT_NEAR(sc.out.t.r, 0.1f, 1e-6f);
}

TEST(StdMtl, AnimatedValuesFollowUpdate) {
    StdMtl m;
    auto* const control = new FloatControl;
    control->SetKey(0, 0.0f);
    control->SetKey(100, 1.0f);
    ASSERT_TRUE(m.Params()->SetController(kStdOpacity, control));
    Interval valid = FOREVER;
    m.Update(25, valid);
    EXPECT_FLOAT_EQ(m.GetXParency(0, false), 0.75f);
    EXPECT_EQ(valid, Interval(25, 25));
}

TEST(StdMtl, ClonesAreIndependentButShareUncopyableMaps) {
    FlatMap map({0, 1, 0});
    StdMtl m;
    m.SetName("hide");
    m.SetSubTexmap(ID_DI, &map);
    Set(m, kStdOpacity, 0.5f);
    RemapDir remap;
    auto* const copy = static_cast<StdMtl*>(m.Clone(remap));
    EXPECT_EQ(copy->GetName(), "hide");
    EXPECT_EQ(copy->GetSubTexmap(ID_DI), &map);
    EXPECT_FLOAT_EQ(copy->GetXParency(0, false), 0.5f);
    Set(*copy, kStdOpacity, 1.0f);
    EXPECT_FLOAT_EQ(copy->GetXParency(0, false), 0.0f);
    EXPECT_FLOAT_EQ(m.GetXParency(0, false), 0.5f);
    copy->DeleteThis();
}

TEST(StdMtl, AmountsMixMapsWithValues) {
    StdMtl m;
    FlatMap blue({0, 0, 1}), bright({2, 2, 2});
    Set(m, kStdDiffuse, Color(1, 0, 0));
    Set(m, kStdSpecularLevel, 3.0f);
    m.SetSubTexmap(ID_DI, &blue);
    m.SetSubTexmap(ID_SS, &bright);
    Set(m, kStdMapAmount + int(ID_DI), 0.25f);
    Set(m, kStdMapAmount + int(ID_SS), 0.5f);
    Set(m, kStdGlossiness, 0.0f);
    Set(m, kStdSpecular, Color(0, 1, 0));
    LitContext sc;
    ExpectColor(Shaded(m, sc), {0.75f, 2, 0.25f}); // level 3 x 0.5 + 1 (the map inside 0..1) x 0.5
    Set(m, kStdMapOn + int(ID_DI), 0);
    Set(m, kStdMapOn + int(ID_SS), 0);
    ExpectColor(Shaded(m, sc), {1, 3, 0});
}

TEST(StdMtl, TheAmbientMapNeedsAnUnlockedChannel) {
    StdMtl m;
    FlatMap blue({0, 0, 1}), red({1, 0, 0});
    m.SetSubTexmap(ID_AM, &blue);
    m.SetSubTexmap(ID_DI, &red);
    FlatContext sc;
    sc.ambientLight = {1, 1, 1};
    ExpectColor(Shaded(m, sc), {1, 0, 0});
    Set(m, kStdLockAmbient, 0);
    ExpectColor(Shaded(m, sc), {0, 0, 1});
}

TEST(StdMtl, SelfIlluminationByColourIsAdded) {
    StdMtl m;
    Set(m, kStdDiffuse, Color(0.5f, 0.5f, 0.5f));
    Set(m, kStdSelfIllumColorOn, 1);
    Set(m, kStdSelfIllumColor, Color(0.25f, 0, 1));
    LitContext sc;
    ExpectColor(Shaded(m, sc), {0.75f, 0.5f, 1.5f});
}

TEST(StdMtl, OneSidedMaterialsAreNotThereFromBehind) {
    StdMtl m;
    Set(m, kStdTwoSided, 0);
    EXPECT_FALSE(m.GetTwoSided());
    FlatContext sc;
    sc.ambientLight = {1, 1, 1};
    ExpectColor(Shaded(m, sc), {0.588f, 0.588f, 0.588f});
    EXPECT_EQ(sc.out.flags, 0u);
    sc.backFace = 1;
    m.Shade(sc);
    EXPECT_EQ(sc.out.c, Color());
    EXPECT_EQ(sc.out.t, Color(1, 1, 1));
    EXPECT_EQ(sc.out.flags, SHADEOUT_NOTHING);
    // Towards a light, the back is seen where the front faces the light.
    sc.mode = SCMODE_SHADOW;
    m.Shade(sc);
    EXPECT_EQ(sc.out.t, Color());
    sc.backFace = 0;
    m.Shade(sc);
    EXPECT_EQ(sc.out.t, Color(1, 1, 1));
}

TEST(StdMtl, BelowTheCutoffThereIsNothing) {
    StdMtl m;
    FlatMap alpha({0.4f, 0.4f, 0.4f});
    Set(m, kStdDiffuse, Color(1, 1, 1));
    Set(m, kStdSpecularLevel, 1.0f);
    Set(m, kStdOpacityCutoff, 0.5f);
    m.SetSubTexmap(ID_OP, &alpha);
    LitContext sc;
    m.Shade(sc);
    EXPECT_EQ(sc.out.c, Color());
    EXPECT_EQ(sc.out.t, Color(1, 1, 1));
    EXPECT_EQ(sc.out.flags, SHADEOUT_NOTHING);
    EXPECT_EQ(m.ShadowTransparency(sc), Color(1, 1, 1));
    sc.out.flags = 0;
    Set(m, kStdOpacityCutoff, 0.375f);
    ExpectColor(Shaded(m, sc), {1.9f, 1.9f, 1.9f});
    EXPECT_EQ(sc.out.t, Color());
    EXPECT_EQ(sc.out.flags, 0u);
    EXPECT_EQ(m.ShadowTransparency(sc), Color());
    Set(m, kStdOpacity, 0.25f);
    EXPECT_EQ(m.GetXParency(0, false), 1.0f);
    Set(m, kStdOpacityCutoff, 0.25f);
    EXPECT_EQ(m.GetXParency(0, false), 0.0f);
}

TEST(StdMtl, HighlightOfThePhongShader) {
    StdMtl m;
    PhongShader phong;
    m.SetShader(&phong);
    Set(m, kStdDiffuse, Color(0, 0, 0));
    Set(m, kStdSpecular, Color(1, 0.5f, 0));
    Set(m, kStdSpecularLevel, 2.0f);
    Set(m, kStdGlossiness, 0.3f);
    LitContext sc({0.6f, 0, 0.8f});
    m.Shade(sc);
    const float s = 2 * std::pow(0.8f, 8.0f); // the mirrored view is (0, 0, 1)
    ExpectColor(sc.out.c, {s, 0.5f * s, 0});
    m.SetShader(nullptr);
}

/// A shader with values of its own.
class OwnShader : public Shader {
public:
    ~OwnShader() override { DeleteAllRefs(); }
    void GetIllumParams(ShadeContext&, IllumParams& ip) override { ip.diffuse = own, ip.specLevel = 7; }
    void Illum(ShadeContext& sc, IllumParams& ip) override {
        ip.ambIllumOut = ip.diffuse;
        ip.reflIllumOut = {0, 0, 1};
        seen = ip;
        CombineComponents(sc, ip);
    }
    uint32_t SupportStdParams() override { return 1; }
    void CopyStdParams(Shader* from) override {
        own = from->GetDiffuseClr(0);
        glossiness = from->GetGlossiness(0);
        locked = from->GetLockAD();
    }
    Color own;
    float glossiness = -1;
    bool locked = false;
    IllumParams seen;
};

TEST(StdMtl, AShadersOwnValuesComeBeforeMaps) {
    OwnShader shader;
    FlatMap level({0.5f, 0.5f, 0.5f});
    StdMtl m;
    Set(m, kStdDiffuse, Color(1, 0.5f, 0.25f));
    Set(m, kStdGlossiness, 0.75f);
    Set(m, kStdOpacity, 0.5f);
    m.SwitchShader(&shader);
    EXPECT_EQ(shader.own, Color(1, 0.5f, 0.25f));
    EXPECT_EQ(shader.glossiness, 0.75f);
    EXPECT_TRUE(shader.locked);
    shader.own = {0.25f, 0.5f, 0};
    FlatContext sc;
    m.Shade(sc);
    EXPECT_EQ(shader.seen.specLevel, 7.0f);
    ExpectColor(sc.out.c, {0.125f, 0.25f, 1}); // opacity counts for all but what is mirrored
    m.SetSubTexmap(ID_SS, &level);
    m.Shade(sc);
    EXPECT_EQ(shader.seen.specLevel, 0.5f);
    m.SetShader(nullptr);
}

TEST(StdMtl, ReliefsTiltTheNormalForTheScopeOfShading) {
    /// A slope of 3/4 along x.
    class Slope : public Texmap {
    public:
        ~Slope() override { DeleteAllRefs(); }
        AColor EvalColor(ShadeContext&) override { return {}; }
        Point3 EvalNormalPerturb(ShadeContext&) override { return tilt; }
        Point3 tilt{-0.75f, 0, 0};
    } slope;
    StdMtl m;
    Set(m, kStdDiffuse, Color(1, 1, 1));
    m.SetSubTexmap(ID_BU, &slope);
    Set(m, kStdMapAmount + int(ID_BU), 1.0f);
    LitContext sc;
    ExpectColor(Shaded(m, sc), {0.8f, 0.8f, 0.8f});
    EXPECT_EQ(sc.normal, Point3(0, 0, 1));
    SunDesc left({-1, 0, 0});
    sc.lights = {&left};
    ExpectColor(Shaded(m, sc), {0.6f, 0.6f, 0.6f});
    sc.backFace = 1; // from behind the slope runs the other way
    ExpectColor(Shaded(m, sc), {0, 0, 0});
    sc.backFace = 0;
    Set(m, kStdMapAmount + int(ID_BU), -1.0f);
    ExpectColor(Shaded(m, sc), {0, 0, 0});
    sc.lights = {&sc.sun};
    slope.tilt = {NAN, 0, 0}; // counts as flat
    ExpectColor(Shaded(m, sc), {1, 1, 1});
    slope.tilt = {-0.75f, 0, 0};
    Set(m, kStdMapOn + int(ID_BU), 0);
    ExpectColor(Shaded(m, sc), {1, 1, 1});
}

TEST(MultiMtl, PicksByFaceId) {
    StdMtl red, green;
    Set(red, kStdDiffuse, Color(1, 0, 0));
    Set(green, kStdDiffuse, Color(0, 1, 0));
    Set(green, kStdOpacity, 0.5f);
    MultiMtl multi;
    multi.SetNumSubMtls(3);
    multi.SetSubMtl(0, &red);
    multi.SetSubMtl(1, &green);
    EXPECT_TRUE(multi.IsMultiMtl());
    EXPECT_EQ(multi.ClassID(), MULTI_CLASS_ID);
    FlatContext sc;
    sc.ambientLight = {1, 1, 1};
    const Color expected[] = {{1, 0, 0}, {0, 0.5f, 0}, {0, 0, 0}, {1, 0, 0}, {0, 0.5f, 0}};
    for (int id = 0; id < 5; ++id) {
        sc.mtlNum = id;
        sc.out.c = {9, 9, 9};
        multi.Shade(sc);
        ExpectColor(sc.out.c, expected[id]);
    }
    EXPECT_EQ(multi.GetDiffuse(4, false), Color(0, 1, 0));
    EXPECT_FLOAT_EQ(multi.GetXParency(1, false), 0.5f);
    EXPECT_EQ(multi.GetXParency(2, false), 0.0f);
}

TEST(MultiMtl, GrowsShrinksAndForgetsTheDeleted) {
    MultiMtl multi;
    FlatContext sc;
    multi.Shade(sc); // no sub-materials: black
    EXPECT_EQ(sc.out.c, Color());
    StdMtl a;
    multi.SetSubMtl(4, &a);
    EXPECT_EQ(multi.NumSubMtls(), 5);
    {
        StdMtl b;
        multi.SetSubMtl(1, &b);
        EXPECT_EQ(multi.GetSubMtl(1), &b);
    }
    EXPECT_EQ(multi.GetSubMtl(1), nullptr);
    multi.SetNumSubMtls(2);
    EXPECT_FALSE(a.HasDependents());
    multi.SetSubMtl(-1, &a);
    multi.SetSubMtl(MultiMtl::kMost, &a);
    EXPECT_EQ(multi.NumSubMtls(), 2);
}

TEST(MultiMtl, ClonesCopyTheirParts) {
    Core core;
    auto* const part = core.Adopt(new StdMtl);
    MultiMtl multi;
    multi.SetNumSubMtls(3);
    multi.SetSubMtl(0, part);
    RemapDir remap;
    auto* const copy = static_cast<MultiMtl*>(multi.Clone(remap));
    EXPECT_EQ(copy->NumSubMtls(), 3);
    EXPECT_NE(copy->GetSubMtl(0), part);
    EXPECT_NE(copy->GetSubMtl(0), nullptr);
    EXPECT_EQ(copy->GetSubMtl(1), nullptr);
    copy->DeleteThis();
}

} // namespace
} // namespace host
