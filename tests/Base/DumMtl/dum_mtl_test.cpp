// The default material.

#include "Base/DumMtl.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

/// A point at the origin that looks down -Z and faces the viewer, with a list of lights.
class PointContext : public ShadeContext {
public:
    PointContext() { nLights = 0; }
    TimeValue CurTime() override { return 0; }
    Point3 V() override { return {0, 0, -1}; }
    Point3 P() override { return {0, 0, -5}; }
    Point3 PObj() override { return {}; }
    Point3 Normal() override { return {0, 0, 1}; }
    Point3 UVW(int channel) override { return channel == 0 ? vertexColor : Point3(9, 9, 9); }
    LightDesc* Light(int n) override { return n < int(lights.size()) ? lights[size_t(n)] : nullptr; }
    void Add(LightDesc* light) { lights.push_back(light), nLights = int(lights.size()); }

    std::vector<LightDesc*> lights;
    Point3 vertexColor{0.25f, 0.5f, 1.0f};
};

/// Light of a fixed colour and direction.
class FixedLight : public LightDesc {
public:
    explicit FixedLight(const Point3& direction) : direction_(direction) {}
    bool Illuminate(ShadeContext&, const Point3& normal, Color& color, Point3& dir, float& cosine,
                    float& diffuse) override {
        if (!reaches) return false;
        color = Color(1, 1, 1);
        dir = direction_;
        cosine = DotProd(dir, normal);
        diffuse = 0.75f;
        return true;
    }
    bool reaches = true;

private:
    Point3 direction_;
};

Color Shade(DumMtl& material, ShadeContext& sc) {
    sc.out.Reset();
    material.Shade(sc);
    return sc.out.c;
}

} // namespace

TEST(DumMtl, ShadowModeIsBlackAndClear) {
    DumMtl material(Point3(1, 1, 1), false);
    PointContext sc;
    FixedLight light({0, 0, 1});
    sc.Add(&light);
    sc.mode = SCMODE_SHADOW;
    EXPECT_EQ(Shade(material, sc), Color(0, 0, 0));
    EXPECT_EQ(sc.out.t, Color(1, 1, 1));
}

TEST(DumMtl, AmbientAloneGivesThreeTenthsOfTheBase) {
    DumMtl material(Point3(0.5f, 0.25f, 1.0f), false);
    PointContext sc;
    sc.ambientLight = Color(1, 1, 1);
    EXPECT_EQ(Shade(material, sc), Color(0.3f * 0.5f, 0.3f * 0.25f, 0.3f));
    EXPECT_EQ(sc.out.t, Color(0, 0, 0));
}

TEST(DumMtl, VertexColorStandsForTheBase) {
    DumMtl material(Point3(0, 0, 0), true);
    PointContext sc;
    sc.ambientLight = Color(1, 1, 1);
    EXPECT_EQ(Shade(material, sc), Color(0.3f * 0.25f, 0.3f * 0.5f, 0.3f));
}

TEST(DumMtl, DiffuseTakesTheCoefficientAndSpecularTheCosine) {
    DumMtl material(Point3(0.5f, 0.5f, 0.5f), false);
    PointContext sc;
    // At 60 degrees to the mirror direction: its cosine is 0.5.
    FixedLight light({0, std::sqrt(0.75f), 0.5f});
    sc.Add(&light);
    const float highlight = powf(0.5f, powf(2.0f, 2.5f)) * 0.5f * 0.5f;
    const float expected = 0.75f * 0.5f + highlight;
    EXPECT_NEAR(Shade(material, sc).r, expected, 1e-6f);
    light.affectDiffuse = false;
    EXPECT_NEAR(Shade(material, sc).r, highlight, 1e-6f);
    light.affectDiffuse = true, light.affectSpecular = false;
    EXPECT_NEAR(Shade(material, sc).r, 0.375f, 1e-6f);
    light.affectSpecular = true, light.reaches = false;
    EXPECT_EQ(Shade(material, sc), Color(0, 0, 0));
}

TEST(DumMtl, LightFromBehindGivesNoHighlight) {
    DumMtl material(Point3(1, 1, 1), false);
    PointContext sc;
    FixedLight light({0, 0, -1});
    light.affectDiffuse = false;
    sc.Add(&light);
    EXPECT_EQ(Shade(material, sc), Color(0, 0, 0));
}

TEST(DumMtl, Queries) {
    DumMtl material(Point3(0.1f, 0.2f, 0.3f), false);
    EXPECT_EQ(material.GetName(), "Hair Default");
    EXPECT_EQ(material.Requirements(0), 0x10000u);
    EXPECT_EQ(material.GetDiffuse(), Color(0.1f, 0.2f, 0.3f));
    EXPECT_EQ(material.GetAmbient(), Color(0, 0, 0));
    EXPECT_EQ(material.GetSpecular(), Color(0, 0, 0));
    EXPECT_EQ(material.Validity(7), FOREVER);
    EXPECT_EQ(material.NumSubMtls(), 0);
    EXPECT_EQ(material.NumSubTexmaps(), 0);
    EXPECT_EQ(material.SuperClassID(), MATERIAL_CLASS_ID);
}

TEST(DumMtl, KeepsAReferenceForOthers) {
    DumMtl material(Point3(0, 0, 0), true), other(Point3(0, 0, 0), true);
    EXPECT_EQ(material.ReplaceReference(0, &other), REF_SUCCEED);
    EXPECT_EQ(material.GetReference(0), &other);
    EXPECT_EQ(material.ReplaceReference(1, &other), REF_FAIL);
    material.ReplaceReference(0, nullptr);
}

TEST(DumMtl, ClonesItsColours) {
    DumMtl material(Point3(0.1f, 0.2f, 0.3f), false);
    RemapDir remap;
    auto* copy = static_cast<DumMtl*>(remap.CloneRef(&material));
    EXPECT_EQ(copy->GetDiffuse(), material.GetDiffuse());
    EXPECT_FALSE(copy->UsesVertexColor());
    copy->DeleteThis();
}
