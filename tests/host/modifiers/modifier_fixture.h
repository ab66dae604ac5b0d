#pragma once
// A node with a mesh for modifiers to work on.

#include <gtest/gtest.h>

#include <cmath>

#include "core/core.h"
#include "shapes/primitives.h"

namespace modifier_test {

inline void ExpectNear(const Point3& a, const Point3& b, float tolerance = 1e-5f) {
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(a[k], b[k], tolerance) << k;
}

inline BitArray Bits(int size, std::initializer_list<int> set) {
    BitArray bits(size);
    for (const int i : set) bits.Set(i);
    return bits;
}

struct ModifierTest : testing::Test {
    host::Core core;
    TriObject* tri = core.Adopt(new TriObject);
    host::Node* node = core.CreateNode("n", tri);

    void SetMesh(Mesh mesh) {
        tri->mesh = std::move(mesh);
        node->InvalidateWorldState();
    }
    template <class M>
    M* Put(M* m) {
        core.Adopt(m);
        EXPECT_TRUE(node->AddModifier(m));
        return m;
    }
    const Mesh& Result(TimeValue t = 0) { return static_cast<TriObject*>(node->EvalWorldState(t).obj)->mesh; }
    Interval Valid(TimeValue t = 0) { return node->EvalWorldState(t).valid; }
};

} // namespace modifier_test
