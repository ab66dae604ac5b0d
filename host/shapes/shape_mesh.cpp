#include "shapes/shape_mesh.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "sdk/object.h"

namespace host {

namespace {

struct Point2D {
    double x = 0, y = 0;
};

/// Twice the area of the triangle, positive when it runs counter-clockwise.
double Area2(const Point2D& a, const Point2D& b, const Point2D& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// The vector area of a closed polygon.
Point3 AreaVector(const std::vector<Point3>& corners) {
    Point3 sum;
    for (size_t i = 1; i + 1 < corners.size(); ++i)
        sum += CrossProd(corners[i] - corners[0], corners[i + 1] - corners[0]);
    return sum * 0.5f;
}

/// The corners in the plane through their centre; false when they do not lie in one.
bool Flatten(const std::vector<Point3>& corners, std::vector<Point2D>& flat) {
    Box3 box;
    for (const Point3& p : corners) box += p;
    const Point3 normal = Normalize(AreaVector(corners)), centre = box.Center();
    const float size = Length(box.Width());
    if (normal == Point3()) return false;
    const Point3 axis = std::abs(normal.x) < 0.6f ? Point3(1, 0, 0) : Point3(0, 1, 0);
    const Point3 u = Normalize(CrossProd(axis, normal)), v = CrossProd(normal, u);
    for (const Point3& p : corners) {
        const Point3 d = p - centre;
        if (std::abs(DotProd(d, normal)) > 1e-4f * size) return false;
        flat.push_back({double(DotProd(d, u)), double(DotProd(d, v))});
    }
    return true;
}

/// Fills a polygon that runs counter-clockwise by cutting off ears.
class EarCutter {
public:
    explicit EarCutter(const std::vector<Point2D>& corners) : p_(corners), left_(corners.size()) {
        std::iota(left_.begin(), left_.end(), 0);
        double size = 0;
        for (const Point2D& p : corners) size = std::max({size, std::abs(p.x), std::abs(p.y)});
        tolerance_ = 1e-6 * size * size; // positions are floats
    }
    /// False when no ear is left before the polygon is filled.
    bool Cut(std::vector<TVFace>& triangles) {
        while (left_.size() > 3) {
            size_t i = 0;
            while (i < left_.size() && !IsEar(i)) ++i;
            if (i == left_.size() && !FindFlat(i)) return false;
            triangles.push_back({{Before(i), left_[i], After(i)}});
            left_.erase(left_.begin() + std::ptrdiff_t(i));
        }
        triangles.push_back({{left_[0], left_[1], left_[2]}});
        return Area2(At(left_[0]), At(left_[1]), At(left_[2])) >= -tolerance_;
    }

private:
    const Point2D& At(int corner) const { return p_[size_t(corner)]; }
    int Before(size_t i) const { return left_[(i + left_.size() - 1) % left_.size()]; }
    int After(size_t i) const { return left_[(i + 1) % left_.size()]; }
    double AreaAt(size_t i) const { return Area2(At(Before(i)), At(left_[i]), At(After(i))); }
    bool IsEar(size_t i) const {
        const Point2D &a = At(Before(i)), &b = At(left_[i]), &c = At(After(i));
        if (Area2(a, b, c) <= 0) return false;
        for (const int k : left_) {
            const Point2D& q = At(k);
            if (k == Before(i) || k == left_[i] || k == After(i)) continue;
            if (Area2(a, b, q) >= 0 && Area2(b, c, q) >= 0 && Area2(c, a, q) >= 0) return false;
        }
        return true;
    }
    /// A corner on the straight line between its neighbours, up to rounding: nothing is cut off with it.
    bool FindFlat(size_t& i) const {
        for (i = 0; i < left_.size(); ++i)
            if (std::abs(AreaAt(i)) <= tolerance_) return true;
        return false;
    }

    const std::vector<Point2D>& p_;
    std::vector<int> left_;
    double tolerance_ = 0;
};

/// True when the lines a-b and c-d have a point in common.
bool Meet(const Point2D& a, const Point2D& b, const Point2D& c, const Point2D& d) {
    const auto apart = [](double p, double q, double r, double s) {
        return std::max(p, q) < std::min(r, s) || std::max(r, s) < std::min(p, q);
    };
    if (apart(a.x, b.x, c.x, d.x) || apart(a.y, b.y, c.y, d.y)) return false;
    return Area2(a, b, c) * Area2(a, b, d) <= 0 && Area2(c, d, a) * Area2(c, d, b) <= 0;
}

/// True when two sides that do not follow each other meet.
bool CrossesItself(const std::vector<Point2D>& p) {
    const size_t n = p.size();
    for (size_t i = 0; i < n; ++i)
        for (size_t k = i + 2; k < n; ++k) {
            if (i == 0 && k + 1 == n) continue;
            if (Meet(p[i], p[i + 1], p[k], p[(k + 1) % n])) return true;
        }
    return false;
}

bool CapSpline(const Spline3D& spline, Mesh& mesh) {
    if (!spline.closed) return false;
    const std::vector<Point3> corners = SplineCorners(spline);
    std::vector<Point2D> flat;
    std::vector<TVFace> triangles;
    if (corners.size() < 3 || !Flatten(corners, flat) || CrossesItself(flat) || !EarCutter(flat).Cut(triangles))
        return false;
    const int first = mesh.getNumVerts(), count = int(corners.size());
    mesh.verts.insert(mesh.verts.end(), corners.begin(), corners.end());
    for (const TVFace& t : triangles) {
        Face face;
        face.smGroup = 1;
        face.flags = 0;
        for (int k = 0; k < 3; ++k) {
            face.v[k] = first + t.t[k];
            if ((t.t[k] + 1) % count == t.t[(k + 1) % 3]) face.flags |= EDGE_A << k;
        }
        mesh.faces.push_back(face);
    }
    return true;
}

} // namespace

namespace {

/// True when a piece is a straight line.
bool IsStraight(const Spline3D& spline, int segment) {
    const SplineKnot& a = spline.knots[size_t(segment)];
    const SplineKnot& b = spline.knots[size_t((segment + 1) % spline.KnotCount())];
    if (a.ltype == LTYPE_LINE) return true;
    const Point3 chord = b.point - a.point;
    const float most = 1e-5f * LengthSquared(chord);
    const auto off = [&](const Point3& handle) { return Length(CrossProd(handle - a.point, chord)) > most; };
    const auto beyond = [&](const Point3& handle) {
        const float along = DotProd(handle - a.point, chord);
        return along < 0 || along > LengthSquared(chord);
    };
    return !off(a.outVec) && !off(b.inVec) && !beyond(a.outVec) && !beyond(b.inVec);
}

} // namespace

std::vector<Point3> SplineCorners(const Spline3D& spline, int steps) {
    std::vector<Point3> corners;
    for (int s = 0; s < spline.Segments(); ++s) {
        const int count = IsStraight(spline, s) ? 1 : steps;
        for (int i = 0; i < count; ++i) corners.push_back(spline.InterpBezier3D(s, float(i) / float(count)));
    }
    if (!spline.closed && spline.KnotCount() > 0) corners.push_back(spline.knots.back().point);
    return corners;
}

bool CapShape(const BezierShape& shape, Mesh& mesh) {
    mesh = Mesh();
    for (const Spline3D& s : shape.splines)
        if (!CapSpline(s, mesh)) return false;
    return !shape.splines.empty();
}

} // namespace host

bool ShapeObject::CanConvertToType(Class_ID id) {
    if (id == splineShapeClassID || id == genericShapeClassID || id == defObjectClassID || id == ClassID()) return true;
    Mesh mesh;
    return id == triObjectClassID && host::CapShape(shape, mesh);
}

Object* ShapeObject::ConvertToType(TimeValue t, Class_ID id) {
    if (id != triObjectClassID) return CanConvertToType(id) ? this : nullptr;
    auto* const tri = new TriObject;
    if (host::CapShape(shape, tri->mesh)) {
        for (int c = 0; c < NUM_OBJ_CHANS; ++c) tri->SetChannelValidity(c, ObjectValidity(t));
        return tri;
    }
    tri->DeleteThis();
    return nullptr;
}
