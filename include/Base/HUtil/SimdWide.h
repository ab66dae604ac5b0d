#pragma once
// What vectors of more than four floats have in common, whatever instructions they are made of.

#include "Base/HUtil/Simd.h"

/// Float8 and Float16.
template <class T>
concept WideLanes = T::kCount > Float4::kCount && T::kQuads * 4 == T::kCount;

template <WideLanes T>
[[gnu::always_inline]] inline T operator+(T a, T b) {
    return a.v + b.v;
}
template <WideLanes T>
[[gnu::always_inline]] inline T operator-(T a, T b) {
    return a.v - b.v;
}
template <WideLanes T>
[[gnu::always_inline]] inline T operator*(T a, T b) {
    return a.v * b.v;
}
template <WideLanes T>
[[gnu::always_inline]] inline T operator/(T a, T b) {
    return a.v / b.v;
}
template <WideLanes T>
[[gnu::always_inline]] inline typename T::Ints IntBits(T a) {
    return typename T::Ints(a.v);
}
template <WideLanes T>
[[gnu::always_inline]] inline T Abs(T a) {
    return MaxOr(a, T(0.0f) - a);
}
