#pragma once
// The class list as saved scenes know it.

#include "sdk/basetypes.h"

struct ExpectedClass {
    const char* name;
    SClass_ID superClass;
    Class_ID id;
    bool isPublic;
    const char* category;
    const char* internalName; ///< null: none
    bool ownsModule;
    bool withBlocks;
    bool built; ///< Create makes an object
};

inline constexpr ExpectedClass kExpectedClasses[] = {
    {"velmarView", 0x10, {0x54d9504e, 0x48822ea3}, false, "Corvanta", "velmarView", true, true, false},
    {"Hair Default", 0xc00, {0x10707f49, 0x040f5940}, false, "", nullptr, false, false, true},
    {"velmarVector", 0x50, {0x265057db, 0x378a63fe}, true, "Corvanta", nullptr, false, false, false},
    {"HairViewOld", 0x50, {0x54d9504e, 0x48822ea3}, false, "Corvanta", nullptr, false, false, false},
    {"velmar Renderer", 0x1010, {0x2b22403b, 0x168608d6}, true, "", "velmarRender", true, true, true},
    {"velmar G-buffer Output", 0xe00, {0x5352399a, 0x3e6657c6}, true, "Corvanta", nullptr, false, false, false},
    {"WaveWind", 0x830, {0x26636bd5, 0x049c10e5}, true, "Corvanta", "WaveWind", true, true, false},
    {"Surface Distribution", 0x100, {0x4cc91804, 0x72ef7a4d}, false, "", nullptr, false, false, true},
    {"velmar Shadows", 0x10d0, {0x61ff0f35, 0x04a00c2f}, true, "", "velmarShadowGen", true, true, false},
    {"velmar Shader", 0x10b0, {0x4eac6307, 0x1ba16fc3}, true, "", "OrenNayarBlinn", true, true, false},
    {"velmar G-buffer Output",
     0x1090,
     {0x26cb6a0e, 0x43cf3d1e},
     true,
     "Corvanta",
     "velmarGeomOutEff",
     true,
     true,
     false},
    {"velmar", 0x1010, {0x6d707903, 0x0614216f}, true, "", "velmar", true, true, true},
    {"Model Hair", 0x810, {0x6af3cd97, 0x99c3b9db}, true, "Corvanta", nullptr, false, false, false},
    {"lanvo", 0x1010, {0x790b49f8, 0x74687d62}, true, "", "lanvo", true, true, true},
    {"Curve Knot", 0x100, {0x78040a9c, 0x059a6d01}, false, "", nullptr, false, false, true},
    {"Curve Control", 0x100, {0x5df038a1, 0x4ff748fe}, false, "", nullptr, false, false, true},
    {"Qx Back To velmar", 0x810, {0x24c3308e, 0x324c6225}, true, "Corvanta", "Qx Back To velmar", false, true, false},
};
inline constexpr int kRendererClass = 4;
