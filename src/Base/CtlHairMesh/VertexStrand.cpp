// Control strands: spline, length, bounds, bend direction.

#include "Base/CtlHairMesh/VertexStrand.h"

#include <atomic>

#include "Base/HUtil/StrandSpline.h"
#include "Base/HUtil/Subdivide.h"
#include "DebugTools/Assert.h"

Point3 VertexStrand::ControlPoint(int k) const {
    const int knot = k / 3;
    if (k >= 1 && k <= 3 * Segments() + 1) {
        switch (k % 3) {
        case 1:
            return knots[size_t(knot)];
        case 2:
            return out[size_t(knot)];
        default:
            return in[size_t(knot)];
        }
    }
    static std::atomic<bool> reported{false};
    ReportAssertOnce(reported, "include/Base/CtlHairMesh", 90);
    return Point3();
}

void VertexStrand::BuildSpline() {
    const int n = KnotCount();
    in.resize(size_t(n));
    out.resize(size_t(n));
    BuildStrandHandles(n, knots.data(), in.data(), out.data());
    splineSource = SPLINE_FROM_KNOTS;
    splineDirty = false;
    length_ = -1;
}

float VertexStrand::Length() const {
    constexpr int kChords = 16;
    if (length_ >= 0) return length_;
    float length = 0;
    for (int s = 0; s < Segments(); ++s) {
        const size_t i = size_t(s);
        const Point3 c[4] = {knots[i], out[i], in[i + 1], knots[i + 1]};
        Point3 previous = c[0];
        for (int j = 1; j <= kChords; ++j) {
            const Point3 p = j == kChords ? c[3] : BezierPoint(BezierWeightsAt(float(j) / float(kChords)), c);
            length += ::Length(p - previous);
            previous = p;
        }
    }
    return length_ = length;
}

Box3 VertexStrand::Bounds() const {
    Box3 box;
    for (const Point3& p : knots) box += p;
    for (const Point3& p : in) box += p;
    for (const Point3& p : out) box += p;
    return box;
}

bool VertexStrand::BendDirection(Point3& direction) const {
    const size_t n = knots.size();
    if (n < 3) return false;
    const Point3 bend = Normalize(knots[n - 1] - knots[n - 2]) - Normalize(knots[1] - knots[0]);
    if (!(LengthSquared(bend) > 0.001f)) return false;
    direction = Normalize(bend);
    return true;
}
