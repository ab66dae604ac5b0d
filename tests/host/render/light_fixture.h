#pragma once
// A lit ground.

#include <cmath>

#include "materials/std_mtl.h"
#include "scene_fixture.h"

namespace host {

class LightTest : public SceneTest {
protected:
    /// A plane at z = 0 seen straight from above by a parallel camera: a unit is 4 pixels, the origin at (20, 15).
    void AddGround() {
        TargetCamera* const camera = AddCamera({0, 0, 10}, {0, 0, 0}, float(M_PI / 2));
        camera->Params()->SetValue(kCamOrtho, 0, 1);
        camera->Params()->SetValue(kCamFov, 0, 2 * std::atan(0.5f));
        ground = AddMesh("ground", PlaneMesh(50), AddMaterial({1, 1, 1}));
    }
    static Point3 GroundPoint(int x, int y) { return {(float(x) + 0.5f - 20) / 4, -(float(y) + 0.5f - 15) / 4, 0}; }
    Node* ground = nullptr;
};

} // namespace host
