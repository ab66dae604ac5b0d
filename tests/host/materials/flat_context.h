#pragma once
// A shading question with answers set by hand.

#include <vector>

#include <gtest/gtest.h>

#include "sdk/shadecontext.h"

namespace host {

inline void ExpectColor(const Color& a, const Color& b, float tolerance = 1e-6f) {
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(a[i], b[i], tolerance) << i;
}

/// A point at the origin, seen along -Z, with settable normal, coordinates and lights.
class FlatContext : public ShadeContext {
public:
    FlatContext() { filterMaps = 1; }
    LightDesc* Light(int n) override { return n >= 0 && n < int(lights.size()) ? lights[size_t(n)] : nullptr; }
    TimeValue CurTime() override { return 0; }
    Point3 Normal() override { return normal; }
    void SetNormal(const Point3& n) override { normal = n; }
    Point3 V() override { return view; }
    void SetView(const Point3& v) override { view = v; }
    Point3 P() override { return {0, 0, 0}; }
    Point3 PObj() override { return place; }
    Point3 DUVW(int) override { return duvw; }
    void DPdUVW(Point3 dP[3], int) override { dP[0] = alongU, dP[1] = alongV, dP[2] = {0, 0, 0}; }
    Point3 UVW(int channel) override { return channel == 1 ? uvw : Point3(0.9f, 0.9f, 0); }
    void ScreenUV(Point2& uv, Point2& duv) override { uv = screen, duv = Point2(); }
    void Use(LightDesc* light) {
        lights.push_back(light);
        nLights = int(lights.size());
    }
    Point3 normal{0, 0, 1}, view{0, 0, -1}, uvw;
    Point3 place, duvw;
    Point3 alongU{1, 0, 0}, alongV{0, 1, 0}; ///< a step of 1 along u and v, camera space
    Point2 screen;
    std::vector<LightDesc*> lights;
};

/// Light from a direction.
class SunDesc : public LightDesc {
public:
    explicit SunDesc(const Point3& toLight, const Color& color = {1, 1, 1}) : toLight_(toLight), color_(color) {}
    bool Illuminate(ShadeContext&, const Point3& normal, Color& color, Point3& dir, float& dot,
                    float& diffuse) override {
        color = color_;
        dir = toLight_;
        dot = diffuse = DotProd(normal, toLight_);
        return dot > 0;
    }

private:
    Point3 toLight_;
    Color color_;
};

} // namespace host
