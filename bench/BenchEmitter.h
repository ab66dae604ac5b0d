#pragma once
// Emitters for benches: meshes that need no scene.

#include <cmath>
#include <memory>

#include "Base/CtlHairMesh/EmitterSource.h"

/// A mesh that never moves.
class BenchEmitter : public IEmitterSource {
public:
    explicit BenchEmitter(Mesh m) {
        auto mesh = std::make_shared<Mesh>(std::move(m));
        mesh->checkNormals();
        mesh_ = mesh;
    }
    std::shared_ptr<const Mesh> MeshAt(TimeValue, Interval&) override { return mesh_; }
    Matrix3 ObjectTM(TimeValue, Interval&) override { return Matrix3(); }

private:
    std::shared_ptr<const Mesh> mesh_;
};

/// A gently waved sheet of n x n quads, `size` wide.
inline Mesh WavedSheet(int n, float size) {
    Mesh m;
    for (int y = 0; y <= n; ++y)
        for (int x = 0; x <= n; ++x) {
            const float u = float(x) / float(n), v = float(y) / float(n);
            m.verts.push_back(
                {(u - 0.5f) * size, (v - 0.5f) * size, 0.05f * size * std::sin(6.0f * u) * std::cos(5.0f * v)});
        }
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x) {
            const int a = y * (n + 1) + x, b = a + 1, c = a + n + 1, d = c + 1;
            Face f1, f2;
            f1.v[0] = a, f1.v[1] = b, f1.v[2] = d;
            f2.v[0] = a, f2.v[1] = d, f2.v[2] = c;
            m.faces.push_back(f1);
            m.faces.push_back(f2);
        }
    return m;
}
