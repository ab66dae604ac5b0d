// The splitting of matrices.

#include <cmath>

#include "core/controllers.h"

namespace host {

Quat QuatFromMatrix(const Matrix3& m) {
    const Point3 a = m.GetRow(0), b = m.GetRow(1), c = m.GetRow(2);
    // Four times the squares of the components; the largest is the divisor.
    const float ww = 1 + a.x + b.y + c.z, xx = 1 + a.x - b.y - c.z;
    const float yy = 1 - a.x + b.y - c.z, zz = 1 - a.x - b.y + c.z;
    Quat q;
    if (ww >= xx && ww >= yy && ww >= zz)
        q = {c.y - b.z, a.z - c.x, b.x - a.y, ww};
    else if (xx >= yy && xx >= zz)
        q = {xx, a.y + b.x, a.z + c.x, c.y - b.z};
    else if (yy >= zz)
        q = {a.y + b.x, yy, b.z + c.y, a.z - c.x};
    else
        q = {a.z + c.x, b.z + c.y, zz, b.x - a.y};
    return Normalize(q);
}

AffineParts Decompose(const Matrix3& m) {
    AffineParts parts;
    parts.translation = m.GetTrans();
    const float sign = m.Determinant() < 0 ? -1.0f : 1.0f;
    Matrix3 rotation;
    for (int i = 0; i < 3; ++i) {
        parts.scale[i] = sign * Length(m.GetRow(i));
        rotation.SetRow(i, sign * Normalize(m.GetRow(i)));
    }
    // Rows that a shear or a collapsed axis left askew are put at right angles, the first row keeping its direction.
    const Point3 x = rotation.GetRow(0) == Point3() ? Point3(1, 0, 0) : rotation.GetRow(0);
    Point3 z = Normalize(CrossProd(x, rotation.GetRow(1)));
    if (z == Point3()) z = Normalize(CrossProd(x, std::fabs(x.x) < 0.9f ? Point3(1, 0, 0) : Point3(0, 1, 0)));
    const float skew = LengthSquared(CrossProd(z, x) - rotation.GetRow(1)) + LengthSquared(z - rotation.GetRow(2));
    if (skew > 1e-10f) {
        rotation.SetRow(0, x);
        rotation.SetRow(1, CrossProd(z, x));
        rotation.SetRow(2, z);
    }
    parts.rotation = QuatFromMatrix(rotation);
    return parts;
}

} // namespace host
