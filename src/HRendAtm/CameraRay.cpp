// Telling primary camera segments from reflected and other ones.

#include <cmath>

#include "Base/HairMath.h"
#include "HRendAtm/HairRender.h"

namespace {

constexpr float kTolerance = 0.01f;
constexpr float kFarPoint = 1.0e7f;

float AbsSum(const Point3& p) {
    return std::fabs(p.x) + std::fabs(p.y) + std::fabs(p.z);
}

// p1 / p0 by component. A component that is 0 / 0 fits any ratio; it takes the one of `like`.
struct Ratios {
    float x, y, z;
    Ratios(const Point3& p1, const Point3& p0) {
        const auto zero = [](float a, float b) { return a == 0.0f && b == 0.0f; };
        const bool zx = zero(p1.x, p0.x), zy = zero(p1.y, p0.y), zz = zero(p1.z, p0.z);
        x = p1.x / p0.x, y = p1.y / p0.y, z = p1.z / p0.z;
        if (zx) x = zy ? z : y;
        if (zy) y = x;
        if (zz) z = x;
    }
};

bool Proportional(const Point3& p1, const Point3& p0) {
    const Ratios r(p1, p0);
    return std::fabs(r.y - r.x) + std::fabs(r.z - r.x) < kTolerance;
}

bool SameMagnitude(const Point3& p1, const Point3& p0) {
    const Ratios r(p1, p0);
    const float x = HairMath::Log10(r.x), y = HairMath::Log10(r.y), z = HairMath::Log10(r.z);
    return std::fabs(y - x) <= 1.0f && std::fabs(z - x) <= 1.0f;
}

} // namespace

bool IsCameraSegment(bool perspective, Point3& p0, const Point3& p1) {
    if (!perspective) {
        if (!(std::fabs(p0.x - p1.x) + std::fabs(p0.y - p1.y) < kTolerance)) return false;
        if (p0.z == 0.0f) p0.z = 1.0e30f;
        return true;
    }
    if (AbsSum(p0) < kTolerance) return true;
    const bool near = std::fabs(p1.x) < kFarPoint && std::fabs(p1.y) < kFarPoint && std::fabs(p1.z) < kFarPoint;
    if (near) return Proportional(p1, p0);
    // A segment that ends far away: its direction must be the start's.
    if (Proportional(Normalize(p0 - p1), p0)) return true;
    return SameMagnitude(p1, p0);
}
