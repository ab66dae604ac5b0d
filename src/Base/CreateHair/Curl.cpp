#include "Base/CreateHair/Curl.h"

#include "Base/CreateHair/ShapeTables.h"
#include "Base/HUtil/Simd.h"
#include "Base/HairMath.h"

void NormalizeTangents(const PaddedPoints& tangents, int points, PaddedPoints& unit) {
    for (int i = 0; i < points; i += 4) {
        const Float4 x = Float4::Load(tangents.x.Data() + i), y = Float4::Load(tangents.y.Data() + i),
                     z = Float4::Load(tangents.z.Data() + i);
        const Float4 length = Sqrt(x * x + y * y + z * z);
        const Float4 zero = 0.0f;
        SelectPositive(length, x / length, zero).Store(unit.x.Data() + i);
        SelectPositive(length, y / length, zero).Store(unit.y.Data() + i);
        SelectPositive(length, z / length, zero).Store(unit.z.Data() + i);
    }
}

void BuildStrandFrame(const PaddedPoints& unitTangents, int points, const Point3& orientation, PaddedPoints& frame) {
    Point3 side(1, 0, 0);
    for (int j = 1; j < points; ++j) {
        const Point3 s = CrossProd(orientation, unitTangents[j]);
        if (LengthSquared(s) > 0.001f) {
            side = Normalize(s);
            break;
        }
    }
    Point3 u;
    for (int i = 0; i < points; ++i) {
        const Point3 t = unitTangents[i];
        if (i > 0) side = Normalize(CrossProd(u, t));
        const Point3 next = CrossProd(t, side);
        u = DotProd(next, u) < 0.0f ? -next : next;
        frame.Set(i, u);
    }
}

namespace {

// Sine and cosine of every point's curl angle, times its radius.
void FillCircle(StrandContext& c, float phi) {
    const HairParams& p = *c.run->params;
    const float radius = p.Float(pid_curlRadius) * c.Factor(pid_surfDist_curlRadius);
    const float turns = p.Float(pid_curlTurns) * 6.2831855f * c.Factor(pid_surfDist_curlTurns);
    const int count = p.On(pid_curlLenRandCut) ? c.run->maxPoints : c.points;
    const CurveShape *radiusCurve = p.Curve(pid_curve_curlRadius), *turnsCurve = p.Curve(pid_curve_curlTurns);
    const bool tabulated = c.cutFactor == 1.0f;
    const float* radiusTable = tabulated ? c.tables->CurlRadius(count) : nullptr;
    const float* turnsTable = tabulated ? c.tables->CurlTurns(count) : nullptr;
    for (int i = 0; i < c.points; ++i) {
        const float u = float(i) / float(count - 1) * c.cutFactor;
        const float along = turnsTable ? turnsTable[i] : turnsCurve ? turnsCurve->Eval(u) : u;
        const float share = radiusTable ? radiusTable[i] : radiusCurve ? radiusCurve->Eval(u) : 1.0f;
        const float angle = turns * along + phi;
        const float r = radius * share;
        c.sine[i] = r * HairMath::Sin(angle);
        c.cosine[i] = r * HairMath::Cos(angle);
    }
}

// Moves every point by up * sine + U * cosine, up = T x U.
void Displace(StrandContext& c) {
    const PaddedPoints &tangent = c.unitTangent, &frame = c.frame;
    for (int i = 0; i < c.points; i += 4) {
        const Float4 tx = Float4::Load(tangent.x.Data() + i), ty = Float4::Load(tangent.y.Data() + i),
                     tz = Float4::Load(tangent.z.Data() + i);
        const Float4 ux = Float4::Load(frame.x.Data() + i), uy = Float4::Load(frame.y.Data() + i),
                     uz = Float4::Load(frame.z.Data() + i);
        const Float4 s = Float4::Load(c.sine.Data() + i), k = Float4::Load(c.cosine.Data() + i);
        const auto move = [&](PaddedFloats& p, Float4 offset) {
            (Float4::Load(p.Data() + i) + offset).Store(p.Data() + i);
        };
        move(c.position.x, (ty * uz - tz * uy) * s + ux * k);
        move(c.position.y, (tz * ux - tx * uz) * s + uy * k);
        move(c.position.z, (tx * uy - ty * ux) * s + uz * k);
    }
}

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
    NormalizeTangents(c.tangent, c.points, c.unitTangent);
    BuildStrandFrame(c.unitTangent, c.points, c.orientation, c.frame);
    FillCircle(c, phi);
    Displace(c);
    RecomputeTangents(c);
}
