#pragma once
// Identifiers of every parameter of the hair and fur objects: one flat numbering across their blocks.

/// Parameter identifiers. 0..148 scalars, 200..208 node lists, 250..256 along-length curves, 300..316 surface
/// distributions, 400..404 random distributions. The numbers are stored in scenes and never change.
enum ParamPid : int {
    pid_length = 2, pid_densType = 6, pid_densPerFace = 7, pid_densPerArea = 8, pid_thickness = 11,
    pid_colBase = 15, pid_colTip = 16, pid_colBias = 17,
    pid_fur_leanVectAmount = 22, pid_fur_leanAmtRand = 23, pid_fur_leanMaxAngle = 24, pid_fur_bendVectAmount = 25,
    pid_fur_bendAmtRand = 26, pid_fur_bendStyle = 27,
    pid_dirRand = 28, pid_vdirRand = 29, pid_minHairDist = 35, pid_bezierSteps = 36, pid_viewDens = 37, pid_knots = 38,
    pid_randSeed = 40, pid_dyn_useDyn = 41, pid_dyn_frameStart = 42, pid_dyn_mass = 47, pid_updateOnChange = 50,
    pid_faceSel_type = 51, pid_faceSel_mtlID = 52, pid_faceSel_mtlIDs = 53, pid_faceSel_namedSet = 54,
    pid_clumpPerArea = 55, pid_clumpAmount = 56, pid_clumpRadius = 57, pid_crossSec = 58, pid_orientAxis = 59,
    pid_orientAngle = 60, pid_orientRand = 61, pid_shadeBezSegs = 62, pid_shadeMidStrands = 63,
    pid_maxWidthSamples = 64, pid_widthFiltering = 65, pid_useGeom = 67, pid_geomSmooth = 68, pid_geomOptimize = 69,
    pid_geomMinThick = 70, pid_geomSides = 71, pid_useResCutters = 72, pid_useModCutters = 73, pid_dyn_colFrict = 74,
    pid_dyn_useWinds = 75, pid_dyn_useGravs = 76, pid_dyn_useColls = 77, pid_fur_useLeaning = 78,
    pid_fur_useBending = 79, pid_dyn_method = 82, pid_clumpAttract = 83, pid_clumpPerFace = 84, pid_useCurliness = 85,
    pid_curlRadius = 86, pid_curlTurns = 87, pid_curlOrientRandom = 90, pid_linkThickRand2LenRand = 91,
    pid_fixShape = 94, pid_fixRefFrame = 95, pid_thickLenRandCut = 96, pid_curlLenRandCut = 97, pid_mtlIDUsage = 98,
    pid_uvLenRandCut = 99, pid_fixFollow = 100, pid_dyn_simpElast = 101, pid_dyn_useDynMthd = 102,
    pid_dyn_frameEnd = 103, pid_dyn_keyThresh = 104, pid_hair_autoInfMix = 105, pid_geomThin = 106, pid_mtlID = 107,
    pid_thickShadow = 109, pid_dyn_colDist = 110, pid_dyn_colDistRand = 111, pid_clumpPercent = 112,
    pid_dyn_keyType = 121, pid_fixDensity = 122, pid_dyn_getOut = 123, pid_dyn_maxVelo = 124,
    pid_dyn_staticFrict = 125, pid_dyn_edgeColls = 126, pid_fur_bendAmount = 131, pid_fur_bendUseLeanVects = 132,
    pid_fur_leanAngle = 135, pid_fur_leanDir = 136, pid_fur_leanDirRand = 137, pid_fur_leanDirChan = 138,
    pid_fur_bendDir = 139, pid_fur_bendDirRand = 140, pid_fur_bendDirChan = 141, pid_fur_leanAbsolute = 142,
    pid_fur_bendAbsolute = 143, pid_mr_exportType = 144, pid_mr_BSPSize = 145, pid_mr_BSPDepth = 146,
    pid_mr_exportMIFile = 147, pid_mr_MIFilesDir = 148,

    pid_emitters = 200, pid_cutters = 201, pid_modcuts = 202, pid_winds = 203, pid_gravs = 204, pid_colls = 205,
    pid_fur_leanVects = 206, pid_fur_bendVects = 207, pid_hair_models = 208,

    pid_curve_thickness = 250, pid_curve_curlRadius = 251, pid_curve_curlTurns = 252, pid_curve_dynWeight = 253,
    pid_curve_dynHardness = 254, pid_curve_dynInertia = 255, pid_curve_clumpShape = 256,

    pid_surfDist_length = 300, pid_surfDist_leanAngle = 301, pid_surfDist_leanDir = 302,
    pid_surfDist_bendAmount = 303, pid_surfDist_bendDir = 304, pid_surfDist_density = 305,
    pid_surfDist_thickness = 306, pid_surfDist_curlRadius = 307, pid_surfDist_curlTurns = 308,
    pid_surfDist_clumpAmount = 309, pid_surfDist_clumpRadius = 310, pid_surfDist_colBase = 311,
    pid_surfDist_colTip = 312, pid_surfDist_leanAbsolute = 313, pid_surfDist_bendAbsolute = 314,
    pid_surfDist_dirRand = 315, pid_surfDist_vdirRand = 316,

    pid_randDist_length = 400, pid_randDist_thickness = 401, pid_randDist_colorH = 402, pid_randDist_colorS = 403,
    pid_randDist_colorV = 404,
};

inline constexpr int kNumScalarPids = 149;  ///< identifiers 0..148
inline constexpr int kFirstNodeListPid = 200, kNumNodeLists = 9;
inline constexpr int kFirstCurvePid = 250, kNumCurves = 7;
inline constexpr int kFirstSurfDistPid = 300, kNumSurfDists = 17;
inline constexpr int kFirstRandDistPid = 400, kNumRandDists = 5;
inline constexpr int kNumPids = 405;        ///< one past the highest identifier
