#pragma once
// Small scenes for pictures.

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/camera.h"
#include "core/light.h"
#include "materials/std_mtl.h"
#include "render/frame.h"

namespace host {

/// A core with the renderer's classes, and short ways to fill it.
class SceneTest : public testing::Test {
protected:
    SceneTest() {
        RegisterRenderClasses(core);
        settings.width = 40;
        settings.height = 30;
        settings.threads = 2;
    }

    TargetCamera* AddCamera(const Point3& position, const Point3& target, float fov = 0.9f) {
        auto* const camera = new TargetCamera;
        camera->Params()->SetValue(kCamFov, 0, fov);
        camera->Params()->SetValue(kCamTargetDist, 0, Length(target - position));
        Node* const node = core.CreateNode("cam", camera);
        node->SetNodeTM(0, LookAtMatrix(position, target));
        return camera;
    }
    Light* AddLight(LightType type, const Point3& position, const Point3& target, const Color& color = {1, 1, 1}) {
        auto* const light = new Light(type);
        light->Params()->SetValue(kLightColor, 0, color);
        lightNode = core.CreateNode("light", light);
        lightNode->SetNodeTM(0, LookAtMatrix(position, target));
        return light;
    }
    StdMtl* AddMaterial(const Color& diffuse) {
        auto* const material = core.Adopt(new StdMtl);
        material->Params()->SetValue(kStdDiffuse, 0, diffuse);
        return material;
    }
    Node* AddMesh(const std::string& name, const Mesh& mesh, Mtl* material) {
        auto* const object = new TriObject;
        object->mesh = mesh;
        Node* const node = core.CreateNode(name, object);
        node->SetMtl(material);
        return node;
    }
    FrameResult Render() { return RenderFrame(core, settings, nullptr, picture, stats); }
    Color ColorAt(int x, int y) const { return Color(picture.GetPixel(x, y)); }
    float AlphaAt(int x, int y) const { return picture.GetPixel(x, y).a; }
    float DepthAt(int x, int y) const { return picture.Z()[size_t(y) * size_t(picture.Width()) + size_t(x)]; }

    Core core;
    FrameSettings settings;
    FrameStats stats;
    Picture picture;
    Node* lightNode = nullptr;
};

/// Square in the plane z = 0, side 2 `half`, facing +Z; channel 1 maps it to 0..1.
inline Mesh PlaneMesh(float half) {
    Mesh m;
    m.verts = {{-half, -half, 0}, {half, -half, 0}, {half, half, 0}, {-half, half, 0}};
    const int corners[2][3] = {{0, 1, 2}, {0, 2, 3}};
    MeshMap map;
    map.tv = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};
    for (const auto& c : corners) {
        Face f;
        TVFace t;
        for (int i = 0; i < 3; ++i) f.v[i] = t.t[i] = c[i];
        m.faces.push_back(f);
        map.tf.push_back(t);
    }
    m.maps[1] = map;
    return m;
}

/// Box from `lo` to `hi`, faces outward, no smoothing.
inline Mesh BoxMesh(const Point3& lo, const Point3& hi) {
    Mesh m;
    for (int i = 0; i < 8; ++i) m.verts.push_back(Box3(lo, hi).Corner(i));
    const int quads[6][4] = {{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}};
    for (const auto& q : quads)
        for (int half = 0; half < 2; ++half) {
            Face f;
            f.v[0] = q[0], f.v[1] = q[1 + half], f.v[2] = q[2 + half];
            m.faces.push_back(f);
        }
    return m;
}

/// Unit sphere of `rings` x 2 `rings` patches, smooth.
inline Mesh SphereMesh(int rings, float radius = 1) {
    Mesh m;
    const int columns = 2 * rings;
    for (int r = 0; r <= rings; ++r)
        for (int c = 0; c < columns; ++c) {
            const double a = M_PI * r / rings, b = 2 * M_PI * c / columns;
            m.verts.push_back(
                Point3(float(std::sin(a) * std::cos(b)), float(std::sin(a) * std::sin(b)), float(std::cos(a))) *
                radius);
        }
    for (int r = 0; r < rings; ++r)
        for (int c = 0; c < columns; ++c) {
            const int next = (c + 1) % columns;
            const int a = r * columns + c, b = (r + 1) * columns + c, d = (r + 1) * columns + next,
                      e = r * columns + next;
            for (const auto& t : {std::vector<int>{a, b, d}, std::vector<int>{a, d, e}}) {
                Face f;
                f.smGroup = 1;
                for (int i = 0; i < 3; ++i) f.v[i] = t[size_t(i)];
                m.faces.push_back(f);
            }
        }
    return m;
}

inline void ExpectColor(const Color& actual, const Color& expected, float tolerance, const std::string& where = "") {
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(actual[i], expected[i], tolerance) << where << " component " << i;
}

} // namespace host
