#pragma once
// The static definition tables of the hair and fur objects' parameters: what settings files, change tracking, the value
// cache and the parameter blocks are made from.

#include <array>
#include <cstdint>
#include <string>

#include "Base/ParamIds.h"
#include "CurveCtl/CurveShape.h"

class CurveCtl;

/// What a change of a parameter invalidates (bit set).
enum ChangeGroup : int {
    GROUP_SHAPE = 1,    ///< the vertex strands' shape
    GROUP_DYNAMICS = 2, ///< simulated motion
    GROUP_RENDER = 4,   ///< strands as they are rendered
    GROUP_VIEW = 8,     ///< strands as viewports show them
};

/// Properties of a scalar parameter (bit set).
enum ParamKind : int {
    KIND_ANIMATABLE = 2,
    KIND_NOT_CLAMPED = 4, ///< a time that is cached as it is, not clamped to its range
    KIND_FUR = 8,         ///< fur object only
    KIND_HAIR = 16,       ///< hair object only
};

/// Marks an unused slot of ParamDefTable, and a curve that scales no parameter.
inline constexpr int kNoParam = 65535;

/// One scalar parameter. A record with a key but no section is a retired setting, kept so that its identifier is never
/// used again.
struct ParamDefRecord {
    int section; ///< string id of the settings file section, 0 = not in files
    int key;     ///< string id of the key, 0 = none
    int groups;  ///< ChangeGroup bits
    int kind;    ///< ParamKind bits
    int name;    ///< string id of the script and track name, 0 = none
    int edit;    ///< control id in the rollout, 0 = none
    int spinner; ///< control id of the spinner, 0 = none; the number of buttons for radio groups
    float def;   ///< default; colours hold a placeholder, their defaults stand in the block
    float min, max;
    int id; ///< the record's own identifier, or kNoParam
};

/// All scalar parameters by identifier.
extern const std::array<ParamDefRecord, kNumScalarPids> ParamDefTable;

/// One along-length curve with its default shape.
struct CurveDefRecord {
    int section;     ///< string id of the settings file section
    int name;        ///< string id of the script and track name
    int groups;      ///< ChangeGroup bits
    uint32_t scales; ///< low 16 bits: the scalar it scales, kNoParam = none; bit 16: switched on when created
    float xMin, xMax, yMin, yMax;
    float startY, endY; ///< y of the first and of the last knot
    int innerCount;
    struct {
        float x, y;
    } inner[3];

    int ScaledParam() const { return int(scales & 0xffffu); }
    bool EnabledAtCreation() const { return (scales >> 16 & 1u) != 0; }
};

/// The curves 250..256, in order.
extern const std::array<CurveDefRecord, kNumCurves> CurveDefTable;

/// One surface or random distribution.
struct DistDefRecord {
    int section; ///< string id of the settings file section
    int name;    ///< string id of the script and track name
    int groups;  ///< ChangeGroup bits
    int scales;  ///< the scalar it varies
};

/// The surface distributions 300..316, in order.
extern const std::array<DistDefRecord, kNumSurfDists> SurfDistDefTable;
/// The random distributions 400..404, in order. intended: all three colour distributions name the tip colour.
extern const std::array<DistDefRecord, kNumRandDists> RandDistDefTable;

/// Change groups of any parameter; 0 for identifiers without a record and for node lists.
int ChangeGroupsOf(int pid);

/// The default shape of a curve as plain data, fitted, whether it is switched on or not.
CurveShape DefaultCurveShape(const CurveDefRecord& def);

/// A new curve object of the record's default shape, switched on when the record says so. The caller stores it.
CurveCtl* BuildDefaultCurve(const CurveDefRecord& def);
/// A new random distribution: switched off, even over 0..1.
CurveCtl* BuildDefaultRandDist();

/// The parameter reference of the fur (or hair) object in Markdown, from the tables and blocks.
std::string DescribeParameters(bool fur);

/// The whole page docs/parameters.md: both objects.
std::string ParameterPage();
