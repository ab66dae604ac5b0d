// Splines: points, directions, lengths; shapes and what they convert to.

#include "sdk/spline.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <numbers>

#include "core/controllers.h"
#include "core/core.h"
#include "shapes/shape_builder.h"
#include "shapes/shape_mesh.h"

namespace {

using namespace host;

void ExpectNear(const Point3& a, const Point3& b, float tolerance = 1e-5f) {
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(a[k], b[k], tolerance) << k;
}

// A circle of four Bezier pieces, as close as they come (to 0.03 per cent).
Spline3D Circle(float radius) {
    const float h = 0.5522848f * radius;
    Spline3D s;
    s.closed = true;
    for (int i = 0; i < 4; ++i) {
        const float x[] = {1, 0, -1, 0}, y[] = {0, 1, 0, -1};
        const Point3 p(x[i] * radius, y[i] * radius, 0), along(-y[i] * h, x[i] * h, 0);
        s.knots.push_back({KTYPE_BEZIER, LTYPE_CURVE, p, p - along, p + along});
    }
    return s;
}

TEST(Spline, PointsOfOnePieceByHand) {
    Spline3D s;
    s.knots = {{KTYPE_BEZIER, LTYPE_CURVE, {0, 0, 0}, {}, {0, 3, 0}},
               {KTYPE_BEZIER, LTYPE_CURVE, {3, 0, 0}, {3, 3, 0}, {}}};
    s.knots[0].inVec = {0, 0, 0};
    s.knots[1].outVec = {3, 0, 0};
    EXPECT_EQ(s.Segments(), 1);
    EXPECT_EQ(s.InterpBezier3D(0, 0), Point3(0, 0, 0));
    EXPECT_EQ(s.InterpBezier3D(0, 1), Point3(3, 0, 0));
    EXPECT_EQ(s.InterpBezier3D(0, 0.5f), Point3(1.5f, 2.25f, 0));
    EXPECT_EQ(s.InterpBezier3D(0, -4), Point3(0, 0, 0)) << "clamped";
    EXPECT_EQ(s.InterpBezier3D(9, 2), Point3(3, 0, 0));
    ExpectNear(s.TangentBezier3D(0, 0), {0, 1, 0});
    ExpectNear(s.TangentBezier3D(0, 0.5f), {1, 0, 0});
    ExpectNear(s.TangentBezier3D(0, 1), {0, -1, 0});
    s.knots[0].ltype = LTYPE_LINE;
    ExpectNear(s.InterpBezier3D(0, 0.25f), {0.75f, 0, 0});
    EXPECT_FLOAT_EQ(s.SplineLength(), 3);
}

TEST(Spline, HandlesOfSmoothAndCornerKnots) {
    Spline3D s = SplineFromPoints({{0, 0, 0}, {3, 0, 0}, {3, 6, 0}}, false, KTYPE_AUTO);
    ExpectNear(s.knots[0].outVec, {1, 0, 0});
    ExpectNear(s.knots[0].inVec, {0, 0, 0});
    const Point3 along = Normalize(Point3(3, 6, 0));
    ExpectNear(s.knots[1].inVec, Point3(3, 0, 0) - along);
    ExpectNear(s.knots[1].outVec, Point3(3, 0, 0) + along * 2);
    ExpectNear(s.knots[2].inVec, {3, 4, 0});
    s.closed = true;
    s.ComputeBezPoints();
    EXPECT_EQ(s.Segments(), 3);
    ExpectNear(s.knots[0].inVec, Point3() - Normalize(Point3(0, -6, 0)) * (Length(Point3(3, 6, 0)) / 3));
    const Spline3D corner = SplineFromPoints({{0, 0, 0}, {3, 0, 0}, {3, 6, 0}}, true);
    EXPECT_FLOAT_EQ(corner.SplineLength(), 9 + std::sqrt(45.0f));
    ExpectNear(corner.InterpBezier3D(2, 0.5f), {1.5f, 3, 0});
    Spline3D bezier = corner;
    for (SplineKnot& k : bezier.knots) k.ktype = KTYPE_BEZIER, k.inVec = k.outVec = {7, 7, 7};
    bezier.ComputeBezPoints();
    EXPECT_EQ(bezier.knots[1].inVec, Point3(7, 7, 7)) << "bezier knots stay";
}

TEST(Spline, LengthsOfACircle) {
    const Spline3D s = Circle(2);
    EXPECT_NEAR(s.SplineLength(), 4 * std::numbers::pi, 4e-3);
    EXPECT_NEAR(s.SegLength(2), std::numbers::pi, 1e-3);
    for (int i = 0; i <= 16; ++i) {
        const float u = float(i) / 16, a = u * 2 * float(std::numbers::pi);
        ExpectNear(s.InterpCurve3D(u, PARAM_NORMALIZED), {2 * std::cos(a), 2 * std::sin(a), 0}, 2e-3f);
        ExpectNear(s.TangentCurve3D(u, PARAM_NORMALIZED), {-std::sin(a), std::cos(a), 0}, 4e-3f);
    }
    ExpectNear(s.InterpCurve3D(0.25f), {0, 2, 0});
    ExpectNear(s.TangentCurve3D(0.25f), {-1, 0, 0});
}

TEST(Spline, SmallAndDegenerateOnes) {
    Spline3D s;
    EXPECT_EQ(s.InterpCurve3D(0.5f), Point3());
    EXPECT_EQ(s.TangentCurve3D(0.5f), Point3());
    EXPECT_EQ(s.SplineLength(), 0);
    s.AddKnot({1, 2, 3});
    EXPECT_EQ(s.Segments(), 0);
    EXPECT_EQ(s.InterpCurve3D(0.5f, PARAM_NORMALIZED), Point3(1, 2, 3));
    s.AddKnot({4, 2, 3}); // handles on the knots
    EXPECT_EQ(s.TangentBezier3D(0, 0), Point3(1, 0, 0));
    EXPECT_EQ(s.TangentBezier3D(0, 1), Point3(1, 0, 0));
    ExpectNear(s.InterpCurve3D(1.0f / 3, PARAM_NORMALIZED), {2, 2, 3});
    EXPECT_EQ(s.SegLength(0), 3);
    s.knots[1] = s.knots[0];
    EXPECT_EQ(s.SplineLength(), 0);
    EXPECT_EQ(s.InterpCurve3D(0.5f, PARAM_NORMALIZED), Point3(1, 2, 3));
}

// The place at a length lies at that length: measured by many small chords.
RC_GTEST_PROP(Spline, EqualLengthsForEqualSteps, ()) {
    const auto coordinate = [] { return float(*rc::gen::inRange(-50, 50)) / 10; };
    Spline3D s;
    const int count = *rc::gen::inRange(2, 5);
    for (int i = 0; i < count; ++i) {
        SplineKnot k;
        k.ktype = KTYPE_BEZIER;
        k.point = {coordinate(), coordinate(), float(i * 3)};
        k.inVec = k.point + Point3(coordinate(), coordinate(), -1);
        k.outVec = k.point + Point3(coordinate(), coordinate(), 1);
        s.knots.push_back(k);
    }
    s.closed = *rc::gen::arbitrary<bool>();
    const SplineLengths lengths(s);
    double chords = 0;
    Point3 last = s.InterpBezier3D(0, 0);
    const int parts = 1000;
    for (int i = 1; i <= parts; ++i) {
        const SplinePlace p = lengths.At(lengths.Total() * float(i) / float(parts));
        const Point3 at = s.InterpBezier3D(p.segment, p.t);
        const double step = double(Length(at - last));
        chords += step;
        RC_ASSERT(step < 1.01 * double(lengths.Total()) / parts + 1e-3);
        last = at;
    }
    RC_ASSERT(std::abs(chords - double(lengths.Total())) < 5e-3 * double(lengths.Total()));
}

TEST(Shape, FromLinesOfPoints) {
    const std::vector<Point3> points{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}};
    const BezierShape shape = ShapeFromLines(points, {{0, 1}, {0, 1, 2, 0}, {2}, {0, 9, 2}, {0, 1, 0}});
    ASSERT_EQ(shape.SplineCount(), 4);
    EXPECT_FALSE(shape.splines[0].closed);
    EXPECT_TRUE(shape.splines[1].closed);
    EXPECT_EQ(shape.splines[1].KnotCount(), 3);
    EXPECT_EQ(shape.splines[2].KnotCount(), 2) << "a point that does not exist is left out";
    EXPECT_TRUE(shape.splines[3].closed) << "there and back";
    EXPECT_EQ(shape.KnotCount(), 2 + 3 + 2 + 2);
}

TEST(Shape, ControlPointsCountThroughAllSplines) {
    BezierShape shape;
    shape.splines = {Circle(1), Circle(2)};
    shape.ControlPoint(3 * 5 + 2) = {9, 9, 9};
    EXPECT_EQ(shape.splines[1].knots[1].outVec, Point3(9, 9, 9));
    EXPECT_EQ(shape.ControlPoint(0), Point3(1, 0, 0));
    EXPECT_EQ(shape.GetBoundingBox().Max(), Point3(9, 9, 9));
}

float AreaOf(const Mesh& mesh) {
    float area = 0;
    for (const Face& f : mesh.faces)
        area += Length(CrossProd(mesh.verts[size_t(f.v[1])] - mesh.verts[size_t(f.v[0])],
                                 mesh.verts[size_t(f.v[2])] - mesh.verts[size_t(f.v[0])])) /
                2;
    return area;
}

TEST(Shape, ClosedFlatShapesBecomeMeshes) {
    Core core;
    auto* const object = core.Adopt(new ShapeObject);
    // An arrow head with a notch, upright, beside a round.
    object->shape.splines = {SplineFromPoints({{0, 0, 0}, {4, 0, 4}, {0, 0, 2}, {-4, 0, 4}}, true), Circle(1)};
    EXPECT_TRUE(object->CanConvertToType(triObjectClassID));
    Node* const node = core.CreateNode("n", object);
    Interval valid = FOREVER;
    bool needDelete = false;
    TriObject* const tri = GetTriObjectFromNode(node, 0, valid, needDelete);
    ASSERT_NE(tri, nullptr);
    EXPECT_TRUE(needDelete);
    EXPECT_EQ(tri->mesh.getNumVerts(), 4 + 4 * kShapeSteps) << "straight pieces are not divided";
    const float notch = 8.0f,
                circle = float(kShapeSteps) * 2 * std::sin(2 * float(std::numbers::pi) / (4 * kShapeSteps));
    EXPECT_NEAR(AreaOf(tri->mesh), notch + circle, 1e-2f);
    for (int f = 0; f < tri->mesh.getNumFaces(); ++f) {
        const Point3 n = tri->mesh.FaceNormal(f);
        if (n == Point3()) continue;
        if (std::abs(n.z) > 0.5f) ExpectNear(n, {0, 0, 1}, 1e-4f);
    }
    tri->DeleteThis();
    EXPECT_FALSE(object->IsRenderable());
}

TEST(Shape, OthersAreRefused) {
    ShapeObject object;
    EXPECT_FALSE(object.CanConvertToType(triObjectClassID)) << "no spline";
    const auto refused = [&](Spline3D s) {
        object.shape.splines = {std::move(s)};
        return !object.CanConvertToType(triObjectClassID) && !object.ConvertToType(0, triObjectClassID);
    };
    EXPECT_FALSE(refused(Circle(1)));
    EXPECT_TRUE(refused(SplineFromPoints({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}, false))) << "open";
    EXPECT_TRUE(refused(SplineFromPoints({{0, 0, 0}, {1, 0, 0}, {1, 1, 1}, {0, 1, 0}}, true))) << "not flat";
    EXPECT_TRUE(refused(SplineFromPoints({{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}}, true))) << "crosses itself";
    EXPECT_TRUE(refused(SplineFromPoints({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, true))) << "no area";
    EXPECT_FALSE(refused(SplineFromPoints(
        {{0, 0, 0}, {1, 0, 0}, {2, 0, 0}, {3, 0, 0}, {4, 0, 0}, {4, 3, 0}, {2, 3, 0}, {0, 3, 0}, {0, 1, 0}}, true)))
        << "many knots on a line";
    EXPECT_TRUE(object.CanConvertToType(splineShapeClassID));
    EXPECT_TRUE(object.CanConvertToType(genericShapeClassID));
    EXPECT_TRUE(object.CanConvertToType(defObjectClassID));
    EXPECT_FALSE(object.CanConvertToType(linearShapeClassID));
    EXPECT_EQ(object.ConvertToType(0, genericShapeClassID), &object);
    EXPECT_EQ(object.ConvertToType(0, linearShapeClassID), nullptr);
}

// Random stars (they never cross themselves) are filled exactly.
RC_GTEST_PROP(Shape, StarsAreFilled, ()) {
    const int n = *rc::gen::inRange(3, 40);
    std::vector<Point3> points;
    double area = 0;
    for (int i = 0; i < n; ++i) {
        const float a = 2 * float(std::numbers::pi) * float(i) / float(n);
        const float r = float(*rc::gen::inRange(5, 50)) / 10;
        points.push_back({r * std::cos(a), r * std::sin(a), 3});
    }
    for (int i = 0; i < n; ++i) {
        const Point3 &p = points[size_t(i)], &q = points[size_t((i + 1) % n)];
        area += double(p.x * q.y - p.y * q.x) / 2;
    }
    Spline3D s = SplineFromPoints(points, true);
    for (SplineKnot& k : s.knots) k.ltype = LTYPE_LINE;
    BezierShape shape;
    shape.splines = {s};
    Mesh mesh;
    RC_ASSERT(CapShape(shape, mesh));
    RC_ASSERT(mesh.getNumFaces() == n - 2);
    RC_ASSERT(std::abs(double(AreaOf(mesh)) - area) < 1e-3 * area);
    int edges = 0;
    for (const Face& f : mesh.faces)
        for (const uint32_t e : {EDGE_A, EDGE_B, EDGE_C}) edges += (f.flags & e) != 0;
    RC_ASSERT(edges == n);
}

TEST(KeyedShape, KnotsFollowTheirControllers) {
    Core core;
    BezierShape rest;
    rest.splines = {SplineFromPoints({{0, 0, 0}, {3, 0, 0}, {6, 0, 0}}, false, KTYPE_AUTO), Circle(1)};
    auto* const shape = core.Adopt(new KeyedShape(rest));
    Node* const node = core.CreateNode("n", shape);
    EXPECT_EQ(node->EvalWorldState(0).valid, FOREVER);
    auto *const one = core.Adopt(new PositionControl), *const other = core.Adopt(new PositionControl);
    one->SetKey(0, {3, 0, 0});
    one->SetKey(100, {3, 4, 0});
    other->SetKey(0, {1, 0, 5});
    EXPECT_TRUE(shape->SetKnotController({0, 1}, one));
    EXPECT_TRUE(shape->SetKnotController({1, 0}, other));
    EXPECT_FALSE(shape->SetKnotController({0, 3}, one));
    EXPECT_FALSE(shape->SetKnotController({2, 0}, one));
    EXPECT_FALSE(shape->SetKnotController({0, 0}, core.Adopt(new FloatControl)));
    EXPECT_EQ(shape->NumKeyedKnots(), 2);
    const auto at = [&](TimeValue t) -> const BezierShape& {
        return static_cast<ShapeObject*>(node->EvalWorldState(t).obj)->shape;
    };
    EXPECT_EQ(at(50).splines[0].knots[1].point, Point3(3, 2, 0));
    EXPECT_EQ(node->EvalWorldState(50).valid, Interval(50, 50));
    EXPECT_EQ(at(50).splines[1].knots[0].outVec, Circle(1).knots[0].outVec + Point3(0, 0, 5)) << "handles move along";
    ExpectNear(at(100).splines[0].knots[1].inVec, {2, 4, 0}, 0.7f);
    EXPECT_GT(at(100).splines[0].SplineLength(), at(0).splines[0].SplineLength() + 2);
    one->SetKey(0, {3, 1, 0});
    EXPECT_EQ(at(0).splines[0].knots[1].point, Point3(3, 1, 0)) << "a new key comes through";
    EXPECT_EQ(shape->SubAnimName(1), "Spline 1 Knot 0");
    RemapDir remap;
    auto* const copy = core.Adopt(static_cast<KeyedShape*>(remap.CloneRef(shape)));
    EXPECT_EQ(copy->NumKeyedKnots(), 2);
    EXPECT_EQ(static_cast<ShapeObject*>(copy->Eval(100).obj)->shape.splines[0].knots[1].point, Point3(3, 4, 0));
}

} // namespace
