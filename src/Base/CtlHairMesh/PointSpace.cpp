// The flat point space of the control strands: strands in vertex order, knots root first, empty slots skipped.

#include <atomic>

#include "Base/CtlHairMesh/CtlHairMesh.h"
#include "DebugTools/Assert.h"

int CtlHairMesh::PointCount() const {
    int n = 0;
    for (const auto& s : strands_)
        if (s) n += s->KnotCount();
    return n;
}

Point3 CtlHairMesh::GetPoint(int index, const Matrix3& tm) const {
    int i = index;
    for (const auto& s : strands_) {
        if (!s || i < 0) continue;
        if (i < s->KnotCount()) return s->knots[size_t(i)] * tm;
        i -= s->KnotCount();
    }
    static std::atomic<bool> reported{false};
    ReportAssertOnce(reported, "src/Base/CtlHairMesh", 1678);
    return Point3();
}

void CtlHairMesh::SetPoint(int index, const Point3& p) {
    int i = index;
    for (int v = 0; v < VertexCount(); ++v) {
        const VertexStrand* s = Strand(v);
        if (!s || i < 0) continue;
        if (i < s->KnotCount()) {
            SetKnot(*EditStrand(v), i, p);
            return;
        }
        i -= s->KnotCount();
    }
    static std::atomic<bool> reported{false};
    ReportAssertOnce(reported, "src/Base/CtlHairMesh", 1695);
}

void CtlHairMesh::SetKnot(VertexStrand& strand, int index, const Point3& p) {
    strand.knots[size_t(index)] = p;
    if (strand.splineSource == SPLINE_FROM_KNOTS)
        strand.BuildSpline();
    else
        strand.splineDirty = true;
    boundsValid_ = false;
}
