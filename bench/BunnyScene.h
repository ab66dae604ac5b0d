#pragma once
// The coat, camera and light of the bunny pictures: the same numbers as in bench/bunny.toml.

#include "Base/HairParams.h"
#include "sdk/point3.h"

inline constexpr float kBunnyFov = 0.6981317f; ///< 40 degrees, horizontal
inline constexpr Point3 kBunnyCamera{0.6f, -4.2f, 0.8f}, kBunnyTarget{0.0f, 0.0f, 0.0f},
    kBunnyKeyLight{3.0f, -4.0f, 5.0f};

inline HairParams BunnyCoat(double strandsPerFace) {
    HairParams p = HairParams::Defaults(true);
    p.SetFloat(pid_length, 0.08f);
    p.SetFloat(pid_thickness, 0.002f);
    p.SetInt(pid_bezierSteps, 3);
    p.SetInt(pid_densType, 0);
    p.SetFloat(pid_densPerFace, float(strandsPerFace));
    p.SetFloat(pid_fur_leanAngle, 40.0f);
    p.SetFloat(pid_fur_leanAmtRand, 0.1f);
    p.SetFloat(pid_dirRand, 0.1f);
    return p;
}
