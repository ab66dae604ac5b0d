// The class list: one row a class, in the order that saved scenes rely on.

#include "HairDLL/ClassRegistry.h"

#include "Base/DumMtl.h"
#include "Base/SurfDist/SurfDist.h"
#include "CurveCtl/CurveCtl.h"
#include "DebugTools/Log.h"
#include "DebugTools/MemTracker.h"
#include "FurAtmo/FurAtmo.h"
#include "HRendAtm/HairRender.h"
#include "HairAtmo/HairAtmo.h"
#include "HairDLL/LibGlobals.h"
#include "StringTable.h"
#include "sdk/plugapi.h"

namespace {

constexpr int kCategory = 40354;
constexpr int kModifierCategory = 40403; // reads the same, by its own number
constexpr int kNoCategory = 0;

/// Makes an object of a class, as the host takes it: by the base that all created objects share.
using CreateFn = ReferenceTarget* (*)();

/// What a plain descriptor answers.
struct ClassRow {
    bool isPublic;
    int name; ///< string ids
    int category;
    SClass_ID superClass;
    Class_ID id;
    const char* internalName = nullptr;
    CreateFn create = nullptr; ///< null: the class is not part of this version
    bool ownsModule = false;   ///< HInstance answers the module handle
};

template <class Base>
class RowDesc : public Base {
public:
    explicit RowDesc(const ClassRow& row) : row_(row) {}
    int IsPublic() override { return row_.isPublic; }
    void* Create(bool) override {
        if (row_.create) {
            MEM_LOCATION();
            return row_.create();
        }
        LogPrintf(LogDefault(), kLogEndLine, "class \"%s\" (super class 0x%x) is not part of this version",
                  FindString(row_.name), row_.superClass);
        return nullptr;
    }
    const char* ClassName() override { return FindString(row_.name); }
    SClass_ID SuperClassID() override { return row_.superClass; }
    Class_ID ClassID() override { return row_.id; }
    const char* Category() override { return row_.category ? FindString(row_.category) : ""; }
    const char* InternalName() override { return row_.internalName; }
    void* HInstance() override { return row_.ownsModule ? GetModuleHandle() : nullptr; }

private:
    ClassRow row_;
};

ReferenceTarget* MakeDumMtl() {
    return new DumMtl(Point3(0, 0, 0), true);
}
ReferenceTarget* MakeSurfDist() {
    return new SurfDist;
}
ReferenceTarget* MakeCurveKnot() {
    return new CurveKnot;
}
ReferenceTarget* MakeCurveCtl() {
    return new CurveCtl;
}

constexpr Class_ID kHairViewId{0x54d9504e, 0x48822ea3};

/// All descriptors; those of the modules with parameter blocks are the modules' own.
struct ClassList {
    using Plain = RowDesc<ClassDesc>;
    using WithBlocks = RowDesc<ClassDesc2>;

    WithBlocks hairView{{false, 40394, kCategory, GEOMOBJECT_CLASS_ID, kHairViewId, "velmarView", nullptr, true}};
    Plain dumMtl{{false, 40416, kNoCategory, MATERIAL_CLASS_ID, DUMMTL_CLASS_ID, nullptr, MakeDumMtl}};
    Plain vectorObj{{true, 40345, kCategory, HELPER_CLASS_ID, {0x265057db, 0x378a63fe}}};
    // intended: shares its Class_ID with hairView; the super class tells them apart.
    Plain hairViewOld{{false, 40407, kCategory, HELPER_CLASS_ID, kHairViewId}};
    Plain geomOutFilt{{true, 40454, kCategory, FLT_CLASS_ID, {0x5352399a, 0x3e6657c6}}};
    WithBlocks wind{{true, 41004, kCategory, WSM_OBJECT_CLASS_ID, {0x26636bd5, 0x049c10e5}, "WaveWind", nullptr, true}};
    Plain surfDist{{false, 40516, kNoCategory, REF_MAKER_CLASS_ID, SURFDIST_CLASS_ID, nullptr, MakeSurfDist}};
    WithBlocks shadow{
        {true, 40101, kNoCategory, SHADOW_TYPE_CLASS_ID, {0x61ff0f35, 0x04a00c2f}, "velmarShadowGen", nullptr, true}};
    WithBlocks shader{
        {true, 30640, kNoCategory, SHADER_CLASS_ID, {0x4eac6307, 0x1ba16fc3}, "OrenNayarBlinn", nullptr, true}};
    WithBlocks geomOutEff{
        {true, 40454, kCategory, RENDER_EFFECT_CLASS_ID, {0x26cb6a0e, 0x43cf3d1e}, "velmarGeomOutEff", nullptr, true}};
    Plain hairMod{{true, 40370, kModifierCategory, OSM_CLASS_ID, {0x6af3cd97, 0x99c3b9db}}};
    Plain curveKnot{{false, 11005, kNoCategory, REF_MAKER_CLASS_ID, CURVEKNOT_CLASS_ID, nullptr, MakeCurveKnot}};
    Plain curveCtl{{false, 11003, kNoCategory, REF_MAKER_CLASS_ID, CURVECTL_CLASS_ID, nullptr, MakeCurveCtl}};
    WithBlocks backToHair{
        {true, 40624, kModifierCategory, OSM_CLASS_ID, {0x24c3308e, 0x324c6225}, "Qx Back To velmar"}};

    ClassDesc* list[kNumLibraryClasses] = {
        &hairView,  &dumMtl,   &vectorObj,  &hairViewOld, GetHairRenderClassDesc(), &geomOutFilt, &wind,
        &surfDist,  &shadow,   &shader,     &geomOutEff,  GetHairAtmoClassDesc(),   &hairMod,     GetFurAtmoClassDesc(),
        &curveKnot, &curveCtl, &backToHair,
    };
};

} // namespace

ClassDesc* GetLibraryClass(int i) {
    static ClassList classes;
    return i >= 0 && i < kNumLibraryClasses ? classes.list[i] : nullptr;
}
