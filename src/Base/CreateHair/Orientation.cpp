#include "Base/CreateHair/Orientation.h"

#include <cmath>
#include <utility>

#include "Base/HUtil/Frames.h"
#include "Base/HairMath.h"

Point3 RotateAbout(const Point3& n, float degrees) {
    const Point3 side = std::fabs(n.x) + std::fabs(n.y) >= 0.001f ? Point3(-n.y, n.x, 0.0f) : Point3(1, 0, 0);
    const Point3 up = CrossProd(n, side);
    const float a = degrees * HairMath::kDegToRad;
    return side * HairMath::Cos(a) + up * HairMath::Sin(a);
}

void DrawOrientationAngle(StrandContext& c) {
    const HairParams& p = *c.run->params;
    c.orientAngle =
        RandomOffset(c.rng, float(p.Int(pid_orientAngle)), p.Float(pid_orientRand) * 90.0f); // draw: orientation
}

namespace {

// The corner that weighs most and has a bend direction lends it; without any, the negated root position serves.
Point3 BendAxis(const StrandContext& c) {
    int order[3] = {0, 1, 2};
    const auto heavier = [&](int a, int b) { return c.weights[order[a]] < c.weights[order[b]]; };
    if (heavier(0, 1)) std::swap(order[0], order[1]);
    if (heavier(1, 2)) std::swap(order[1], order[2]);
    if (heavier(0, 1)) std::swap(order[0], order[1]);
    for (const int i : order) {
        const Point3& bend = c.run->bendDirection[size_t(c.vertex[i])];
        if (!(bend == Point3())) return bend;
    }
    // Intended: the fallback is the root position as it is, not normalised.
    return -c.rootObject;
}

} // namespace

void OrientStrand(StrandContext& c) {
    const int axis = c.run->params->Int(pid_orientAxis);
    if (axis == 3)
        c.orientation = VectorTransform(RotateAbout(BendAxis(c), c.orientAngle), c.run->objectToOutput);
    else
        c.orientation = VectorTransform(RotateAbout(AxisByIndex(axis), c.orientAngle), c.run->request.worldToOutput);
}

Point3 OrientControlStrand(const GenerationRun& run, int vertex, float degrees) {
    const int axis = run.params->Int(pid_orientAxis);
    if (axis != 3) return VectorTransform(RotateAbout(AxisByIndex(axis), degrees), run.request.worldToOutput);
    Point3 bend = run.bendDirection[size_t(vertex)];
    if (bend == Point3()) bend = -run.mesh->verts[size_t(vertex)];
    return VectorTransform(RotateAbout(bend, degrees), run.objectToOutput);
}
