// Every scalar parameter's record, by identifier.

#include "Base/ParamDefs.h"
#include "HairDLL/StringTable.h"

namespace {

// Control ids leave room for four radio buttons a parameter.
constexpr int ControlId(int pid) {
    return 2000 + 4 * pid;
}
constexpr int SpinnerId(int pid) {
    return ControlId(pid) + 1;
}

constexpr ParamDefRecord kUnused{0, 0, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, kNoParam};

} // namespace

// Section, key, change groups, kind, name, edit control, spinner (or number of radio buttons), default, min, max, id.
constinit const std::array<ParamDefRecord, kNumScalarPids> ParamDefTable = {{
    kUnused, // 0
    kUnused, // 1
    {kSecLength, kKeyMaximum, GROUP_SHAPE, KIND_ANIMATABLE, ParamNameId(2), ControlId(2), SpinnerId(2), 4.0f, 0.0f,
     1000000.0f, 2},
    {0, kKeyRandom, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 3},
    {0, kKeyUseSubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 4},
    {0, kKeySubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 5},
    {kSecDensity, kKeyType, GROUP_RENDER, 0, ParamNameId(6), ControlId(6), 0, 1.0f, 0.0f, 1.0f, 6},
    {kSecDensity, kKeyAbsolute, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(7), ControlId(7), SpinnerId(7), 1.0f,
     0.000001f, 1000000.0f, 7},
    {kSecDensity, kKeyPerArea, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(8), ControlId(8), SpinnerId(8), 0.2f,
     0.000001f, 1000000.0f, 8},
    {0, kKeyUseSubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 9},
    {0, kKeySubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 10},
    {kSecThickness, kKeyMaximum, GROUP_DYNAMICS | GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(11), ControlId(11),
     SpinnerId(11), 0.4f, 0.0f, 1000000.0f, 11},
    {0, kKeyRandom, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 12},
    {0, kKeyUseSubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 13},
    {0, kKeySubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 14},
    {kSecShading, kKeyBaseColor, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(15), ControlId(15), 0, 0.3f, 0.0f, 1.0f,
     15},
    {kSecShading, kKeyTipColor, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(16), ControlId(16), 0, 0.6f, 0.0f, 1.0f, 16},
    {kSecShading, kKeyColBias, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(17), ControlId(17), SpinnerId(17), 0.0f,
     -1.0f, 1.0f, 17},
    {0, kKeyRandom, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 18},
    {0, kKeyUseSubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 19},
    {0, kKeySubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 20},
    kUnused, // 21
    {kSecLeaning, kKeyAmount, GROUP_SHAPE, KIND_ANIMATABLE | KIND_FUR, ParamNameId(22), ControlId(22), SpinnerId(22),
     0.0f, -1.0f, 1.0f, 22},
    {kSecLeaning, kKeyRandom, GROUP_SHAPE, KIND_ANIMATABLE | KIND_FUR, ParamNameId(23), ControlId(23), SpinnerId(23),
     0.0f, 0.0f, 1.0f, 23},
    {kSecLeaning, kKeyMaxAngle, GROUP_SHAPE, KIND_ANIMATABLE | KIND_FUR, ParamNameId(24), ControlId(24), SpinnerId(24),
     85.0f, 0.0f, 180.0f, 24},
    {kSecBending, kKeyAmount, GROUP_SHAPE, KIND_ANIMATABLE | KIND_FUR, ParamNameId(25), ControlId(25), SpinnerId(25),
     0.0f, -1.0f, 1.0f, 25},
    {kSecBending, kKeyRandom, GROUP_SHAPE, KIND_ANIMATABLE | KIND_FUR, ParamNameId(26), ControlId(26), SpinnerId(26),
     0.0f, 0.0f, 1.0f, 26},
    {kSecBending, kKeyType, GROUP_SHAPE, KIND_FUR, ParamNameId(27), ControlId(27), 0, 1.0f, 0.0f, 1.0f, 27},
    {kSecDirectionRandoms, kKeyMiddleStrands, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(28), ControlId(28),
     SpinnerId(28), 0.0f, 0.0f, 1.0f, 28},
    {kSecDirectionRandoms, kKeyVertexStrands, GROUP_SHAPE, KIND_ANIMATABLE, ParamNameId(29), ControlId(29),
     SpinnerId(29), 0.0f, 0.0f, 1.0f, 29},
    kUnused, // 30
    kUnused, // 31
    kUnused, // 32
    kUnused, // 33
    kUnused, // 34
    {kSecPictureQuality, kKeyQuality, GROUP_RENDER, 0, ParamNameId(35), ControlId(35), SpinnerId(35), 0.0f, 0.0f, 10.0f,
     35},
    {kSecPictureQuality, kKeyBezierSegs, GROUP_RENDER | GROUP_VIEW, KIND_ANIMATABLE, ParamNameId(36), ControlId(36),
     SpinnerId(36), 5.0f, 1.0f, 1000.0f, 36},
    {kSecPictureQuality, kKeyViewDensity, GROUP_VIEW, 0, ParamNameId(37), ControlId(37), SpinnerId(37), 40.0f, 0.0f,
     100.0f, 37},
    {kSecPictureQuality, kKeyKnots, GROUP_SHAPE, 0, ParamNameId(38), ControlId(38), SpinnerId(38), 5.0f, 2.0f, 1000.0f,
     38},
    kUnused, // 39
    {kSecDirectionRandoms, kKeyRandSeed, GROUP_SHAPE, 0, ParamNameId(40), ControlId(40), SpinnerId(40), 0.0f, 0.0f,
     10000.0f, 40},
    {kSecDynamics, kKeyUse, GROUP_VIEW, 0, ParamNameId(41), ControlId(41), 3, 0.0f, 0.0f, 2.0f, 41},
    {kSecDynamics, kKeyStart, GROUP_DYNAMICS, KIND_NOT_CLAMPED, ParamNameId(42), ControlId(42), SpinnerId(42), -1.0f,
     -2147483648.0f, 2147483648.0f, 42},
    kUnused, // 43
    kUnused, // 44
    kUnused, // 45
    kUnused, // 46
    {kSecDynamics, kKeyMass, GROUP_DYNAMICS, KIND_ANIMATABLE, ParamNameId(47), ControlId(47), SpinnerId(47), 1.0f, 0.0f,
     1000000.0f, 47},
    kUnused, // 48
    kUnused, // 49
    {0, 0, 0, 0, ParamNameId(50), 0, 0, 1.0f, 0.0f, 1.0f, 50},
    {0, 0, 0, 0, ParamNameId(51), 0, 0, 0.0f, 0.0f, 4.0f, 51},
    {0, 0, 0, 0, ParamNameId(52), 0, 0, 0.0f, 0.0f, 0.0f, 52},
    {0, 0, 0, 0, ParamNameId(53), 0, 0, 0.0f, 0.0f, 0.0f, 53},
    {0, 0, 0, 0, ParamNameId(54), 0, 0, 0.0f, 0.0f, 0.0f, 54},
    {kSecClumping, kKeyPerArea, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(55), ControlId(55), SpinnerId(55), 0.05f,
     0.0f, 1000000.0f, 55},
    {kSecClumping, kKeyAmount, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(56), ControlId(56), SpinnerId(56), 0.0f, 0.0f,
     1.0f, 56},
    {kSecClumping, kKeyRadius, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(57), ControlId(57), SpinnerId(57), 10.0f,
     0.0f, 1000000.0f, 57},
    {kSecShape, kKeyCrossSection, GROUP_RENDER, 0, ParamNameId(58), ControlId(58), 2, 0.0f, 0.0f, 1.0f, 58},
    {kSecShape, kKeyAxis, GROUP_RENDER, 0, ParamNameId(59), ControlId(59), 0, 3.0f, 0.0f, 3.0f, 59},
    {kSecShape, kKeyAngle, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(60), ControlId(60), SpinnerId(60), -90.0f,
     -180.0f, 180.0f, 60},
    {kSecShape, kKeyRandom, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(61), ControlId(61), SpinnerId(61), 0.0f, 0.0f,
     1.0f, 61},
    {kSecShading, kKeyShadeBezSegs, GROUP_RENDER, 0, ParamNameId(62), ControlId(62), 0, 1.0f, 0.0f, 1.0f, 62},
    {kSecShading, kKeyShadeMidStrands, GROUP_RENDER, 0, ParamNameId(63), ControlId(63), 0, 1.0f, 0.0f, 1.0f, 63},
    {kSecShading, kKeyWidthSamples, GROUP_RENDER, 0, ParamNameId(64), ControlId(64), SpinnerId(64), 1.0f, 1.0f, 100.0f,
     64},
    {kSecShading, kKeyWidthFiltering, GROUP_RENDER, 0, ParamNameId(65), ControlId(65), 0, 0.0f, 0.0f, 1.0f, 65},
    {0, kKeyUseVariableThickness, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 66},
    {kSecGeometry, kKeyUse, GROUP_RENDER | GROUP_VIEW, 0, ParamNameId(67), ControlId(67), 0, 0.0f, 0.0f, 1.0f, 67},
    {kSecGeometry, kKeySmooth, GROUP_RENDER, 0, ParamNameId(68), ControlId(68), 0, 1.0f, 0.0f, 1.0f, 68},
    {kSecGeometry, kKeyOptimize, GROUP_RENDER, 0, ParamNameId(69), ControlId(69), 0, 0.0f, 0.0f, 1.0f, 69},
    {kSecGeometry, kKeyMinThickness, GROUP_RENDER, 0, ParamNameId(70), ControlId(70), SpinnerId(70), 0.0f, 0.0f,
     1000000.0f, 70},
    {kSecGeometry, kKeySides, GROUP_RENDER, 0, ParamNameId(71), ControlId(71), SpinnerId(71), 3.0f, 1.0f, 100.0f, 71},
    {kSecCutters, kKeyUse, GROUP_RENDER | GROUP_VIEW, 0, ParamNameId(72), ControlId(72), 0, 0.0f, 0.0f, 1.0f, 72},
    {kSecModelCutters, kKeyUse, GROUP_SHAPE, 0, ParamNameId(73), ControlId(73), 0, 0.0f, 0.0f, 1.0f, 73},
    {kSecDynamics, kKeyCollisionFriction, GROUP_DYNAMICS, KIND_ANIMATABLE, ParamNameId(74), ControlId(74),
     SpinnerId(74), 0.2f, 0.0f, 1.0f, 74},
    {kSecDynamics, kKeyUseWinds, GROUP_DYNAMICS, KIND_ANIMATABLE, ParamNameId(75), ControlId(75), 0, 0.0f, 0.0f, 1.0f,
     75},
    {kSecDynamics, kKeyUseGravs, GROUP_DYNAMICS, KIND_ANIMATABLE, ParamNameId(76), ControlId(76), 0, 0.0f, 0.0f, 1.0f,
     76},
    {kSecDynamics, kKeyUseCollisions, GROUP_DYNAMICS, KIND_ANIMATABLE, ParamNameId(77), ControlId(77), 0, 0.0f, 0.0f,
     1.0f, 77},
    {kSecLeaning, kKeyUse, GROUP_SHAPE, KIND_FUR, ParamNameId(78), ControlId(78), 0, 1.0f, 0.0f, 1.0f, 78},
    {kSecBending, kKeyUse, GROUP_SHAPE, KIND_FUR, ParamNameId(79), ControlId(79), 0, 1.0f, 0.0f, 1.0f, 79},
    kUnused, // 80
    kUnused, // 81
    {kSecDynamics, kKeyMethod, GROUP_DYNAMICS, 0, ParamNameId(82), ControlId(82), 2, 0.0f, 0.0f, 2.0f, 82},
    {kSecClumping, kKeyAttractors, GROUP_RENDER, 0, ParamNameId(83), ControlId(83), 0, 0.0f, 0.0f, 3.0f, 83},
    {kSecClumping, kKeyAbsolute, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(84), ControlId(84), SpinnerId(84), 0.2f,
     0.0f, 1000000.0f, 84},
    {kSecCurliness, kKeyUse, GROUP_SHAPE | GROUP_DYNAMICS, 0, ParamNameId(85), ControlId(85), 0, 0.0f, 0.0f, 1.0f, 85},
    {kSecCurliness, kKeyRadius, GROUP_SHAPE | GROUP_DYNAMICS, KIND_ANIMATABLE, ParamNameId(86), ControlId(86),
     SpinnerId(86), 1.0f, 0.0f, 1000000.0f, 86},
    {kSecCurliness, kKeyTurns, GROUP_SHAPE, KIND_ANIMATABLE, ParamNameId(87), ControlId(87), SpinnerId(87), 2.0f, 0.0f,
     1000000.0f, 87},
    {0, kKeyUseRadiusCurve, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 88},
    {0, kKeyUseTurnsCurve, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 89},
    {kSecCurliness, kKeyRandom, GROUP_SHAPE, KIND_ANIMATABLE, ParamNameId(90), ControlId(90), SpinnerId(90), 0.5f, 0.0f,
     1.0f, 90},
    {kSecThickness, kKeyLinkThickRand2LengthRand, GROUP_RENDER, 0, ParamNameId(91), ControlId(91), 0, 0.0f, 0.0f, 1.0f,
     91},
    {0, kKeyUseSubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 92},
    {0, kKeySubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 93},
    {kSecShape, kKeyFixShape, GROUP_SHAPE, 0, ParamNameId(94), ControlId(94), 0, 1.0f, 0.0f, 1.0f, 94},
    {kSecShape, kKeyReferenceFrame, GROUP_SHAPE, KIND_NOT_CLAMPED, ParamNameId(95), ControlId(95), SpinnerId(95), 0.0f,
     -2147483648.0f, 2147483648.0f, 95},
    {kSecThickness, kKeyLenRandCut, GROUP_RENDER, 0, 0, 0, 0, 0.0f, 0.0f, 1.0f, 96},
    {kSecCurliness, kKeyLenRandCut, GROUP_RENDER, 0, 0, 0, 0, 0.0f, 0.0f, 1.0f, 97},
    {kSecShading, kKeyMaterialIDUsage, GROUP_RENDER, 0, ParamNameId(98), ControlId(98), 0, 0.0f, 0.0f, 1.0f, 98},
    {kSecShading, kKeyLenRandCut, GROUP_RENDER, 0, 0, 0, 0, 0.0f, 0.0f, 1.0f, 99},
    {kSecShape, kKeyFixFollow, GROUP_SHAPE, 0, ParamNameId(100), ControlId(100), 0, 1.0f, 0.0f, 1.0f, 100},
    {kSecDynamics, kKeySimpleElasticity, GROUP_DYNAMICS, KIND_ANIMATABLE, ParamNameId(101), ControlId(101),
     SpinnerId(101), 0.2f, 0.0f, 1.0f, 101},
    {kSecDynamics, kKeyUseMultithreading, 0, 0, ParamNameId(102), ControlId(102), 0, 1.0f, 0.0f, 1.0f, 102},
    {kSecDynamics, kKeyEnd, GROUP_VIEW, KIND_NOT_CLAMPED, ParamNameId(103), ControlId(103), SpinnerId(103), -1.0f,
     -2147483648.0f, 2147483648.0f, 103},
    {kSecDynamics, kKeyKeyThreshold, 0, 0, ParamNameId(104), ControlId(104), SpinnerId(104), 0.1f, 0.0f, 1000000.0f,
     104},
    {kSecModelHairs, kKeyAutoInfMixing, GROUP_SHAPE, KIND_ANIMATABLE | KIND_HAIR, ParamNameId(105), ControlId(105),
     SpinnerId(105), 0.5f, 0.0f, 1.0f, 105},
    {kSecGeometry, kKeyGeomThinHandling, GROUP_RENDER, 0, ParamNameId(106), ControlId(106), 2, 0.0f, 0.0f, 1.0f, 106},
    {kSecShading, kKeyMaterialID, GROUP_RENDER, 0, ParamNameId(107), ControlId(107), SpinnerId(107), 1.0f, 1.0f,
     65535.0f, 107},
    kUnused, // 108
    {kSecThickness, kKeyShadowFactor, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(109), ControlId(109), SpinnerId(109),
     1.0f, 0.0f, 1.0f, 109},
    {kSecDynamics, kKeyCollisionDistance, GROUP_DYNAMICS, 0, ParamNameId(110), ControlId(110), SpinnerId(110), 1.0f,
     0.0f, 1000000.0f, 110},
    {kSecDynamics, kKeyCollisionDistanceRandomFactor, GROUP_DYNAMICS, 0, ParamNameId(111), ControlId(111),
     SpinnerId(111), 0.6f, 0.0f, 1.0f, 111},
    {kSecClumping, kKeyPercent, GROUP_RENDER, KIND_ANIMATABLE, ParamNameId(112), ControlId(112), SpinnerId(112), 0.05f,
     0.0f, 1.0f, 112},
    {0, kKeyUseSubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 113},
    {0, kKeySubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 114},
    {0, kKeyUseSubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 115},
    {0, kKeySubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 116},
    {0, kKeyUseSubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 117},
    {0, kKeySubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 118},
    {0, kKeyUseSubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 119},
    {0, kKeySubMat, 0, 0, 0, 0, 0, 0.0f, 0.0f, 0.0f, 120},
    {kSecDynamics, kKeyKeyType, GROUP_DYNAMICS, 0, ParamNameId(121), ControlId(121), 2, 0.0f, 0.0f, 1.0f, 121},
    {kSecShape, kKeyFixDensity, GROUP_SHAPE, 0, ParamNameId(122), ControlId(122), 0, 1.0f, 0.0f, 1.0f, 122},
    {kSecDynamics, kKeyGetOutOfCollidersAtStart, GROUP_DYNAMICS, 0, ParamNameId(123), ControlId(123), 0, 1.0f, 0.0f,
     1.0f, 123},
    {kSecDynamics, kKeyMaxVelocity, GROUP_DYNAMICS, KIND_ANIMATABLE, ParamNameId(124), ControlId(124), SpinnerId(124),
     0.0f, 0.0f, 1000.0f, 124},
    {kSecDynamics, kKeyCollisionStaticFriction, GROUP_DYNAMICS, KIND_ANIMATABLE, ParamNameId(125), ControlId(125),
     SpinnerId(125), 0.4f, 0.0f, 1.0f, 125},
    {kSecDynamics, kKeyEdgeCollisions, GROUP_DYNAMICS, KIND_ANIMATABLE, ParamNameId(126), ControlId(126), 0, 0.0f, 0.0f,
     1.0f, 126},
    kUnused, // 127
    kUnused, // 128
    kUnused, // 129
    kUnused, // 130
    {kSecBendingVertex, kKeyAmount, GROUP_SHAPE, KIND_ANIMATABLE | KIND_FUR, ParamNameId(131), ControlId(131),
     SpinnerId(131), 0.0f, -1.0f, 1.0f, 131},
    {kSecBending, kKeyUseLeanVects, GROUP_SHAPE, KIND_FUR, ParamNameId(132), ControlId(132), 0, 1.0f, 0.0f, 1.0f, 132},
    kUnused, // 133
    kUnused, // 134
    {kSecLeaningVertex, kKeyAngle, GROUP_SHAPE, KIND_ANIMATABLE | KIND_FUR, ParamNameId(135), ControlId(135),
     SpinnerId(135), 0.0f, -180.0f, 180.0f, 135},
    {kSecLeaningVertex, kKeyDirection, GROUP_SHAPE, KIND_ANIMATABLE | KIND_FUR, ParamNameId(136), ControlId(136),
     SpinnerId(136), 0.0f, -180.0f, 180.0f, 136},
    {kSecLeaningVertex, kKeyRandom, GROUP_SHAPE, KIND_ANIMATABLE | KIND_FUR, ParamNameId(137), ControlId(137),
     SpinnerId(137), 0.0f, 0.0f, 1.0f, 137},
    {kSecLeaningVertex, kKeyUVWChannel, GROUP_SHAPE, KIND_FUR, ParamNameId(138), 0, 0, 1.0f, -3.0f, 100.0f, 138},
    {kSecBendingVertex, kKeyDirection, GROUP_SHAPE, KIND_ANIMATABLE | KIND_FUR, ParamNameId(139), ControlId(139),
     SpinnerId(139), 0.0f, -180.0f, 180.0f, 139},
    {kSecBendingVertex, kKeyRandom, GROUP_SHAPE, KIND_ANIMATABLE | KIND_FUR, ParamNameId(140), ControlId(140),
     SpinnerId(140), 0.0f, 0.0f, 1.0f, 140},
    {kSecBendingVertex, kKeyUVWChannel, GROUP_SHAPE, KIND_FUR, ParamNameId(141), 0, 0, 1.0f, -3.0f, 100.0f, 141},
    {kSecLeaningVertex, kKeyType, GROUP_SHAPE, KIND_FUR, ParamNameId(142), ControlId(142), 2, 0.0f, 0.0f, 1.0f, 142},
    {kSecBendingVertex, kKeyType, GROUP_SHAPE, KIND_FUR, ParamNameId(143), ControlId(143), 2, 0.0f, 0.0f, 1.0f, 143},
    {kSecMentalRay, kKeyExportType, GROUP_RENDER, 0, ParamNameId(144), ControlId(144), 2, 0.0f, 0.0f, 1.0f, 144},
    {kSecMentalRay, kKeyBSPSize, GROUP_RENDER, 0, ParamNameId(145), ControlId(145), SpinnerId(145), 32.0f, 1.0f,
     1000000.0f, 145},
    {kSecMentalRay, kKeyBSPDepth, GROUP_RENDER, 0, ParamNameId(146), ControlId(146), SpinnerId(146), 20.0f, 1.0f,
     1000000.0f, 146},
    {kSecMentalRay, kKeyExportMIFile, GROUP_RENDER, 0, ParamNameId(147), ControlId(147), 0, 0.0f, 0.0f, 1.0f, 147},
    {kSecMentalRay, kKeyMIFilesDir, GROUP_RENDER, 0, ParamNameId(148), ControlId(148), 0, 0.0f, 0.0f, 0.0f, 148},
}};
