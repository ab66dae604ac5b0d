#pragma once
// A scene with a sphere that grows fur, and a small camera that shoots one segment a pixel, as a host's renderer would.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "Base/BaseAtmo.h"
#include "FurAtmo/FurAtmo.h"
#include "HRendAtm/HairRender.h"
#include "HairAtmo/HairAtmo.h"
#include "core/core.h"
#include "sdk/object.h"

/// A sphere of `rings` x `slices` quads cut into triangles, with a mapping channel 1.
inline Mesh SphereMesh(float radius, int rings, int slices) {
    Mesh mesh;
    MeshMap map;
    for (int r = 0; r <= rings; ++r) {
        for (int s = 0; s <= slices; ++s) {
            const float a = 3.1415927f * float(r) / float(rings), b = 6.2831853f * float(s) / float(slices);
            mesh.verts.push_back({radius * sinf(a) * cosf(b), radius * sinf(a) * sinf(b), radius * cosf(a)});
            map.tv.push_back({float(s) / float(slices), float(r) / float(rings), 0});
        }
    }
    const auto add = [&](int a, int b, int c) {
        Face f;
        f.v[0] = a, f.v[1] = b, f.v[2] = c;
        f.smGroup = 1;
        mesh.faces.push_back(f);
        map.tf.push_back({{a, b, c}});
    };
    for (int r = 0; r < rings; ++r) {
        for (int s = 0; s < slices; ++s) {
            const int a = r * (slices + 1) + s, b = a + slices + 1;
            if (r > 0) add(a, b, a + 1);
            if (r < rings - 1) add(a + 1, b, b + 1);
        }
    }
    mesh.maps[1] = map;
    return mesh;
}

/// A light from the camera's side.
class FrontLight : public ObjLightDesc {
public:
    int Update(TimeValue, RenderGlobalContext*) override { return 1; }
    void UpdateViewDepParams(const Matrix3&) override {}
    using ObjLightDesc::Illuminate;
    bool Illuminate(ShadeContext&, const Point3& normal, Color& color, Point3& dir, float& cosine,
                    float& diffuse) override {
        dir = Point3(0, 0, 1);
        cosine = DotProd(dir, normal);
        diffuse = cosine > 0 ? cosine : 0;
        color = tint;
        return true;
    }
    Color tint{1, 1, 1};
};

/// The picture of a camera at (0, 0, distance) that looks down -Z.
class FakeContext : public RenderGlobalContext {
public:
    FakeContext(int width, int height, float distance) {
        devWidth = width, devHeight = height;
        xc = float(width) / 2, yc = float(height) / 2;
        xscale = -float(width), yscale = float(width);
        camToWorld = TransMatrix({0, 0, distance});
        worldToCam = Inverse(camToWorld);
        farRange = 1000;
    }
    int NumLights() override { return int(lights.size()); }
    ObjLightDesc* GetLight(int i) override { return lights[size_t(i)]; }
    std::vector<ObjLightDesc*> lights;
};

/// One camera sample.
class SampleContext : public ShadeContext {
public:
    TimeValue CurTime() override { return 0; }
    Point3 V() override { return {0, 0, -1}; }
    Point3 P() override { return {}; }
    Point3 PObj() override { return {}; }
    IPoint2 ScreenCoord() override { return pixel; }
    IPoint2 pixel;
};

/// A picture: colour and transparency by pixel.
struct Picture {
    std::vector<Color> color, trans;
    bool operator==(const Picture&) const = default;
    int Covered() const {
        int n = 0;
        for (const Color& t : trans) n += t.r < 0.999f;
        return n;
    }
    /// Sum of the colours of all pixels.
    double Light() const {
        double sum = 0;
        for (const Color& c : color) sum += double(c.r) + double(c.g) + double(c.b);
        return sum;
    }
};

/// One segment through a pixel, from the camera to far behind the object: adds what all effects of the scene answer.
inline void ShadePixel(host::Core& core, FakeContext& context, SampleContext& sample, Color& c, Color& t) {
    const Point3 eye = context.camToWorld.GetTrans();
    const float z = -2 * eye.z;
    const Point3 far((float(sample.pixel.x) + 0.5f - context.xc) / context.xscale * z,
                     (float(sample.pixel.y) + 0.5f - context.yc) / context.yscale * z, z);
    for (int i = 0; i < core.NumAtmospheric(); ++i)
        core.GetAtmospheric(i)->Shade(sample, eye, far * context.camToWorld, c, t);
}

/// Renders all atmospheric effects of the scene, one segment a pixel from the camera to far behind the object.
inline Picture RenderScene(host::Core& core, FakeContext& context) {
    Picture picture;
    Interval valid = FOREVER;
    for (int i = 0; i < core.NumAtmospheric(); ++i) {
        core.GetAtmospheric(i)->RenderBegin(context.time);
        core.GetAtmospheric(i)->Update(context.time, valid);
    }
    SampleContext sample;
    sample.globContext = &context;
    for (int y = 0; y < context.devHeight; ++y) {
        for (int x = 0; x < context.devWidth; ++x) {
            sample.pixel = {x, y};
            Color c(0, 0, 0), t(1, 1, 1);
            ShadePixel(core, context, sample, c, t);
            picture.color.push_back(c);
            picture.trans.push_back(t);
        }
    }
    for (int i = 0; i < core.NumAtmospheric(); ++i) core.GetAtmospheric(i)->RenderEnd(context.time);
    return picture;
}

/// A core with a sphere of radius 10, and a fur object on it that the scene owns.
class AtmoTest : public testing::Test {
protected:
    AtmoTest() : scope_(core) {
        object = new TriObject;
        object->mesh = SphereMesh(10, 8, 12);
        node = core.CreateNode("ball", object);
        core.SetAmbient({0, 0, 0});
    }
    /// A new object as the host makes it, in the list of effects, with the sphere as its emitter.
    BaseAtmo* Make(ClassDesc2* desc) {
        auto* made = static_cast<BaseAtmo*>(static_cast<ReferenceTarget*>(desc->Create(false)));
        core.Adopt(static_cast<ReferenceTarget*>(made));
        core.AddAtmosphere(made);
        EXPECT_TRUE(made->AddNode(pid_emitters, node));
        return made;
    }
    BaseAtmo* MakeFur() {
        BaseAtmo* fur = Make(GetFurAtmoClassDesc());
        Set(*fur, pid_densPerArea, 2.0f);
        Set(*fur, pid_thickness, 0.2f);
        return fur;
    }
    template <class T>
    static bool Set(BaseAtmo& atmo, int pid, T value) {
        IParamBlock2* block = atmo.BlockOf(pid);
        return block && block->SetValue(ParamID(pid), 0, value);
    }
    static void SetThreads(host::Core& core, int n) { core.RenderParams().maxThreads = n; }

    host::Core core;
    TriObject* object = nullptr;
    host::Node* node = nullptr;

private:
    host::Core::Scope scope_;
};
