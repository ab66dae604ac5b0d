// What materials, maps and lights are told about a strand point or the background.

#include "Base/HairShadeContext.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Base/EngineFixture.h"

namespace {

using namespace engine;

class Picture : public RenderGlobalContext {
public:
    Picture(int w, int h) { devWidth = w, devHeight = h; }
    std::vector<RenderInstance> instances;
    int NumRenderInstances() override { return int(instances.size()); }
    RenderInstance* GetRenderInstance(int i) override { return &instances[size_t(i)]; }
};

class ViewMap : public Texmap {
public:
    AColor EvalColor(ShadeContext& sc) override { return AColor(Color(sc.V())); }
};

void Place(HairShadeContext& sc, const Point3& p, const Point3& n, Point2 screen = {}, bool back = false,
           const Point3* uvw = nullptr, int first = 0, int count = 0) {
    sc.SetPoint(p, {7, 8, 9}, n, {0.2f, 0.3f, 0.5f}, uvw, first, count, screen, 4, 11, back);
}

TEST(ShadeContext, AsItIsBorn) {
    HairShadeContext sc;
    EXPECT_EQ(sc.mode, 0);
    EXPECT_TRUE(sc.doMaps);
    EXPECT_FALSE(sc.filterMaps);
    EXPECT_FALSE(sc.shadow);
    EXPECT_FALSE(sc.backFace);
    EXPECT_EQ(sc.nLights, 1);
    EXPECT_EQ(sc.rayLevel, 0);
    EXPECT_EQ(sc.globContext, nullptr);
    EXPECT_EQ(sc.P(), Point3());
    EXPECT_EQ(sc.NodeID(), -1);
    EXPECT_EQ(sc.ProjType(), 0);
    EXPECT_EQ(sc.Node(), nullptr);
    EXPECT_EQ(sc.UVW(1), Point3());
    EXPECT_EQ(sc.DUVW(1), Point3());
    EXPECT_EQ(sc.NRenderElements(), 0);
    EXPECT_EQ(sc.GetRenderElement(0), nullptr);
}

TEST(ShadeContext, LightsWithAndWithoutAList) {
    HairShadeContext sc;
    LightDesc* standBy = sc.Light(0);
    ASSERT_NE(standBy, nullptr);
    EXPECT_EQ(sc.Light(1), nullptr);
    EXPECT_EQ(sc.Light(-1), nullptr);
    LDTmp a, b;
    LightDesc* list[] = {&a, &b};
    sc.SetLights(2, list);
    EXPECT_EQ(sc.nLights, 2);
    EXPECT_EQ(sc.Light(0), &a);
    EXPECT_EQ(sc.Light(1), &b);
    EXPECT_EQ(sc.Light(2), nullptr);
    EXPECT_EQ(sc.Light(-1), nullptr);
    sc.SetLights(0, nullptr);
    EXPECT_EQ(sc.Light(0), nullptr) << "an empty list is a list";
}

TEST(ShadeContext, StandByLight) {
    HairShadeContext sc;
    Color color;
    Point3 dir;
    float cosine = 0, diffuse = 0;
    const Point3 normal(0, 0.6f, 0.8f);
    EXPECT_TRUE(sc.Light(0)->Illuminate(sc, normal, color, dir, cosine, diffuse));
    EXPECT_EQ(color, Color(1, 1, 1));
    EXPECT_EQ(dir, normal);
    EXPECT_EQ(cosine, 1.0f);
    EXPECT_EQ(diffuse, 1.0f);
    cosine = 0;
    EXPECT_TRUE(sc.Light(0)->Illuminate(sc, normal, color, dir, cosine));
    EXPECT_EQ(cosine, 1.0f);
}

TEST(ShadeContext, ThePointAndItsView) {
    HairShadeContext sc;
    Picture picture(640, 480);
    sc.globContext = &picture;
    const Point3 uvw[3] = {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}};
    Place(sc, {0, 3, -4}, {0, 0, 1}, {10, 20}, false, uvw, -2, 3);
    EXPECT_EQ(sc.P(), Point3(0, 3, -4));
    EXPECT_EQ(sc.PObj(), Point3(7, 8, 9));
    EXPECT_EQ(sc.BarycentricCoords(), Point3(0.2f, 0.3f, 0.5f));
    EXPECT_EQ(sc.FaceNumber(), 11);
    EXPECT_EQ(sc.mtlNum, 4);
    EXPECT_POINT_NEAR(sc.V(), Point3(0, 0.6f, -0.8f), 1e-6f);
    EXPECT_EQ(sc.OrigView(), sc.V());
    EXPECT_EQ(sc.UVW(-2), uvw[0]);
    EXPECT_EQ(sc.UVW(0), uvw[2]);
    EXPECT_EQ(sc.UVW(1), Point3());
    EXPECT_EQ(sc.UVW(-3), Point3());
    picture.projType = PROJ_PARALLEL;
    Place(sc, {0, 3, -4}, {0, 0, 1});
    EXPECT_EQ(sc.ProjType(), 1);
    EXPECT_EQ(sc.V(), Point3(0, 0, 1));
    sc.SetView({1, 0, 0});
    EXPECT_EQ(sc.V(), Point3(1, 0, 0));
}

TEST(ShadeContext, PixelsAreRoundedAndKeptInside) {
    HairShadeContext sc;
    Picture picture(640, 480);
    sc.globContext = &picture;
    const auto pixel = [&](float x, float y) {
        Place(sc, {0, 0, -1}, {0, 0, 1}, {x, y});
        return sc.ScreenCoord();
    };
    EXPECT_EQ(pixel(-0.7f, 10.2f), (IPoint2{0, 10}));
    EXPECT_EQ(pixel(3.5f, 3.49f), (IPoint2{4, 3}));
    EXPECT_EQ(pixel(639.9f, 1000.0f), (IPoint2{639, 479}));
    EXPECT_EQ(pixel(-50, -50), (IPoint2{0, 0}));
}

TEST(ShadeContext, ScreenUv) {
    HairShadeContext sc;
    sc.SetHalfImageSize(320, 240);
    Place(sc, {0, 0, -1}, {0, 0, 1}, {160, 120});
    Point2 uv, duv;
    sc.ScreenUV(uv, duv);
    EXPECT_FLOAT_EQ(uv.x, (((160.0f - 320) + 0.5f) / 320 + 1) * 0.5f);
    EXPECT_FLOAT_EQ(uv.y, (-120.0f / 240 + 1) * 0.5f);
    EXPECT_FLOAT_EQ(duv.x, 0.5f / 320);
    EXPECT_FLOAT_EQ(duv.y, 0.5f / 240);
}

TEST(ShadeContext, BackFacesTurnTheNormals) {
    HairShadeContext sc;
    Place(sc, {0, 0, -1}, {0, 0.6f, 0.8f}, {}, true);
    for (const Point3& n : {sc.Normal(), sc.OrigNormal(), sc.GNormal()}) EXPECT_EQ(n, Point3(-0.0f, -0.6f, -0.8f));
    Place(sc, {0, 0, -1}, {0, 0.6f, 0.8f});
    for (const Point3& n : {sc.Normal(), sc.OrigNormal(), sc.GNormal()}) EXPECT_EQ(n, Point3(0, 0.6f, 0.8f));
}

TEST(ShadeContext, ReflectAndRefract) {
    HairShadeContext sc;
    Place(sc, {3, 0, -4}, {0, 0, 1}); // V = (0.6, 0, -0.8)
    EXPECT_POINT_NEAR(sc.ReflectVector(), Point3(0.6f, 0, 0.8f), 1e-6f);
    EXPECT_POINT_NEAR(sc.RefractVector(1), Point3(0.6f, 0, -0.8f), 1e-6f);
    EXPECT_POINT_NEAR(sc.RefractVector(0), Point3(0.6f, 0, -0.8f), 1e-6f); // eta is 1
    EXPECT_POINT_NEAR(sc.RefractVector(2), Point3(0.3f, 0, -std::sqrt(1 - 0.09f)), 1e-6f);
    EXPECT_POINT_NEAR(sc.RefractVector(0.5f), sc.ReflectVector(), 1e-6f); // total reflection: eta 2, k < 0
    Place(sc, {3, 0, -4}, {0, 0, -1}, {}, true);
    EXPECT_POINT_NEAR(sc.RefractVector(1.5f), Point3(0.9f, 0, -std::sqrt(1 - 0.81f)), 1e-6f); // eta is the index itself
}

TEST(ShadeContext, RelativeToTheObjectsBox) {
    HairShadeContext sc;
    Place(sc, {0, 0, -1}, {0, 0, 1});
    Box3 box;
    box += Point3(7, 0, 8), box += Point3(9, 16, 9);
    sc.SetObjectBox(box);
    EXPECT_EQ(sc.PObjRelBox(), Point3(-1, 0, 1));
    EXPECT_EQ(sc.ObjectBox().pmin, box.pmin);
}

TEST(ShadeContext, FramesOfReference) {
    HairShadeContext sc;
    const Point3 p(1, 2, 3);
    EXPECT_EQ(sc.PointTo(p, REF_WORLD), p) << "without transforms nothing moves";
    const Matrix3 objToWorld = TurnedAndMoved() * TransMatrix({0, 0, 9}), worldToCam = Inverse(TurnedAndMoved());
    sc.SetTransforms(&objToWorld, &worldToCam);
    EXPECT_POINT_NEAR(sc.PointTo(p, REF_WORLD), p * TurnedAndMoved(), 1e-5f);
    EXPECT_POINT_NEAR(sc.PointFrom(p, REF_WORLD), p * worldToCam, 1e-5f);
    EXPECT_POINT_NEAR(sc.PointTo(p, REF_OBJECT), p * Inverse(objToWorld * worldToCam), 1e-4f);
    EXPECT_POINT_NEAR(sc.PointFrom(p, REF_OBJECT), p * (objToWorld * worldToCam), 1e-4f);
    EXPECT_EQ(sc.PointTo(p, REF_CAMERA), p);
    EXPECT_POINT_NEAR(sc.VectorTo(p, REF_WORLD), VectorTransform(p, TurnedAndMoved()), 1e-5f);
    EXPECT_POINT_NEAR(sc.VectorFrom(sc.VectorTo(p, REF_OBJECT), REF_OBJECT), p, 1e-5f);
    sc.SetTransforms(&objToWorld, nullptr); // with one missing all are absent
    EXPECT_EQ(sc.PointTo(p, REF_WORLD), p);
    EXPECT_EQ(sc.PointFrom(p, REF_OBJECT), p);
    const Matrix3 given = TransMatrix({5, 0, 0});
    sc.SetTransforms(&objToWorld, &worldToCam, nullptr, &given);
    EXPECT_EQ(sc.PointTo(p, REF_WORLD), p + Point3(5, 0, 0));
}

TEST(ShadeContext, NodeIdIsTheLastInstanceOfTheNode) {
    HairShadeContext sc;
    Picture picture(10, 10);
    sc.globContext = &picture;
    INode* node = reinterpret_cast<INode*>(&picture); // never looked into
    picture.instances.resize(4);
    picture.instances[1].node = node;
    picture.instances[2].node = node;
    sc.SetNode(node, 320);
    EXPECT_EQ(sc.NodeID(), 2);
    EXPECT_EQ(sc.CurTime(), 320);
    picture.instances[1].node = picture.instances[2].node = nullptr;
    EXPECT_EQ(sc.NodeID(), -1);
}

TEST(ShadeContext, EnvironmentsSeeTheGivenViewForOneCall) {
    HairShadeContext sc;
    Place(sc, {0, 0, -1}, {0, 0, 1});
    ViewMap map;
    EXPECT_EQ(sc.EvalEnvironMap(&map, {0.1f, 0.2f, 0.3f}), Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(sc.V(), Point3(0, 0, -1));
    EXPECT_EQ(sc.EvalEnvironMap(nullptr, {1, 0, 0}), Color());
}

TEST(BackgroundContext, TheEnvironmentMapOrTheHostsColour) {
    Picture picture(10, 10);
    BGContext sc(&picture, 160, {0, 0.6f, -0.8f});
    Color bg, transparency;
    sc.GetBGColor(bg, transparency);
    EXPECT_EQ(transparency, Color(1, 1, 1));
    ViewMap map;
    picture.envMap = &map;
    sc.GetBGColor(bg, transparency);
    EXPECT_EQ(bg, Color(Point3(0, 0.6f, -0.8f)));
    EXPECT_EQ(transparency, Color(1, 1, 1));
    EXPECT_EQ(sc.EvalEnvironMap(&map, {1, 0, 0}), Color(1, 0, 0));
    EXPECT_EQ(sc.V(), Point3(0, 0.6f, -0.8f));
}

} // namespace
