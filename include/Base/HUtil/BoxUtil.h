#pragma once
// Helpers for axis-aligned boxes.

#include "sdk/box3.h"
#include "sdk/ray.h"

/// The box of `n` points; empty for none.
inline Box3 BoxOfPoints(int n, const Point3* points) {
    Box3 box;
    for (int i = 0; i < n; ++i) box += points[i];
    return box;
}

/// `box` with every side moved outward by `margin`; an empty box stays empty.
inline Box3 Enlarged(Box3 box, float margin) {
    box.EnlargeBy(margin);
    return box;
}

/// The box that holds both.
inline Box3 Union(Box3 a, const Box3& b) {
    a += b;
    return a;
}

/// True when the ray, from its origin on, touches the box (slab test). False for an empty box.
inline bool RayTouchesBox(const Ray& ray, const Box3& box) {
    if (box.IsEmpty()) return false;
    float nearest = 0.0f, farthest = 3.4e38f;
    for (int a = 0; a < 3; ++a) {
        const float origin = ray.p[a], dir = ray.dir[a];
        if (dir == 0.0f) {
            if (origin < box.pmin[a] || origin > box.pmax[a]) return false;
            continue;
        }
        const float t0 = (box.pmin[a] - origin) / dir, t1 = (box.pmax[a] - origin) / dir;
        nearest = std::max(nearest, std::min(t0, t1));
        farthest = std::min(farthest, std::max(t0, t1));
    }
    return nearest <= farthest;
}
