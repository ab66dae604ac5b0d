#pragma once
#include "sdk/point3.h"

/// Origin and direction.
struct Ray {
    Point3 p, dir;
};
