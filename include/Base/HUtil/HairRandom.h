#pragma once
// The pseudo-random generator of all hair generation, and the shaping of its draws into factors, offsets, barycentric
// points and rotations. How many values a helper draws, and in which order, is part of its contract.

#include <cmath>
#include <cstdint>

#include "Base/HUtil/HairColor.h"
#include "sdk/point3.h"
#include "sdk/quat.h"

/// Linear congruential generator: state * 214013 + 2531011 (mod 2^32), output bits 16..30.
struct HairRandom {
    uint32_t state = 0;

    static constexpr uint32_t kMultiplier = 214013u, kIncrement = 2531011u;
    /// The largest output.
    static constexpr int kMax = 32767;

    constexpr void Seed(uint32_t seed) { state = seed; }
    /// The next output, 0..32767.
    constexpr int Draw() {
        state = state * kMultiplier + kIncrement;
        return int((state >> 16) & 0x7FFFu);
    }
    /// Passes over `n` outputs in O(log n): the step is squared and composed as an affine map.
    constexpr void Skip(uint64_t n) {
        uint32_t mul = 1, add = 0, stepMul = kMultiplier, stepAdd = kIncrement;
        for (; n != 0; n >>= 1) {
            if (n & 1) mul *= stepMul, add = add * stepMul + stepAdd;
            stepAdd *= stepMul + 1;
            stepMul *= stepMul;
        }
        state = state * mul + add;
    }
};

/// The calling thread's own generator, for callers that are handed none.
inline HairRandom& ThreadHairRandom() {
    thread_local HairRandom random;
    return random;
}

/// A signed draw: (r - 16383) / 16383, in -1..1 (the largest output lies one step above 1). One draw.
inline float RandomSignedUnit(HairRandom& random) {
    return float(random.Draw() - 16383) / 16383.0f;
}

/// A draw in 0..1: r / 32767. One draw.
inline float RandomUnit(HairRandom& random) {
    return float(random.Draw()) / 32767.0f;
}

/// `x` toward zero as an integer; values beyond the integer range give its ends, not-a-number gives 0.
inline int TruncToInt(float x) {
    if (x >= 2147483648.0f) return INT32_MAX;
    if (x <= -2147483648.0f) return INT32_MIN;
    return x == x ? int(x) : 0;
}

/// Rounds up with the probability of the fraction: i = trunc(x), one more when (x - i) * 32767 > r. One draw.
inline int RandomRound(HairRandom& random, float x) {
    const int r = random.Draw();
    const int i = TruncToInt(x);
    return (x - float(i)) * 32767.0f > float(r) && i != INT32_MAX ? i + 1 : i;
}

/// A point uniform over a triangle, as barycentric coordinates. Two draws: a, b.
inline Point3 RandomBarycentric(HairRandom& random) {
    int a = random.Draw();
    int b = random.Draw();
    if (a + b > HairRandom::kMax) {
        a = HairRandom::kMax - a;
        b = HairRandom::kMax - b;
    }
    return {float(a) / 32767.0f, float(b) / 32767.0f, float(HairRandom::kMax - a - b) / 32767.0f};
}

/// Sine and cosine of a rotation.
struct SinCos {
    float sin = 0, cos = 1;
};

/// A random sine in -amount..amount with its cosine. One draw.
inline SinCos RandomSigned(HairRandom& random, float amount) {
    const float s = amount * RandomSignedUnit(random);
    const float rest = 1.0f - s * s;
    return {s, rest > 0.0f ? std::sqrt(rest) : 0.0f};
}

/// x + x * amount * s. One draw.
inline float RandomScale(HairRandom& random, float x, float amount) {
    return x + x * amount * RandomSignedUnit(random);
}

/// x + amount * s. One draw.
inline float RandomOffset(HairRandom& random, float x, float amount) {
    return x + amount * RandomSignedUnit(random);
}

/// x * (1 - r * amount / 32767). One draw.
inline float RandomReduce(HairRandom& random, float x, float amount) {
    return x * (1.0f - float(random.Draw()) * amount / 32767.0f);
}

/// x + scale * amount * s. One draw.
inline float RandomOffsetScaled(HairRandom& random, float x, float amount, float scale) {
    return x + scale * amount * RandomSignedUnit(random);
}

/// Every component of `v` offset by up to amount * |v|. Three draws: x, y, z.
inline Point3 RandomJitterVector(HairRandom& random, const Point3& v, float amount) {
    const float scale = Length(v);
    const float x = RandomOffsetScaled(random, v.x, amount, scale);
    const float y = RandomOffsetScaled(random, v.y, amount, scale);
    const float z = RandomOffsetScaled(random, v.z, amount, scale);
    return {x, y, z};
}

/// Wraps a value into 0..1; 1 stays 1. No draw.
inline float WrapUnit(float x) {
    if (x < 0.0f) return 1.0f + x + std::trunc(-x);
    if (x > 1.0f) return x - std::trunc(x);
    return x;
}

/// Shifts a colour's hue by up to half the amount of the colour circle. Three draws: the shift and two discarded, so
/// that later draws of a strand stay the same whichever variation is switched on.
inline Color RandomHueShift(HairRandom& random, const Color& color, float amount) {
    HsvColor hsv = ToHsv(color);
    hsv.h = WrapUnit(RandomOffsetScaled(random, hsv.h, amount, 0.5f));
    random.Draw();
    random.Draw();
    return FromHsv(hsv);
}

/// Shifts the hues of a strand's two colours by one common amount. Three draws: the shift and two discarded.
inline void RandomHueShiftPair(HairRandom& random, Color& base, Color& tip, float amount) {
    HsvColor b = ToHsv(base), t = ToHsv(tip);
    const float d = RandomSignedUnit(random) * amount * 0.5f;
    b.h = WrapUnit(b.h + d);
    t.h = WrapUnit(t.h + d);
    random.Draw();
    random.Draw();
    base = FromHsv(b);
    tip = FromHsv(t);
}

/// A rotation that tilts direction `z` about a random axis; amount 1 tilts by at most 90 degrees. Three draws: the two
/// parts of the axis, then the angle's sine.
inline Matrix3 RandomTilt(HairRandom& random, const Point3& z, float amount) {
    const float a = RandomSignedUnit(random);
    const float b = RandomSignedUnit(random);
    const Point3 axis = Normalize(CrossProd(z, Point3(a, b, 0.0f)));
    const float q = amount * 0.70710677f * RandomSignedUnit(random);
    const float rest = 1.0f - q * q;
    return Quat(axis * q, rest > 0.0f ? std::sqrt(rest) : 0.0f).ToMatrix();
}
