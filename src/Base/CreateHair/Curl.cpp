#include "Base/CreateHair/Curl.h"

#include "Base/CreateHair/ShapeTables.h"
#include "Base/HairMath.h"

StrandFrame::StrandFrame(const PaddedPoints& tangents, int points, const Point3& orientation) : tangents_(tangents) {
    side_ = Point3(1, 0, 0);
    for (int j = 1; j < points; ++j) {
        const Point3 s = CrossProd(orientation, Normalize(tangents[j]));
        if (LengthSquared(s) > 0.001f) {
            side_ = Normalize(s);
            break;
        }
    }
}

void StrandFrame::Next(Point3& tangent, Point3& u) {
    tangent = Normalize(tangents_[index_]);
    if (index_ > 0) side_ = Normalize(CrossProd(u_, tangent));
    Point3 next = CrossProd(tangent, side_);
    if (DotProd(next, u_) < 0.0f) next = -next;
    u = u_ = next;
    ++index_;
}

namespace {

// First and last tangent from their chord, inner ones across both neighbours.
void RecomputeTangents(StrandContext& c) {
    const auto component = [&](const PaddedFloats& p, PaddedFloats& t) {
        const int last = c.points - 1;
        t[0] = p[1] - p[0];
        t[last] = p[last] - p[last - 1];
        for (int i = 1; i < last; ++i) t[i] = p[i + 1] - p[i - 1];
    };
    component(c.position.x, c.tangent.x);
    component(c.position.y, c.tangent.y);
    component(c.position.z, c.tangent.z);
}

} // namespace

void ApplyCurl(StrandContext& c) {
    const HairParams& p = *c.run->params;
    const float phi =
        p.Float(pid_curlOrientRandom) * RandomSignedUnit(c.rng) * 180.0f * HairMath::kDegToRad; // draw: curl
    if (!p.On(pid_useCurliness)) return;
    const float radius = p.Float(pid_curlRadius) * c.Factor(pid_surfDist_curlRadius);
    const float turns = p.Float(pid_curlTurns) * 6.2831855f * c.Factor(pid_surfDist_curlTurns);
    const int count = p.On(pid_curlLenRandCut) ? c.run->maxPoints : c.points;
    const CurveShape *radiusCurve = p.Curve(pid_curve_curlRadius), *turnsCurve = p.Curve(pid_curve_curlTurns);
    const bool tabulated = c.cutFactor == 1.0f;
    const float* radiusTable = tabulated ? c.tables->CurlRadius(count) : nullptr;
    const float* turnsTable = tabulated ? c.tables->CurlTurns(count) : nullptr;

    StrandFrame frame(c.tangent, c.points, c.orientation);
    for (int i = 0; i < c.points; ++i) {
        Point3 t, side;
        frame.Next(t, side);
        const float u = float(i) / float(count - 1) * c.cutFactor;
        const float along = turnsTable ? turnsTable[i] : turnsCurve ? turnsCurve->Eval(u) : u;
        const float share = radiusTable ? radiusTable[i] : radiusCurve ? radiusCurve->Eval(u) : 1.0f;
        const float angle = turns * along + phi;
        const float r = radius * share;
        const Point3 up = CrossProd(t, side);
        const Point3 offset = up * (r * HairMath::Sin(angle)) + side * (r * HairMath::Cos(angle));
        c.position.Set(i, c.position[i] + offset);
    }
    RecomputeTangents(c);
}
