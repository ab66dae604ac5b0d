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

} // namespace host
