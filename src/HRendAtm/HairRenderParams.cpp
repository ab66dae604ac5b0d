// The block "velmarRender", its accessor, and the class descriptor.

#include "HRendAtm/HairRender.h"

#include "HairDLL/LibGlobals.h"

namespace {

// Reads the statistics of the last render; nothing sets them.
class HRendParamAccessor : public PBAccessor {
public:
    void Get(PB2Value& v, ReferenceMaker*, ParamID id, int, TimeValue, Interval& valid) override {
        const HairRender* r = HairRender::Existing();
        if (!r || id < HRP_STATS_HAIR_TIME || id > HRP_STATS_GEOM_VERTS) return;
        const HairRenderStats& s = r->Stats();
        const std::atomic<int>* values[] = {&s.hairMs,          &s.shadowMs,      &s.hairBytes,
                                            &s.shadowBytes,     &s.gbufferBytes,  &s.strands,
                                            &s.geometryStrands, &s.geometryFaces, &s.geometryVerts};
        v.i = values[id - HRP_STATS_HAIR_TIME]->load();
        valid = FOREVER;
    }
};

ParamDef Base(ParamID id, const char* name, ParamType2 type, unsigned flags, int nameId) {
    ParamDef d;
    d.id = id;
    d.intName = d.name = name;
    d.type = type;
    d.flags = flags;
    d.nameId = nameId;
    return d;
}

ParamDef FloatParam(ParamID id, const char* name, int nameId, float def, float low, float high) {
    ParamDef d = Base(id, name, TYPE_FLOAT, P_ANIMATABLE, nameId);
    d.def.f = def;
    d.hasRange = true, d.rangeLow = low, d.rangeHigh = high;
    return d;
}

ParamDef IntParam(ParamID id, const char* name, int nameId, unsigned flags, int def, int low, int high) {
    ParamDef d = Base(id, name, TYPE_INT, flags, nameId);
    d.def.i = def;
    d.hasRange = true, d.rangeLow = float(low), d.rangeHigh = float(high);
    return d;
}

ParamDef BoolParam(ParamID id, const char* name, int nameId, bool def) {
    ParamDef d = Base(id, name, TYPE_BOOL, 0, nameId);
    d.def.i = def;
    return d;
}

ParamDef StatParam(ParamID id, const char* name, PBAccessor* accessor) {
    ParamDef d = Base(id, name, TYPE_INT, P_TRANSIENT, 0);
    d.accessor = accessor;
    return d;
}

ParamBlockDesc2 BuildBlock() {
    static HRendParamAccessor accessor;
    ParamBlockDesc2 b;
    b.id = 0;
    b.intName = "velmarRender";
    b.titleId = 40005;
    b.title = "velmar Renderer";
    b.flags = P_AUTO_CONSTRUCT | P_AUTO_UI;
    b.refno = 0;
    b.params = {
        FloatParam(HRP_QUALITY_MEMORY, "Quality_Memory", 10001, 5.0f, 0.0f, 10.0f),
        BoolParam(HRP_HAIR_OBJECT_SHADOWS, "Hair_Object_Shadows", 10002, true),
        IntParam(HRP_BUCKET_SIZE, "Bucket_Size", 10003, P_ANIMATABLE, 256, 10, 10000),
        BoolParam(HRP_USE_PROGRESS, "Use_Progress_Indicator", 10004, true),
        FloatParam(HRP_THICK_LIMIT, "Thick_Renderer_Limit", 10005, 0.05f, 0.0f, 1000000.0f),
        BoolParam(HRP_USE_ATMOSBLENDER, "Use_AtmosBlender", 10006, true),
        BoolParam(HRP_USE_THICK, "Use_Thick_Renderer", 10007, true),
        BoolParam(HRP_LARGE_WARNING, "Large_Geometry_Warning", 10008, true),
        IntParam(HRP_LARGE_FACES, "Large_Geometry_Faces", 10009, 0, 200000, 0, 10000000),
        BoolParam(HRP_HAIR_HAIR_SHADOWS, "Hair_Hair_Shadows", 10010, true),
        BoolParam(HRP_DISABLE_MIDDLE_SHADING, "Disable_Middle_Shading", 10011, false),
        BoolParam(HRP_MULTITHREADING, "Multithreading", 10012, true),
        FloatParam(HRP_FILTER_SIZE, "Filter_Size", 10013, 1.5f, 0.0f, 3.0f),
        IntParam(HRP_FILTER_TYPE, "Filter_Type", 10014, 0, 2, 0, 2),
        // The list has three entries and its order is the value, so 0 ("None") is allowed too.
        IntParam(HRP_BUCKET_TYPE, "Bucket_Type", 10015, 0, 1, 0, 2),
        BoolParam(HRP_BUCKETS_FROM_RENDERER, "Buckets_From_Renderer", 10016, true),
        StatParam(HRP_STATS_HAIR_TIME, "statsHairTime", &accessor),
        StatParam(HRP_STATS_SHADOW_TIME, "statsShadowTime", &accessor),
        StatParam(HRP_STATS_HAIR_MEM, "statsHairMem", &accessor),
        StatParam(HRP_STATS_SHADOW_MEM, "statsShadowMem", &accessor),
        StatParam(HRP_STATS_GBUF_MEM, "statsGBufMem", &accessor),
        StatParam(HRP_STATS_STRANDS, "statsNumRendStrands", &accessor),
        StatParam(HRP_STATS_GEOM_STRANDS, "statsNumGeomStrands", &accessor),
        StatParam(HRP_STATS_GEOM_FACES, "statsGeomFaces", &accessor),
        StatParam(HRP_STATS_GEOM_VERTS, "statsGeomVerts", &accessor),
    };
    return b;
}

// Create always answers the one renderer of the process.
class HairRenderClassDesc : public ClassDesc2 {
public:
    HairRenderClassDesc() {
        ParamBlockDesc2* block = GetHairRenderBlock();
        block->classDesc = this;
        AddParamBlockDesc(block);
    }
    int IsPublic() override { return 1; }
    void* Create(bool) override {
        MEM_LOCATION();
        HairRender& r = HairRender::Instance();
        if (!r.GetParamBlock(0)) MakeAutoParamBlocks(&r);
        // The host keeps pointers to the common base of what it creates.
        return static_cast<ReferenceTarget*>(&r);
    }
    const char* ClassName() override { return "velmar Renderer"; }
    SClass_ID SuperClassID() override { return ATMOSPHERIC_CLASS_ID; }
    Class_ID ClassID() override { return HAIRRENDER_CLASS_ID; }
    const char* Category() override { return ""; }
    const char* InternalName() override { return "velmarRender"; }
    void* HInstance() override { return GetModuleHandle(); }
};

} // namespace

ParamBlockDesc2* GetHairRenderBlock() {
    static ParamBlockDesc2 block = BuildBlock();
    return &block;
}

ClassDesc2* GetHairRenderClassDesc() {
    static HairRenderClassDesc desc;
    return &desc;
}
