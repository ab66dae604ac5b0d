// Surface distributions at work: channels, maps, materials, and what they do to strands.

#include "Base/SurfDist/SurfDistEvaluator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "Base/EngineFixture.h"
#include "DebugTools/Assert.h"
#include "sdk/mtl.h"

namespace {

using namespace engine;

const Point3 kThird(0.333333f, 0.333333f, 0.333333f);

/// Plain colour that answers where it is asked.
class Paint : public Mtl {
public:
    Color color{1, 0, 0};
    bool addLights = false;
    int shades = 0, lastMtl = -1;
    Point3 normal, uvw;
    void Shade(ShadeContext& sc) override {
        ++shades;
        lastMtl = sc.mtlNum;
        normal = sc.Normal();
        uvw = sc.UVW(1);
        sc.out.c = color;
        if (!addLights) return;
        sc.out.c = Color();
        for (int i = 0; i < sc.nLights; ++i) {
            Color light;
            Point3 dir;
            float cosine, diffuse;
            if (sc.Light(i) && sc.Light(i)->Illuminate(sc, sc.Normal(), light, dir, cosine, diffuse))
                sc.out.c = sc.out.c + light * diffuse * color;
        }
    }
};

class Multi : public Paint {
public:
    std::vector<Mtl*> subs;
    Class_ID ClassID() override { return MULTI_CLASS_ID; }
    bool IsMultiMtl() override { return true; }
    int NumSubMtls() override { return int(subs.size()); }
    Mtl* GetSubMtl(int i) override { return subs[size_t(i)]; }
};

class PlainMap : public Texmap {
public:
    AColor color{1, 0, 0, 0.25f};
    AColor EvalColor(ShadeContext&) override { return color; }
};

class Lamp : public LightDesc {
public:
    bool Illuminate(ShadeContext&, const Point3&, Color& c, Point3& d, float& cosine, float& diffuse) override {
        c = Color(0.25f, 0.25f, 0.25f), d = {0, 0, 1}, cosine = diffuse = 1;
        return true;
    }
};

Mesh Channels() {
    Mesh m = OneTriangle();
    const auto channel = [&](int c, const Point3& a, const Point3& b, const Point3& d) {
        MeshMap map;
        map.tv = {a, b, d};
        map.tf = {{{0, 1, 2}}};
        m.maps[c] = map;
    };
    channel(MAP_ALPHA, {0.1f, 0, 0}, {0.1f, 0, 0}, {0.1f, 0, 0});
    channel(MAP_SHADING, {0.2f, 0, 0}, {0.2f, 0, 0}, {0.2f, 0, 0});
    channel(MAP_VERTCOLOR, {1, 0, 0}, {0, 1, 0}, {0, 0, 1});
    channel(1, {0, 0, 0.5f}, {1, 0, 0.5f}, {0, 1, 0.5f});
    m.vdata[VDATA_SELECT] = {0, 0.5f, 1};
    m.vdata[VDATA_WEIGHT] = {1, 1, 0};
    m.vdata[7] = {0.3f, 0.3f, 0.3f};
    return m;
}

SurfDistScene SceneOf(Mesh m) {
    SurfDistScene s;
    auto mesh = std::make_shared<Mesh>(std::move(m));
    mesh->checkNormals();
    s.mesh = mesh;
    return s;
}

SurfDistSettings Channel(int type, int channel = 1, int component = SURFCOMP_INTENSITY) {
    SurfDistSettings s;
    s.enabled = true;
    s.source = SURFDIST_CHANNEL;
    s.channelType = type, s.channel = channel, s.component = component;
    return s;
}

SurfDistSettings From(int source) {
    SurfDistSettings s;
    s.enabled = true;
    s.source = source;
    return s;
}

TEST(SurfDist, SwitchedOffOrWithoutAMeshAnswersOne) {
    SurfDistSettings off = Channel(SURFCHAN_SOFT_SELECTION);
    off.enabled = false;
    SurfDistEvaluator a(off, SceneOf(OneTriangle())), b(Channel(SURFCHAN_SOFT_SELECTION), SurfDistScene());
    for (SurfDistEvaluator* e : {&a, &b}) {
        EXPECT_EQ(e->AtFace({}, kThird, 0), 1.0f);
        EXPECT_EQ(e->AtVertex(1), 1.0f);
        EXPECT_EQ(e->Result(), AColor(1, 1, 1, 1));
    }
}

TEST(SurfDist, EveryChannelTypeAndComponent) {
    const Point3 bary(0.5f, 0.25f, 0.25f);
    const auto value = [&](int type, int channel, int component) {
        return SurfDistEvaluator(Channel(type, channel, component), SceneOf(Channels())).AtFace({}, bary, 0);
    };
    EXPECT_FLOAT_EQ(value(SURFCHAN_UVW, 1, SURFCOMP_RED), 0.25f);
    EXPECT_FLOAT_EQ(value(SURFCHAN_UVW, 1, SURFCOMP_GREEN), 0.25f);
    EXPECT_FLOAT_EQ(value(SURFCHAN_UVW, 1, SURFCOMP_BLUE), 0.5f);
    EXPECT_FLOAT_EQ(value(SURFCHAN_UVW, 1, SURFCOMP_INTENSITY), 1 / 3.0f);
    EXPECT_EQ(value(SURFCHAN_UVW, 1, SURFCOMP_ALPHA), 1.0f);
    EXPECT_EQ(value(SURFCHAN_UVW, 55, SURFCOMP_RED), 1.0f) << "a missing mapping channel is neutral";
    EXPECT_FLOAT_EQ(value(SURFCHAN_VERTEX_COLORS, 9, SURFCOMP_RED), 0.5f);
    EXPECT_FLOAT_EQ(value(SURFCHAN_SOFT_SELECTION, 9, SURFCOMP_INTENSITY), 0.375f);
    EXPECT_FLOAT_EQ(value(SURFCHAN_WEIGHTS, 9, SURFCOMP_GREEN), 0.75f);
    EXPECT_FLOAT_EQ(value(SURFCHAN_VERTEX_DATA, 7, SURFCOMP_RED), 0.3f);
    EXPECT_EQ(value(SURFCHAN_VERTEX_DATA, 8, SURFCOMP_RED), 0.0f) << "missing vertex data is zero";
    EXPECT_FLOAT_EQ(value(SURFCHAN_ILLUMINATION, 9, SURFCOMP_RED), 0.2f);
    EXPECT_FLOAT_EQ(value(SURFCHAN_ALPHA, 9, SURFCOMP_RED), 0.1f);
}

TEST(SurfDist, AtAVertexItsOwnValuesCount) {
    SurfDistEvaluator e(Channel(SURFCHAN_VERTEX_COLORS, 0, SURFCOMP_GREEN), SceneOf(Channels()));
    EXPECT_EQ(e.AtVertex(0), 0.0f);
    EXPECT_EQ(e.AtVertex(1), 1.0f);
    EXPECT_EQ(e.Result(), AColor(0, 1, 0, 1));
    EXPECT_EQ(e.AtVertex(2), 0.0f);
    Mesh loose = Channels();
    loose.verts.push_back({5, 5, 5}); // used by no face
    loose.vdata.clear();
    EXPECT_EQ(SurfDistEvaluator(Channel(SURFCHAN_VERTEX_COLORS), SceneOf(loose)).AtVertex(3), 1.0f);
}

TEST(SurfDist, ValuesAreClamped) {
    Mesh m = Channels();
    for (Point3& tv : m.maps[1].tv) tv = {-3, 5, std::nanf("")};
    const auto value = [&](int component) {
        return SurfDistEvaluator(Channel(SURFCHAN_UVW, 1, component), SceneOf(m)).AtFace({}, kThird, 0);
    };
    EXPECT_EQ(value(SURFCOMP_RED), 0.0f);
    EXPECT_EQ(value(SURFCOMP_GREEN), 1.0f);
    EXPECT_EQ(value(SURFCOMP_BLUE), 0.0f);
    EXPECT_EQ(value(SURFCOMP_INTENSITY), 0.0f) << "not a number";
}

TEST(SurfDist, Maps) {
    PlainMap map;
    SurfDistSettings s = From(SURFDIST_MAP);
    const auto value = [&](int component) {
        s.component = component;
        SurfDistEvaluator e(s, SceneOf(OneTriangle()));
        return e.AtFace({}, kThird, 0);
    };
    EXPECT_EQ(value(SURFCOMP_INTENSITY), 1.0f) << "no map is neutral";
    s.map = &map;
    EXPECT_FLOAT_EQ(value(SURFCOMP_INTENSITY), 1 / 3.0f);
    EXPECT_EQ(value(SURFCOMP_ALPHA), 0.25f);
    map.color = {std::nanf(""), 0.6f, 0.6f, std::nanf("")};
    EXPECT_EQ(value(SURFCOMP_RED), 0.0f);
    EXPECT_EQ(value(SURFCOMP_ALPHA), 0.0f);
    EXPECT_FLOAT_EQ(value(SURFCOMP_INTENSITY), 0.4f);
}

TEST(SurfDist, SubMaterials) {
    Paint a, b, c;
    a.color = {0.1f, 0, 0}, b.color = {0.2f, 0, 0}, c.color = {0.3f, 0, 0};
    Multi multi;
    multi.subs = {&a, &b, &c};
    Mesh m = OneTriangle();
    m.faces[0].SetMatID(1);
    const auto value = [&](int subMtlId, int faceId) {
        m.faces[0].SetMatID(faceId);
        SurfDistScene scene = SceneOf(m);
        scene.material = &multi;
        SurfDistSettings s = From(SURFDIST_SUBMATERIAL);
        s.subMtlId = subMtlId, s.component = SURFCOMP_RED;
        return SurfDistEvaluator(s, scene).AtFace({}, kThird, 0);
    };
    EXPECT_EQ(value(0, 1), 0.2f) << "the face's own";
    EXPECT_EQ(value(3, 1), 0.3f);
    EXPECT_EQ(c.lastMtl, 2);
    EXPECT_EQ(value(4, 1), 0.2f) << "beyond the count: the face's own";
    EXPECT_EQ(value(1000, 4), 0.2f) << "ids go round";
    multi.subs[1] = nullptr;
    EXPECT_EQ(value(2, 0), 1.0f) << "an empty slot is neutral";
    multi.subs.clear();
    EXPECT_EQ(value(2, 0), 1.0f);
}

TEST(SurfDist, ContextOfTheShadedPoint) {
    Paint paint;
    SurfDistScene scene = SceneOf(Channels());
    scene.material = &paint;
    scene.objectTM = ScaleMatrix({1, 1, 4});
    SurfDistEvaluator e(From(SURFDIST_SUBMATERIAL), scene);
    const Point3 normal = Normalize(Point3(0, 1, 1));
    e.AtFace({0.25f, 0.5f, 0}, {0.25f, 0.25f, 0.5f}, 0, &normal);
    EXPECT_POINT_NEAR(paint.normal, Normalize(Point3(0, 4, 1)), 1e-6f);
    EXPECT_POINT_NEAR(paint.uvw, Point3(0.25f, 0.5f, 0.5f), 1e-6f);
    e.AtFace({}, kThird, 0);
    EXPECT_EQ(paint.normal, Point3(0, 0, 1)) << "without a normal: the Z axis";
    EXPECT_EQ(e.Result().a, 1.0f);
}

TEST(SurfDist, LightsOfTheSceneOnlyForFinalShading) {
    Paint paint;
    paint.color = {0.8f, 0.8f, 0.8f};
    paint.addLights = true;
    Lamp lamp;
    const auto value = [&](bool finalShading, bool lights) {
        SurfDistScene scene = SceneOf(OneTriangle());
        scene.material = &paint;
        if (lights) scene.lights = {&lamp};
        SurfDistSettings s = From(SURFDIST_SUBMATERIAL);
        s.useFinalShading = finalShading;
        return SurfDistEvaluator(s, scene).AtFace({}, kThird, 0);
    };
    // The stand-by light shows the material's own colour.
    EXPECT_FLOAT_EQ(value(false, true), 0.8f);
    EXPECT_FLOAT_EQ(value(false, false), 0.8f);
    EXPECT_FLOAT_EQ(value(true, true), 0.2f);
    EXPECT_FLOAT_EQ(value(true, false), 0.8f) << "the run supplies no light list";
}

TEST(SurfDist, ANodeWithoutAMaterialHasADefaultOne) {
    static int reports = 0, alive = 0;
    struct Counted : Paint {
        Counted() { ++alive; }
        ~Counted() override { --alive; }
    };
    const auto logFile = std::filesystem::temp_directory_path() / "velmar_surf_dist_test.log";
    LogSetFileName(nullptr, logFile.c_str());
    LogSetCrashCopyName(nullptr, logFile.c_str());
    const auto former = GetDiagSystem()->assertCallback.exchange([](const char*) { return ++reports > 0; });
    for (int i = 0; i < 2; ++i) {
        SurfDistScene scene = SceneOf(OneTriangle());
        scene.wireColor = {0.1f, 0.6f, 0.2f};
        scene.makeDefaultMaterial = [](const Color& c) -> Mtl* {
            auto* m = new Counted;
            m->color = c;
            return m;
        };
        SurfDistSettings s = From(SURFDIST_SUBMATERIAL);
        s.component = SURFCOMP_GREEN;
        SurfDistEvaluator e(s, scene);
        EXPECT_EQ(alive, 1);
        EXPECT_EQ(e.AtFace({}, kThird, 0), 0.6f);
    }
    EXPECT_EQ(alive, 0) << "the evaluator deletes it";
    EXPECT_EQ(reports, 1) << "reported once";
    GetDiagSystem()->assertCallback = former;
    LogSetCopyOnClose(nullptr, false);
    LogSetFileName(nullptr, nullptr); // closes the file
    std::filesystem::remove(logFile);
}

/// Evaluators of channels, for runs.
class Provider : public ISurfaceProvider {
public:
    std::unique_ptr<SurfDistEvaluator> MakeEvaluator(const SurfDistSettings& s, std::shared_ptr<const Mesh> mesh,
                                                     const Matrix3& tm) const override {
        SurfDistScene scene;
        scene.mesh = std::move(mesh);
        scene.objectTM = tm;
        return std::make_unique<SurfDistEvaluator>(s, scene);
    }
};

// A sheet whose soft selection runs from 0 on the left to 1 on the right.
Mesh Graded() {
    Mesh m = FlatGrid(8, 2);
    for (const Point3& v : m.verts) m.vdata[VDATA_SELECT].push_back((v.x + 1) / 2);
    return m;
}

std::vector<StrandRecord> GrowWith(const HairParams& p, Mesh m = Graded()) {
    const Provider provider;
    return Engine(std::move(m), p, {}, 0, &provider).Strands();
}

TEST(SurfDistUse, DensityAtTheFaceCentre) {
    HairParams p = PlainFur();
    p.SetFloat(pid_densPerFace, 20.0f);
    p.SetSurface(pid_surfDist_density, Channel(SURFCHAN_SOFT_SELECTION));
    const Provider provider;
    Engine e(Graded(), p, {}, 0, &provider);
    for (const EmitterFace& f : e.run.faces) EXPECT_NEAR(float(f.strands), 20 * (f.centre.x + 1) / 2, 1.0f);
    EXPECT_TRUE(GrowWith(p, FlatGrid(8, 2)).empty()) << "no soft selection, no strands";
}

TEST(SurfDistUse, SwitchedOffChangesNothing) {
    HairParams p = WildFur(), q = p;
    for (int i = 0; i < kNumSurfDists; ++i) {
        SurfDistSettings s = Channel(SURFCHAN_SOFT_SELECTION);
        s.enabled = false;
        q.SetSurface(kFirstSurfDistPid + i, s);
    }
    EXPECT_TRUE(GrowWith(p) == GrowWith(q));
}

TEST(SurfDistUse, FactorsOfAStrand) {
    const auto with = [](int pid, const auto& check) {
        HairParams p = PlainFur();
        p.SetFloat(pid_thickness, 0.5f);
        p.SetSurface(pid, Channel(SURFCHAN_SOFT_SELECTION));
        const auto strands = GrowWith(p);
        ASSERT_FALSE(strands.empty());
        for (const StrandRecord& s : strands) check(s, (s.root.x + 1) / 2);
    };
    with(pid_surfDist_length,
         [](const StrandRecord& s, float k) { EXPECT_NEAR(float(s.segments - 1) + s.fraction, 4 * k, 1e-4f); });
    with(pid_surfDist_thickness, [](const StrandRecord& s, float k) { EXPECT_NEAR(s.thickness, 0.5f * k, 1e-5f); });
    with(pid_surfDist_colBase, [](const StrandRecord& s, float k) { EXPECT_NEAR(s.base.g, k, 1e-5f); });
    with(pid_surfDist_colTip, [](const StrandRecord& s, float k) { EXPECT_NEAR(s.tip.r, k, 1e-5f); });
}

TEST(SurfDistUse, ZeroFactorsSwitchEffectsOff) {
    const HairParams plain = PlainFur();
    const auto expected = GrowWith(plain, FlatGrid(3, 2));
    const auto positions = [](const std::vector<StrandRecord>& strands) {
        std::vector<std::vector<Point3>> all;
        for (const StrandRecord& s : strands) all.push_back(s.position);
        return all;
    };
    const auto zero = [&](int pid, const auto& change) {
        HairParams p = plain;
        change(p);
        EXPECT_FALSE(positions(GrowWith(p, FlatGrid(3, 2))) == positions(expected)) << pid;
        p.SetSurface(pid, Channel(SURFCHAN_SOFT_SELECTION)); // the sheet has none
        EXPECT_TRUE(positions(GrowWith(p, FlatGrid(3, 2))) == positions(expected)) << pid;
    };
    const auto leaning = [](HairParams& p) { p.SetInt(pid_fur_useLeaning, 1), p.SetFloat(pid_fur_leanAngle, 40.0f); };
    zero(pid_surfDist_leanAngle, leaning);
    zero(pid_surfDist_vdirRand, [](HairParams& p) { p.SetFloat(pid_vdirRand, 0.5f); });
    const auto bending = [](HairParams& p) {
        p.SetInt(pid_fur_useBending, 1), p.SetInt(pid_fur_bendStyle, 0), p.SetFloat(pid_fur_bendAmount, 0.5f);
    };
    zero(pid_surfDist_bendAmount, bending);
    const auto clumping = [](HairParams& p) { p.SetFloat(pid_clumpAmount, 1.0f), p.SetFloat(pid_clumpRadius, 9.0f); };
    zero(pid_surfDist_clumpAmount, clumping);
    zero(pid_surfDist_clumpRadius, clumping);
}

TEST(SurfDistUse, AbsoluteLeanIsTheColourAroundGrey) {
    Mesh m = OneTriangle();
    MeshMap colors;
    colors.tv = {{1, 0.5f, 0.5f}, {0.5f, 0, 0.5f}, {0.5f, 0.5f, 0.5f}};
    colors.tf = {{{0, 1, 2}}};
    m.maps[MAP_VERTCOLOR] = colors;
    HairParams p = PlainFur();
    p.SetInt(pid_fur_useLeaning, 1);
    p.SetInt(pid_fur_leanAbsolute, 1);
    p.SetInt(pid_fur_leanDirChan, -2);
    p.SetSurface(pid_surfDist_leanAbsolute, Channel(SURFCHAN_VERTEX_COLORS));
    const Provider provider;
    Engine e(m, p, {}, 0, &provider);
    const auto direction = [&](int v) { return e.control.Strand(v)->knots[4] - e.control.Strand(v)->root; };
    EXPECT_POINT_NEAR(direction(0), Point3(1, 0, 0), 1e-6f);
    EXPECT_POINT_NEAR(direction(1), Point3(0, -1, 0), 1e-6f);
    EXPECT_POINT_NEAR(direction(2), Point3(0, 0, 1), 1e-6f) << "grey leans nowhere";
    HairRandom r;
    r.Seed(uint32_t(p.Int(pid_randSeed)));
    r.Skip(3 * 5);
    EXPECT_EQ(e.control.RandomState().state, r.state) << "the two draws are made all the same";
}

} // namespace
