#pragma once
// Two-component vectors.

#include <cmath>

/// Two 32-bit floats.
struct Point2 {
    float x = 0, y = 0;
    constexpr Point2() = default;
    constexpr Point2(float x, float y) : x(x), y(y) {}
    constexpr float& operator[](int i) { return i == 0 ? x : y; }
    constexpr float operator[](int i) const { return i == 0 ? x : y; }
    friend constexpr bool operator==(const Point2&, const Point2&) = default;
};

constexpr Point2 operator+(Point2 a, Point2 b) {
    return {a.x + b.x, a.y + b.y};
}
constexpr Point2 operator-(Point2 a, Point2 b) {
    return {a.x - b.x, a.y - b.y};
}
constexpr Point2 operator-(Point2 a) {
    return {-a.x, -a.y};
}
constexpr Point2 operator*(Point2 a, float f) {
    return {a.x * f, a.y * f};
}
constexpr Point2 operator*(float f, Point2 a) {
    return {a.x * f, a.y * f};
}
constexpr Point2 operator/(Point2 a, float f) {
    return {a.x / f, a.y / f};
}
inline float Length(Point2 a) {
    return std::sqrt(a.x * a.x + a.y * a.y);
}

/// Two integers: a pixel.
struct IPoint2 {
    int x = 0, y = 0;
    constexpr IPoint2() = default;
    constexpr IPoint2(int x, int y) : x(x), y(y) {}
    friend constexpr bool operator==(const IPoint2&, const IPoint2&) = default;
};
