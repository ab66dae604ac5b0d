#pragma once
// Small types and constants that every other header of the host's interface uses.

#include <climits>
#include <cstdint>
#include <string>

/// A moment of scene time in ticks.
using TimeValue = int;
/// Ticks in one second of scene time.
inline constexpr int TIME_TICKSPERSEC = 4800;
inline constexpr TimeValue TIME_NegInfinity = INT_MIN;
inline constexpr TimeValue TIME_PosInfinity = INT_MAX;

/// Seconds of a scene time.
inline float TicksToSec(TimeValue ticks) {
    return float(ticks) / float(TIME_TICKSPERSEC);
}

/// The host's text type: 8-bit, UTF-8.
using TSTR = std::string;

/// Super class: what kind of thing a class is to the host.
using SClass_ID = uint32_t;
inline constexpr SClass_ID GEOMOBJECT_CLASS_ID = 0x10;
inline constexpr SClass_ID CAMERA_CLASS_ID = 0x20;
inline constexpr SClass_ID LIGHT_CLASS_ID = 0x30;
inline constexpr SClass_ID SHAPE_CLASS_ID = 0x40;
inline constexpr SClass_ID HELPER_CLASS_ID = 0x50;
inline constexpr SClass_ID REF_MAKER_CLASS_ID = 0x100;
inline constexpr SClass_ID REF_TARGET_CLASS_ID = 0x200;
inline constexpr SClass_ID OSM_CLASS_ID = 0x810;
inline constexpr SClass_ID WSM_CLASS_ID = 0x820;
inline constexpr SClass_ID WSM_OBJECT_CLASS_ID = 0x830;
inline constexpr SClass_ID MATERIAL_CLASS_ID = 0xc00;
inline constexpr SClass_ID TEXMAP_CLASS_ID = 0xc10;
inline constexpr SClass_ID FLT_CLASS_ID = 0xe00;
inline constexpr SClass_ID RENDERER_CLASS_ID = 0xf00;
inline constexpr SClass_ID ATMOSPHERIC_CLASS_ID = 0x1010;
inline constexpr SClass_ID RENDER_EFFECT_CLASS_ID = 0x1090;
inline constexpr SClass_ID SHADER_CLASS_ID = 0x10b0;
inline constexpr SClass_ID SHADOW_TYPE_CLASS_ID = 0x10d0;
inline constexpr SClass_ID CTRL_FLOAT_CLASS_ID = 0x9003;
inline constexpr SClass_ID CTRL_POINT3_CLASS_ID = 0x9004;
inline constexpr SClass_ID CTRL_POINT4_CLASS_ID = 0x9005;
inline constexpr SClass_ID CTRL_MATRIX3_CLASS_ID = 0x9008;
inline constexpr SClass_ID CTRL_POSITION_CLASS_ID = 0x9009;
inline constexpr SClass_ID CTRL_ROTATION_CLASS_ID = 0x900a;
inline constexpr SClass_ID CTRL_SCALE_CLASS_ID = 0x900b;
inline constexpr SClass_ID PARAMETER_BLOCK2_CLASS_ID = 0x82;
inline constexpr SClass_ID BASENODE_CLASS_ID = 0x01;

/// The identity of a plug-in class: two 32-bit words.
class Class_ID {
public:
    constexpr Class_ID() = default;
    constexpr Class_ID(uint32_t a, uint32_t b) : a_(a), b_(b) {}
    constexpr uint32_t PartA() const { return a_; }
    constexpr uint32_t PartB() const { return b_; }
    friend constexpr bool operator==(const Class_ID&, const Class_ID&) = default;
    friend constexpr bool operator<(const Class_ID& l, const Class_ID& r) {
        return l.a_ != r.a_ ? l.a_ < r.a_ : l.b_ < r.b_;
    }

private:
    uint32_t a_ = 0xffffffff;
    uint32_t b_ = 0xffffffff;
};

// Class ids of the host's own classes.
inline constexpr Class_ID TRIOBJ_CLASS_ID{0x09, 0};           ///< triangle-mesh object in the pipeline
inline constexpr Class_ID triObjectClassID = TRIOBJ_CLASS_ID; ///< the same, as conversions ask for it
inline constexpr Class_ID defObjectClassID{0x03, 0};          ///< conversion to anything that can be deformed
inline constexpr Class_ID mapObjectClassID{0x04, 0};          ///< conversion to anything that takes mapping
inline constexpr Class_ID splineShapeClassID{0x0a, 0};        ///< a shape of Bezier splines
inline constexpr Class_ID linearShapeClassID{0x0b, 0};        ///< a shape of straight pieces
inline constexpr Class_ID genericShapeClassID{0x0c, 0};       ///< conversion to any shape
inline constexpr Class_ID EDITTRIOBJ_CLASS_ID{0xe44f10b3, 0}; ///< editable mesh
inline constexpr Class_ID MESHSELECT_CLASS_ID{0x73d8ff93, 0}; ///< mesh-select modifier
inline constexpr Class_ID MULTI_CLASS_ID{0x200, 0};           ///< multi/sub-object material
inline constexpr Class_ID DMTL_CLASS_ID{0x2, 0};              ///< standard material
inline constexpr Class_ID BMTEX_CLASS_ID{0x240, 0};           ///< bitmap map
inline constexpr Class_ID CHECKER_CLASS_ID{0x200, 0};         ///< checker map
inline constexpr Class_ID SREND_CLASS_ID{0x1, 0};             ///< default scanline renderer
inline constexpr Class_ID LOOKAT_CAM_CLASS_ID{0x1001, 0};     ///< target camera
inline constexpr Class_ID OMNI_LIGHT_CLASS_ID{0x1011, 0};
inline constexpr Class_ID SPOT_LIGHT_CLASS_ID{0x1012, 0};
inline constexpr Class_ID DIR_LIGHT_CLASS_ID{0x1013, 0};

/// Result of a reference operation.
enum RefResult { REF_FAIL = 0, REF_SUCCEED = 1, REF_STOP = 2, REF_DONTCARE = 3 };

/// Which parts of an object a change touches (bit set).
using PartID = uint64_t;
inline constexpr PartID PART_TOPO = 1 << 0;
inline constexpr PartID PART_GEOM = 1 << 1;
inline constexpr PartID PART_TEXMAP = 1 << 2;
inline constexpr PartID PART_MTL = 1 << 3;
inline constexpr PartID PART_SELECT = 1 << 4;
inline constexpr PartID PART_SUBSEL_TYPE = 1 << 5;
inline constexpr PartID PART_DISPLAY = 1 << 6;
inline constexpr PartID PART_VERTCOLOR = 1 << 7;
inline constexpr PartID PART_GFX_DATA = 1 << 8;
inline constexpr PartID PART_TM = 1 << 11;
inline constexpr PartID PART_ALL = 0xffffffffu;
