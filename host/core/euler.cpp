#include "core/euler.h"

#include <cmath>
#include <numbers>

namespace host {

Matrix3 EulerMatrix(const Point3& degrees) {
    Matrix3 tm;
    for (int axis = 0; axis < 3; ++axis) {
        const double angle = double(degrees[axis]) * std::numbers::pi / 180.0;
        const float c = float(std::cos(angle)), s = float(std::sin(angle));
        const int a = (axis + 1) % 3, b = (axis + 2) % 3;
        Point3 rows[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
        rows[a][a] = c, rows[a][b] = s;
        rows[b][a] = -s, rows[b][b] = c;
        tm = tm * Matrix3(rows[0], rows[1], rows[2], {0, 0, 0});
    }
    return tm;
}

Point3 EulerDegrees(const Matrix3& rotation) {
    const Point3 x = rotation.GetRow(0), y = rotation.GetRow(1), z = rotation.GetRow(2);
    const float level = std::sqrt(x.x * x.x + x.y * x.y);
    Point3 angles(0, std::atan2(-x.z, level), 0);
    if (level > 1e-6f) {
        angles.x = std::atan2(y.z, z.z);
        angles.z = std::atan2(x.y, x.x);
    } else {
        angles.z = std::atan2(-y.x, y.y);
    }
    return angles * float(180 / std::numbers::pi);
}

} // namespace host
