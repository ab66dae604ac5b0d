// The definitions that hair and fur share.

#include "Base/ParamDefs.h"
#include "BlockBuilder.h"
#include "HairDLL/StringTable.h"

namespace {

constexpr BlockRow kObjectRows[] = {
    BLOCK_ROW(pid_useResCutters, TYPE_BOOL, 0),
    BLOCK_ROW(pid_useModCutters, TYPE_BOOL, 0),
    BLOCK_NODES(pid_emitters),
    BLOCK_NODES(pid_cutters),
    BLOCK_NODES(pid_modcuts),
    BLOCK_NODES(pid_winds),
    BLOCK_NODES(pid_gravs),
    BLOCK_NODES(pid_colls),
    BLOCK_REF(pid_curve_thickness),
    BLOCK_REF(pid_curve_curlRadius),
    BLOCK_REF(pid_curve_curlTurns),
    BLOCK_REF(pid_curve_dynWeight),
    BLOCK_REF(pid_curve_dynHardness),
    BLOCK_REF(pid_curve_dynInertia),
    BLOCK_REF(pid_surfDist_length),
    BLOCK_REF(pid_surfDist_leanAngle),
    BLOCK_REF(pid_surfDist_leanDir),
    BLOCK_REF(pid_surfDist_bendAmount),
    BLOCK_REF(pid_surfDist_bendDir),
    BLOCK_REF(pid_surfDist_density),
    BLOCK_REF(pid_surfDist_thickness),
    BLOCK_REF(pid_surfDist_curlRadius),
    BLOCK_REF(pid_surfDist_curlTurns),
    BLOCK_REF(pid_surfDist_clumpAmount),
    BLOCK_REF(pid_surfDist_clumpRadius),
    BLOCK_REF(pid_surfDist_colBase),
    BLOCK_REF(pid_surfDist_colTip),
    BLOCK_REF(pid_randDist_length),
    BLOCK_REF(pid_randDist_thickness),
    BLOCK_REF(pid_randDist_colorH),
    BLOCK_REF(pid_randDist_colorS),
    BLOCK_REF(pid_randDist_colorV),
    BLOCK_REF(pid_surfDist_leanAbsolute),
    BLOCK_REF(pid_surfDist_bendAbsolute),
};

constexpr BlockRow kGeneralRows[] = {
    BLOCK_ROW(pid_length, TYPE_FLOAT, ROW_RANGE | ROW_WORLD),
    BLOCK_ROW(pid_thickness, TYPE_FLOAT, ROW_RANGE | ROW_WORLD),
    BLOCK_ROW(pid_linkThickRand2LenRand, TYPE_BOOL, 0),
    BLOCK_ROW(pid_faceSel_type, TYPE_INT, ROW_HELD),
    BLOCK_ROW(pid_faceSel_mtlID, TYPE_INT, ROW_HELD),
    BLOCK_ROW(pid_faceSel_mtlIDs, TYPE_STRING, ROW_HELD),
    BLOCK_ROW(pid_faceSel_namedSet, TYPE_STRING, ROW_HELD),
    BLOCK_ROW(pid_thickShadow, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_thickLenRandCut, TYPE_BOOL, 0),
    BLOCK_ROW(pid_densType, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_densPerFace, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_densPerArea, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_clumpAmount, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_clumpRadius, TYPE_FLOAT, ROW_RANGE | ROW_WORLD),
    BLOCK_ROW(pid_clumpAttract, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_clumpPercent, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_clumpPerFace, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_clumpPerArea, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_useCurliness, TYPE_BOOL, 0),
    BLOCK_ROW(pid_curlRadius, TYPE_FLOAT, ROW_RANGE | ROW_WORLD),
    BLOCK_ROW(pid_curlTurns, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_curlOrientRandom, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_curlLenRandCut, TYPE_BOOL, 0),
    BLOCK_ROW(pid_fixShape, TYPE_BOOL, 0),
    BLOCK_ROW(pid_fixFollow, TYPE_BOOL, 0),
    BLOCK_ROW(pid_fixDensity, TYPE_BOOL, 0),
    BLOCK_ROW(pid_fixRefFrame, TYPE_TIMEVALUE, 0),
    BLOCK_ROW(pid_orientAxis, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_orientAngle, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_orientRand, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_randSeed, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_dirRand, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_vdirRand, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_updateOnChange, TYPE_BOOL, ROW_HELD),
};

constexpr BlockRow kShadeRows[] = {
    BLOCK_ROW(pid_useGeom, TYPE_BOOL, 0),
    BLOCK_ROW(pid_geomSmooth, TYPE_BOOL, 0),
    BLOCK_ROW(pid_geomOptimize, TYPE_BOOL, 0),
    BLOCK_ROW(pid_geomSides, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_geomMinThick, TYPE_FLOAT, ROW_RANGE | ROW_WORLD),
    BLOCK_ROW(pid_geomThin, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_minHairDist, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_bezierSteps, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_viewDens, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_colBase, TYPE_RGBA, 0),
    BLOCK_ROW(pid_colTip, TYPE_RGBA, 0),
    BLOCK_ROW(pid_colBias, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_shadeBezSegs, TYPE_BOOL, 0),
    BLOCK_ROW(pid_shadeMidStrands, TYPE_BOOL, 0),
    BLOCK_ROW(pid_maxWidthSamples, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_widthFiltering, TYPE_BOOL, 0),
    BLOCK_ROW(pid_crossSec, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_mtlIDUsage, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_mtlID, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_uvLenRandCut, TYPE_BOOL, 0),
};

constexpr BlockRow kDynamicsRows[] = {
    BLOCK_ROW(pid_dyn_useDyn, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_dyn_method, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_dyn_useDynMthd, TYPE_BOOL, 0),
    BLOCK_ROW(pid_dyn_frameStart, TYPE_TIMEVALUE, 0),
    BLOCK_ROW(pid_dyn_frameEnd, TYPE_TIMEVALUE, 0),
    BLOCK_ROW(pid_dyn_keyType, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_dyn_keyThresh, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_dyn_simpElast, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_dyn_mass, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_dyn_colFrict, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_dyn_staticFrict, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_dyn_colDist, TYPE_FLOAT, ROW_RANGE | ROW_WORLD),
    BLOCK_ROW(pid_dyn_colDistRand, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_dyn_useWinds, TYPE_BOOL, 0),
    BLOCK_ROW(pid_dyn_useGravs, TYPE_BOOL, 0),
    BLOCK_ROW(pid_dyn_useColls, TYPE_BOOL, 0),
    BLOCK_ROW(pid_dyn_getOut, TYPE_BOOL, 0),
    BLOCK_ROW(pid_dyn_maxVelo, TYPE_FLOAT, ROW_RANGE),
    BLOCK_ROW(pid_dyn_edgeColls, TYPE_BOOL, 0),
};

constexpr BlockRow kMentalRayRows[] = {
    BLOCK_ROW(pid_mr_exportType, TYPE_INT, ROW_RANGE), BLOCK_ROW(pid_mr_BSPSize, TYPE_INT, ROW_RANGE),
    BLOCK_ROW(pid_mr_BSPDepth, TYPE_INT, ROW_RANGE),   BLOCK_ROW(pid_mr_exportMIFile, TYPE_BOOL, 0),
    BLOCK_ROW(pid_mr_MIFilesDir, TYPE_STRING, 0),
};

ParamBlockDesc2 MakeTemplate(int block, const char* intName, std::span<const BlockRow> rows) {
    ParamBlockDesc2 desc;
    NameBlock(desc, block, intName);
    AppendRows(desc, rows);
    return desc;
}

/// Value of a default in the type's own field. Colours have their defaults here, as their records hold placeholders.
PB2Value DefaultOf(const BlockRow& row, const ParamDefRecord& record) {
    PB2Value v;
    if (row.type == TYPE_RGBA) {
        v.p = row.pid == pid_colBase ? Point3(0.392f, 0.2745f, 0.243f) : Point3(0.651f, 0.5647f, 0.486f);
    } else if (row.type == TYPE_FLOAT) {
        v.f = record.def;
    } else {
        v.i = int(record.def);
    }
    return v;
}

void FillFromRecord(ParamDef& p, const BlockRow& row) {
    const ParamDefRecord& record = ParamDefTable[size_t(row.pid)];
    p.nameId = record.name;
    p.def = DefaultOf(row, record);
    if (record.kind & KIND_ANIMATABLE) p.flags |= P_ANIMATABLE;
    if (row.traits & ROW_RANGE) {
        p.hasRange = true;
        p.rangeLow = record.min;
        p.rangeHigh = record.max;
    }
    p.worldUnits = (row.traits & ROW_WORLD) != 0;
    if (row.traits & ROW_HELD) {
        p.flags |= P_TRANSIENT;
        p.accessor = GetFaceSelectionAccessor();
    }
}

} // namespace

ParamDef MakeParam(const BlockRow& row) {
    ParamDef p;
    p.id = ParamID(row.pid);
    p.intName = row.intName;
    p.type = row.type;
    if (row.type == TYPE_INODE_TAB) {
        p.nameId = ParamNameId(row.pid);
        p.flags = P_VARIABLE_SIZE;
        p.validator = GetNodeListValidator();
        p.accessor = GetNodeListAccessor();
    } else if (row.type == TYPE_REFTARG) {
        p.nameId = ParamNameId(row.pid);
        p.flags = P_SUBANIM;
    } else {
        FillFromRecord(p, row);
    }
    if (p.nameId != 0) p.name = FindString(p.nameId);
    return p;
}

void AppendRows(ParamBlockDesc2& desc, std::span<const BlockRow> rows) {
    for (const BlockRow& row : rows) desc.params.push_back(MakeParam(row));
}

void NameBlock(ParamBlockDesc2& desc, int block, const char* intName) {
    desc.id = BlockID(block);
    desc.intName = intName;
    desc.titleId = kTitleBlocks + block;
    desc.title = FindString(desc.titleId);
    desc.refno = block;
}

ParamBlockDesc2 CopyTemplate(int block) {
    ParamBlockDesc2 desc = *GetTemplateBlock(block);
    desc.flags = P_AUTO_CONSTRUCT;
    return desc;
}

const ParamBlockDesc2* GetTemplateBlock(int block) {
    static const ParamBlockDesc2 objects = MakeTemplate(BLOCK_OBJECTS, "velmarObjParams", kObjectRows);
    static const ParamBlockDesc2 general = MakeTemplate(BLOCK_GENERAL, "velmarBaseParams", kGeneralRows);
    static const ParamBlockDesc2 shade = MakeTemplate(BLOCK_SHADE, "velmarShadeParams", kShadeRows);
    static const ParamBlockDesc2 dynamics = MakeTemplate(BLOCK_DYNAMICS, "velmarDynParams", kDynamicsRows);
    static const ParamBlockDesc2 mentalRay = MakeTemplate(BLOCK_MENTAL_RAY, "velmarMentalRayParams", kMentalRayRows);
    switch (block) {
    case BLOCK_OBJECTS:
        return &objects;
    case BLOCK_GENERAL:
        return &general;
    case BLOCK_SHADE:
        return &shade;
    case BLOCK_DYNAMICS:
        return &dynamics;
    case BLOCK_MENTAL_RAY:
        return &mentalRay;
    default:
        return nullptr;
    }
}
