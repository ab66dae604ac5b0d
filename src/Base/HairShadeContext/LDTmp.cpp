#include "Base/HairShadeContext.h"

bool LDTmp::Illuminate(ShadeContext&, const Point3& normal, Color& color, Point3& dir, float& dot_nl,
                       float& diffuseCoef) {
    color = Color(1, 1, 1);
    dir = normal;
    dot_nl = 1.0f;
    diffuseCoef = 1.0f;
    return true;
}

bool LDTmp::Illuminate(ShadeContext&, const Point3& normal, Color& color, Point3& dir, float& dot_nl) {
    color = Color(1, 1, 1);
    dir = normal;
    dot_nl = 1.0f;
    return true;
}
