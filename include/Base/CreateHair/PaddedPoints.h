#pragma once
// Points of a strand as one array a component.

#include "Base/HUtil/ThreadVector.h"
#include "sdk/point3.h"

/// A growable array that vector code may read and write a few floats beyond its end.
struct PaddedFloats {
    ThreadVector<float> data;
    void Resize(int n) { data.assign(size_t(n) + 8, 0.0f); }
    float* Data() { return data.data(); }
    const float* Data() const { return data.data(); }
    float& operator[](int i) { return data[size_t(i)]; }
    float operator[](int i) const { return data[size_t(i)]; }
};

/// Positions or tangents, one array a component.
struct PaddedPoints {
    PaddedFloats x, y, z;
    void Resize(int n) { x.Resize(n), y.Resize(n), z.Resize(n); }
    Point3 operator[](int i) const { return {x[i], y[i], z[i]}; }
    void Set(int i, const Point3& p) { x[i] = p.x, y[i] = p.y, z[i] = p.z; }
};
