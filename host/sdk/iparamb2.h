#pragma once
// Parameter blocks with descriptors.

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "sdk/color.h"
#include "sdk/interval.h"
#include "sdk/ref.h"

using ParamID = short;
using BlockID = short;

class INode;
class IParamBlock2;
class ClassDesc2;
class Control;
class Texmap;

enum ParamType2 {
    TYPE_FLOAT,
    TYPE_INT,
    TYPE_BOOL,
    TYPE_RGBA,
    TYPE_POINT3,
    TYPE_TIMEVALUE,
    TYPE_STRING,
    TYPE_INODE,
    TYPE_REFTARG,
    TYPE_TEXMAP,
    TYPE_INODE_TAB,
};

// Flags of a parameter.
inline constexpr unsigned P_ANIMATABLE = 1;    ///< may carry a controller
inline constexpr unsigned P_TRANSIENT = 2;     ///< not saved
inline constexpr unsigned P_VARIABLE_SIZE = 4; ///< a table that can grow
inline constexpr unsigned P_SUBANIM = 8;       ///< a reference shown as a track; the block shares its ownership
inline constexpr unsigned P_OWNERS_REF = 16;

// Flags of a block.
inline constexpr unsigned P_AUTO_CONSTRUCT = 1; ///< ClassDesc2::MakeAutoParamBlocks builds it and stores it at `refno`
inline constexpr unsigned P_AUTO_UI = 2;        ///< the host builds its rollout

/// One value of any parameter type.
struct PB2Value {
    int i = 0; ///< ints, bools, times
    float f = 0;
    Point3 p; ///< points and colours
    TSTR s;
    ReferenceTarget* r = nullptr; ///< references and nodes
};

/// Reads and writes a parameter on behalf of its owner, after the block did its own part: Get receives the block's
/// value, Set the clamped value that was just stored; both may change it, and what Set leaves in `v` is what the block
/// keeps. Dependents are told after Set.
class PBAccessor {
public:
    virtual ~PBAccessor() = default;
    virtual void Get(PB2Value& v, ReferenceMaker* owner, ParamID id, int tabIndex, TimeValue t, Interval& valid) {}
    virtual void Set(PB2Value& v, ReferenceMaker* owner, ParamID id, int tabIndex, TimeValue t) {}
};

/// Says whether a reference may become the value of a parameter.
class PBValidator {
public:
    virtual ~PBValidator() = default;
    virtual bool Validate(PB2Value& v) = 0;
    virtual bool Validate(PB2Value& v, ReferenceMaker* owner, ParamID id, int tabIndex) { return Validate(v); }
};

/// Description of one parameter.
struct ParamDef {
    ParamID id = 0;
    TSTR intName; ///< internal name
    ParamType2 type = TYPE_FLOAT;
    unsigned flags = 0;
    int nameId = 0; ///< string-table id of the name shown in scripts and tracks, 0 = none
    TSTR name;      ///< that name
    PB2Value def;   ///< default
    bool hasRange = false;
    float rangeLow = 0, rangeHigh = 0;
    bool worldUnits = false; ///< the value is a length
    PBAccessor* accessor = nullptr;
    PBValidator* validator = nullptr;
};

/// Description of a parameter block.
struct ParamBlockDesc2 {
    BlockID id = 0;
    TSTR intName;
    int titleId = 0;
    TSTR title;
    ClassDesc2* classDesc = nullptr;
    unsigned flags = 0;
    int refno = 0; ///< the owner's reference slot
    std::vector<ParamDef> params;

    int Count() const { return int(params.size()); }
    /// The definition with this id, or null.
    const ParamDef* Find(ParamID id) const {
        for (const ParamDef& p : params)
            if (p.id == id) return &p;
        return nullptr;
    }
};

/// A block of parameter values. Setting a value outside its range clamps it; an unknown id is ignored and read as zero.
class IParamBlock2 : public ReferenceTarget {
public:
    SClass_ID SuperClassID() override { return PARAMETER_BLOCK2_CLASS_ID; }
    virtual const ParamBlockDesc2* GetDesc() const = 0;
    virtual BlockID ID() const = 0;
    virtual ReferenceMaker* GetOwner() const = 0;
    virtual int NumParams() const = 0;
    virtual ParamID IndextoID(int index) const = 0;
    virtual int IDtoIndex(ParamID id) const = 0; ///< -1 when the block has no such parameter

    // Values at a time; `valid` is narrowed to where the value holds. Numbers are read as the type asked for.
    virtual float GetFloat(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) = 0;
    virtual int GetInt(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) = 0; ///< ints, bools, times
    virtual Point3 GetPoint3(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) = 0;
    virtual TSTR GetStr(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) = 0;
    virtual INode* GetINode(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) = 0;
    virtual ReferenceTarget* GetReferenceTarget(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) = 0;
    Color GetColor(ParamID id, TimeValue t, Interval& valid, int tabIndex = 0) {
        return Color(GetPoint3(id, t, valid, tabIndex));
    }
    float GetFloat(ParamID id, TimeValue t = 0) {
        Interval v = FOREVER;
        return GetFloat(id, t, v);
    }
    int GetInt(ParamID id, TimeValue t = 0) {
        Interval v = FOREVER;
        return GetInt(id, t, v);
    }
    Color GetColor(ParamID id, TimeValue t = 0) {
        Interval v = FOREVER;
        return GetColor(id, t, v);
    }
    TSTR GetStr(ParamID id, TimeValue t = 0) {
        Interval v = FOREVER;
        return GetStr(id, t, v);
    }
    INode* GetINode(ParamID id, TimeValue t = 0, int tabIndex = 0) {
        Interval v = FOREVER;
        return GetINode(id, t, v, tabIndex);
    }
    ReferenceTarget* GetReferenceTarget(ParamID id, TimeValue t = 0) {
        Interval v = FOREVER;
        return GetReferenceTarget(id, t, v);
    }

    // Setting returns false when the id is unknown, there is no such table entry, the type does not fit, the value is
    // not a number, a validator refuses, or a reference would make a circle. A whole number fits a float parameter.
    // Entries of a table with an accessor are left to the accessor, which may store null instead; other references are
    // shown to the validator first.
    virtual bool SetValue(ParamID id, TimeValue t, float v, int tabIndex = 0) = 0;
    virtual bool SetValue(ParamID id, TimeValue t, int v, int tabIndex = 0) = 0;
    virtual bool SetValue(ParamID id, TimeValue t, const Point3& v, int tabIndex = 0) = 0;
    virtual bool SetValue(ParamID id, TimeValue t, const TSTR& v, int tabIndex = 0) = 0;
    virtual bool SetValue(ParamID id, TimeValue t, INode* v, int tabIndex = 0) = 0;
    virtual bool SetValue(ParamID id, TimeValue t, ReferenceTarget* v, int tabIndex = 0) = 0;
    bool SetValue(ParamID id, TimeValue t, const Color& c, int tabIndex = 0) {
        return SetValue(id, t, Point3(c), tabIndex);
    }

    // Tables.
    virtual int Count(ParamID id) const = 0;
    virtual bool SetCount(ParamID id, int n) = 0;
    /// Appends a node that the validator accepts; returns false when it is refused.
    virtual bool Append(ParamID id, INode* node) = 0;
    virtual bool Delete(ParamID id, int start, int count) = 0;

    virtual Control* GetController(ParamID id) = 0;
    /// Only animatable parameters take one, of a fitting type (float for all numbers, Point3 for points and colours);
    /// the block shares its ownership (SetAutoDelete). Null leaves the constant.
    virtual bool SetController(ParamID id, Control* c) = 0;
    /// Where the parameter (all table entries) holds its value around `t`.
    virtual void GetValidity(ParamID id, TimeValue t, Interval& valid) = 0;
    /// While dependents are told of a change: the parameter (and table entry) that changed. -1 at any other time.
    virtual ParamID LastNotifyParamID(int* tabIndex = nullptr) { return -1; }
};

/// Makes a block of default values for `owner`; null without a description. The block is deleted when its last
/// reference goes (SetAutoDelete), so it dies with its owner; the description must outlive it.
IParamBlock2* CreateParameterBlock2(const ParamBlockDesc2* desc, ReferenceMaker* owner);
