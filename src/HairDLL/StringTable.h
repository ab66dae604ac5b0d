#pragma once
// The library's string table: every text that users see, and the fixed English words of scripts, tracks and settings
// files, by number. The numbers are stored nowhere but used everywhere; a number never changes its meaning.

#include <string_view>

/// The text of entry `id`, or null when there is none. The text lives as long as the library.
const char* FindString(int id);

// Ids of scripts' and tracks' names (10000..) and of settings files' words (12000..), which are never translated.

/// Script and track name of a hair or fur parameter, by its identifier.
constexpr int ParamNameId(int pid) {
    return 10200 + pid;
}

/// Settings file section of a curve (250..256), surface distribution (300..316) or random distribution (400..404).
constexpr int VariationSectionId(int pid) {
    return 11950 + pid;
}

enum StringId : int {
    // Names of a curve knot's parameters and of a curve's tracks.
    kNameKnotX = 10190,
    kNameKnotY,
    kNameKnotType,
    kNameKnotTrack,

    // Sections of settings files.
    kSecCutters = 12000,
    kSecModelCutters,
    kSecModelHairs,
    kSecLength,
    kSecThickness,
    kSecDensity,
    kSecClumping,
    kSecCurliness,
    kSecShape,
    kSecDirectionRandoms,
    kSecGeometry,
    kSecPictureQuality,
    kSecShading,
    kSecDynamics,
    kSecLeaning,
    kSecLeaningVertex,
    kSecBending,
    kSecBendingVertex,
    kSecMentalRay,
    kSecVersion,
    kSecEmitters,
    kSecWinds,
    kSecGravitys,
    kSecCollisionObjects,
    kSecFaceLevelAssignment,
    kSecUVMapping,

    // Keys of settings files.
    kKeyUse = 12100,
    kKeyAutoInfMixing,
    kKeyMaximum,
    kKeyLinkThickRand2LengthRand,
    kKeyShadowFactor,
    kKeyLenRandCut,
    kKeyType,
    kKeyAbsolute,
    kKeyPerArea,
    kKeyAmount,
    kKeyRadius,
    kKeyAttractors,
    kKeyPercent,
    kKeyTurns,
    kKeyRandom,
    kKeyFixShape,
    kKeyFixFollow,
    kKeyFixDensity,
    kKeyReferenceFrame,
    kKeyAxis,
    kKeyAngle,
    kKeyRandSeed,
    kKeyMiddleStrands,
    kKeyVertexStrands,
    kKeySmooth,
    kKeyOptimize,
    kKeySides,
    kKeyMinThickness,
    kKeyGeomThinHandling,
    kKeyQuality,
    kKeyBezierSegs,
    kKeyViewDensity,
    kKeyKnots,
    kKeyBaseColor,
    kKeyTipColor,
    kKeyColBias,
    kKeyShadeBezSegs,
    kKeyShadeMidStrands,
    kKeyWidthSamples,
    kKeyWidthFiltering,
    kKeyCrossSection,
    kKeyMaterialIDUsage,
    kKeyMaterialID,
    kKeyMethod,
    kKeyUseMultithreading,
    kKeyStart,
    kKeyEnd,
    kKeyKeyType,
    kKeyKeyThreshold,
    kKeySimpleElasticity,
    kKeyMass,
    kKeyCollisionFriction,
    kKeyCollisionStaticFriction,
    kKeyCollisionDistance,
    kKeyCollisionDistanceRandomFactor,
    kKeyUseWinds,
    kKeyUseGravs,
    kKeyUseCollisions,
    kKeyGetOutOfCollidersAtStart,
    kKeyMaxVelocity,
    kKeyEdgeCollisions,
    kKeyMaxAngle,
    kKeyDirection,
    kKeyUVWChannel,
    kKeyUseLeanVects,
    kKeyExportType,
    kKeyBSPSize,
    kKeyBSPDepth,
    kKeyExportMIFile,
    kKeyMIFilesDir,
    kKeyUseVariableThickness,
    kKeyUseSubMat,
    kKeySubMat,
    kKeyUseRadiusCurve,
    kKeyUseTurnsCurve,
    kKeyVersion,
    kKeyNumChannels,
    kKeyGrowStyle,
    kKeyEnabled,
    kKeyRanges,
    kKeyUseEmitterFinalShading,
    kKeySubMatID,
    kKeyMapChanType,
    kKeyMapChan,
    kKeyComponent,
    kKeyMapName,

    // Classes.
    kClassCurveControl = 11003,
    kClassCurveKnot = 11005,

    kTextParameters = 40002,

    // Block titles, by block id from here on.
    kTitleBlocks = 40700,

    // Curve editor texts.
    kTextKnotSmooth = 40710,
    kTextKnotCorner,
    kTextKnotStep,
    kTextEditCurve,
};
