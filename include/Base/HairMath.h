#pragma once
// Transcendental functions of the engine: single precision, the same bits on every machine.
//
// The C library's single-precision sin, cos, tan, exp, log, pow and atan give the same bits with and without fused
// multiply-add; its double-precision ones and some others do not. Everything here is built from the safe ones, square
// roots and basic arithmetic.

#include <cmath>

namespace HairMath {

inline constexpr float kPi = 3.1415927f;
inline constexpr float kHalfPi = 1.5707964f;
inline constexpr float kTwoPi = 6.2831855f;
/// Radians in a degree.
inline constexpr float kDegToRad = 0.017453292f;

inline float Sqrt(float x) {
    return std::sqrt(x);
}
inline float Sin(float x) {
    return sinf(x);
}
inline float Cos(float x) {
    return cosf(x);
}
inline float Tan(float x) {
    return tanf(x);
}
inline float Exp(float x) {
    return expf(x);
}
inline float Log(float x) {
    return logf(x);
}
/// x to the power y.
inline float Pow(float x, float y) {
    return powf(x, y);
}
inline float Log10(float x) {
    return logf(x) * 0.4342945f;
}

/// Angle of (x, y) in -pi..pi; 0 for the origin.
inline float Atan2(float y, float x) {
    if (x == 0.0f) return y > 0.0f ? kHalfPi : y < 0.0f ? -kHalfPi : 0.0f;
    const float a = atanf(y / x);
    if (x > 0.0f) return a;
    return y >= 0.0f ? a + kPi : a - kPi;
}

/// Arc cosine in 0..pi; arguments beyond -1..1 are taken as -1 or 1.
inline float Acos(float x) {
    if (x >= 1.0f) return 0.0f;
    if (x <= -1.0f) return kPi;
    return 2.0f * Atan2(std::sqrt(1.0f - x), std::sqrt(1.0f + x));
}

} // namespace HairMath
