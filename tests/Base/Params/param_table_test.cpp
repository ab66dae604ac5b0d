// The definition tables, the string table and the default curves.

#include "Base/ParamDefs.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <string>

#include "CurveCtl/CurveCtl.h"
#include "HairDLL/StringTable.h"
#include "expected_params.h"

namespace {

std::string Text(int id) {
    const char* text = FindString(id);
    return text ? text : "";
}

int Groups(const char* letters) {
    int groups = 0;
    for (const char* c = letters; *c; ++c)
        groups |= *c == 'S' ? GROUP_SHAPE : *c == 'D' ? GROUP_DYNAMICS : *c == 'R' ? GROUP_RENDER : GROUP_VIEW;
    return groups;
}

const std::set<int> kUnusedSlots = {0,  1,  21, 30, 31, 32,  33,  34,  39,  43,  44,  45,
                                    46, 48, 49, 80, 81, 108, 127, 128, 129, 130, 133, 134};
const std::set<int> kRetired = {3,  4,  5,  9,  10,  12,  13,  14,  18,  19,  20,  92,
                                93, 66, 88, 89, 113, 114, 115, 116, 117, 118, 119, 120};

TEST(ParamDefTable, EveryLivingParameterIsAsListed) {
    std::set<int> seen;
    for (const ExpectedParam& e : kExpectedParams) {
        SCOPED_TRACE(e.intName);
        const ParamDefRecord& r = ParamDefTable[size_t(e.id)];
        EXPECT_TRUE(seen.insert(e.id).second);
        EXPECT_EQ(r.id, e.id);
        EXPECT_EQ((r.kind & KIND_ANIMATABLE) != 0, e.animatable);
        EXPECT_EQ(r.groups, Groups(e.groups));
        EXPECT_EQ(Text(r.name), e.name);
        EXPECT_EQ(r.section ? Text(r.section) + " / " + Text(r.key) : "", e.file);
        if (std::strcmp(e.type, "float") == 0 || std::strcmp(e.type, "int") == 0 || std::strcmp(e.type, "time") == 0) {
            EXPECT_EQ(r.def, float(std::atof(e.def)));
        }
        if (std::strcmp(e.type, "bool") == 0 && *e.def) {
            EXPECT_EQ(r.def, std::strcmp(e.def, "on") == 0 ? 1.0f : 0.0f);
        }
        if (*e.range) {
            char* rest = nullptr;
            EXPECT_EQ(r.min, std::strtof(e.range, &rest));
            EXPECT_EQ(r.max, std::strtof(rest + 4, nullptr));
        }
        EXPECT_EQ((r.kind & KIND_FUR) != 0, e.block == 4);
        EXPECT_EQ((r.kind & KIND_HAIR) != 0, e.id == pid_hair_autoInfMix);
        EXPECT_EQ((r.kind & KIND_NOT_CLAMPED) != 0, std::strcmp(e.type, "time") == 0);
    }
    EXPECT_EQ(seen.size() + kUnusedSlots.size() + kRetired.size(), 149u);
}

TEST(ParamDefTable, UnusedSlotsAndRetiredSettingsAreMarked) {
    for (int pid = 0; pid < kNumScalarPids; ++pid) {
        const ParamDefRecord& r = ParamDefTable[size_t(pid)];
        EXPECT_EQ(r.id == kNoParam, kUnusedSlots.count(pid) != 0) << pid;
        EXPECT_EQ(r.section == 0 && r.key != 0, kRetired.count(pid) != 0) << pid;
        EXPECT_LE(r.min, r.max) << pid;
    }
    EXPECT_EQ(Text(ParamDefTable[3].key), "Random");
    EXPECT_EQ(Text(ParamDefTable[66].key), "UseVariableThickness");
    EXPECT_EQ(ParamDefTable[pid_colBase].def, 0.3f);
    EXPECT_EQ(ParamDefTable[pid_colTip].def, 0.6f);
    EXPECT_EQ(ParamDefTable[pid_dyn_useDynMthd].groups, 0);
    EXPECT_EQ(ParamDefTable[pid_dyn_keyThresh].groups, 0);
}

TEST(ParamDefTable, RadioGroupsHoldTheirNumberOfButtons) {
    EXPECT_EQ(ParamDefTable[pid_dyn_useDyn].spinner, 3);
    EXPECT_EQ(ParamDefTable[pid_dyn_method].spinner, 2);
    EXPECT_EQ(ParamDefTable[pid_crossSec].spinner, 2);
    std::set<int> controls;
    for (const ParamDefRecord& r : ParamDefTable) {
        if (r.edit) {
            EXPECT_TRUE(controls.insert(r.edit).second);
        }
        if (r.spinner > 100) {
            EXPECT_TRUE(controls.insert(r.spinner).second);
        }
        for (int b = 1; r.spinner < 100 && b < r.spinner; ++b) EXPECT_TRUE(controls.insert(r.edit + b).second);
    }
}

TEST(CurveDefTable, IsAsListed) {
    const struct {
        const char *section, *name, *groups;
        int scales;
        bool enabled;
        float yMin, startY, endY;
        int inner;
    } rows[] = {
        {"ThicknessCurve", "Thickness Along Length", "DR", 11, true, 0, 1.0f, 0.087f, 1},
        {"CurlRadiusCurve", "Curliness Radius Along Length", "SD", 86, true, -1, 0, 1, 0},
        {"CurlTurnsCurve", "Curliness Turns Along Length", "S", 87, false, 0, 0, 1, 0},
        {"DynWeightsCurve", "Weight Along Length", "D", kNoParam, false, 0, 1, 0.02f, 3},
        {"DynHardnessCurve", "Hardness Along Length", "D", kNoParam, false, 0, 0.2f, 0.2f, 0},
        {"DynInertiaCurve", "Inertia Along Length", "D", kNoParam, false, 0, 0.5f, 0.5f, 0},
        {"ClumpShapeCurve", "Clumping Amount Along Length", "R", 56, false, 0, 0, 1, 0},
    };
    for (size_t i = 0; i < 7; ++i) {
        const CurveDefRecord& d = CurveDefTable[i];
        SCOPED_TRACE(rows[i].section);
        EXPECT_EQ(Text(d.section), rows[i].section);
        EXPECT_EQ(Text(d.name), rows[i].name);
        EXPECT_EQ(d.groups, Groups(rows[i].groups));
        EXPECT_EQ(d.ScaledParam(), rows[i].scales);
        EXPECT_EQ(d.EnabledAtCreation(), rows[i].enabled);
        EXPECT_EQ(d.xMin, 0.0f);
        EXPECT_EQ(d.xMax, 1.0f);
        EXPECT_EQ(d.yMin, rows[i].yMin);
        EXPECT_EQ(d.yMax, 1.0f);
        EXPECT_EQ(d.startY, rows[i].startY);
        EXPECT_EQ(d.endY, rows[i].endY);
        EXPECT_EQ(d.innerCount, rows[i].inner);
    }
    EXPECT_EQ(CurveDefTable[0].inner[0].x, 0.577f);
    EXPECT_EQ(CurveDefTable[0].inner[0].y, 0.645f);
    EXPECT_EQ(CurveDefTable[3].inner[2].x, 0.68f);
    EXPECT_EQ(CurveDefTable[3].inner[2].y, 0.1f);
}

TEST(DistDefTables, AreAsListed) {
    const struct {
        const char *section, *groups;
        int scales;
    } surf[] = {{"LengthSurfDist", "RV", 2},
                {"LeanAngleSurfDist", "S", 135},
                {"LeanDirSurfDist", "S", 136},
                {"BendPolarAmountSurfDist", "S", 131},
                {"BendPolarDirSurfDist", "S", 139},
                {"DensitySurfDist", "R", 8},
                {"ThicknessSurfDist", "R", 11},
                {"CurlRadiusSurfDist", "R", 86},
                {"CurlTurnsSurfDist", "R", 87},
                {"ClumpAmountSurfDist", "R", 56},
                {"ClumpRadiusSurfDist", "R", 57},
                {"ColBaseSurfDist", "R", 15},
                {"ColTipSurfDist", "R", 16},
                {"LeanAbsSurfDist", "S", 142},
                {"BendAbsSurfDist", "S", 143},
                {"RandomMiddleStrandsSurfDist", "R", 28},
                {"RandomVertexStrandsSurfDist", "S", 29}},
      rand[] = {{"LengthRandDist", "R", 2},
                {"ThicknessRandDist", "R", 11},
                {"ColorHueRandDist", "R", 16},
                {"ColorSaturationRandDist", "R", 16},
                {"ColorValueRandDist", "R", 16}};
    for (size_t i = 0; i < 17; ++i) {
        EXPECT_EQ(Text(SurfDistDefTable[i].section), surf[i].section);
        EXPECT_EQ(SurfDistDefTable[i].groups, Groups(surf[i].groups)) << i;
        EXPECT_EQ(SurfDistDefTable[i].scales, surf[i].scales) << i;
    }
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(Text(RandDistDefTable[i].section), rand[i].section);
        EXPECT_EQ(RandDistDefTable[i].groups, Groups(rand[i].groups)) << i;
        EXPECT_EQ(RandDistDefTable[i].scales, rand[i].scales) << i;
    }
    EXPECT_EQ(Text(SurfDistDefTable[9].name), "Clump Amount Surface Distribution");
    EXPECT_EQ(Text(SurfDistDefTable[10].name), "Clump Amount Surface Distribution"); // the same text twice
    EXPECT_EQ(Text(SurfDistDefTable[16].name), "Random Vertex Strands Surface Distribution");
    EXPECT_EQ(Text(RandDistDefTable[3].name), "Color Saturation Random Distribution");
}

TEST(ChangeGroups, AreFoundForEveryKindOfParameter) {
    EXPECT_EQ(ChangeGroupsOf(pid_thickness), GROUP_DYNAMICS | GROUP_RENDER);
    EXPECT_EQ(ChangeGroupsOf(pid_curve_clumpShape), GROUP_RENDER);
    EXPECT_EQ(ChangeGroupsOf(pid_surfDist_length), GROUP_RENDER | GROUP_VIEW);
    EXPECT_EQ(ChangeGroupsOf(pid_randDist_colorV), GROUP_RENDER);
    for (const int none : {-1, 21, int(pid_dyn_keyThresh), int(pid_emitters), 257, 405, 100000})
        EXPECT_EQ(ChangeGroupsOf(none), 0);
}

TEST(DefaultCurves, ObjectsAndPlainShapesAgree) {
    for (const CurveDefRecord& d : CurveDefTable) {
        SCOPED_TRACE(Text(d.section));
        const std::unique_ptr<CurveCtl> curve(BuildDefaultCurve(d));
        const CurveShape plain = DefaultCurveShape(d);
        EXPECT_EQ(curve->Enabled(), d.EnabledAtCreation());
        EXPECT_EQ(curve->KnotCount(), d.innerCount + 2);
        EXPECT_EQ(curve->GetValue(0, 0.0f), d.startY);
        EXPECT_NEAR(curve->GetValue(0, 1.0f), d.endY, 1e-6f);
        for (int i = 0; i < d.innerCount; ++i) EXPECT_NEAR(curve->GetValue(0, d.inner[i].x), d.inner[i].y, 1e-6f);
        for (int i = 0; i <= 100; ++i)
            EXPECT_EQ(curve->GetValue(0, float(i) / 100.0f), plain.Eval(float(i) / 100.0f)) << i;
        EXPECT_EQ(plain.yMin, d.yMin);
        EXPECT_EQ(plain.noiseSize, curve->NoiseSize());
    }
}

TEST(DefaultCurves, RandomDistributionsAreEvenAndOff) {
    const std::unique_ptr<CurveCtl> curve(BuildDefaultRandDist());
    EXPECT_FALSE(curve->Active());
    ASSERT_EQ(curve->KnotCount(), 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(curve->Knot(i)->X(0), float(i));
        EXPECT_EQ(curve->Knot(i)->Y(0), 1.0f);
        EXPECT_EQ(curve->Knot(i)->Type(), CURVE_CORNER);
    }
    EXPECT_EQ(curve->YMin(), 0.0f);
    EXPECT_EQ(curve->YMax(), 1.0f);
    EXPECT_EQ(curve->GetValue(0, 0.3f), 1.0f);
}

TEST(StringTable, KnowsClassesCategoriesAndFixedWords) {
    EXPECT_EQ(Text(40006), "velmar");
    EXPECT_EQ(Text(40003), "lanvo");
    EXPECT_EQ(Text(40354), "Corvanta");
    EXPECT_EQ(Text(40403), "Corvanta");
    EXPECT_EQ(Text(11003), "Curve Control");
    EXPECT_EQ(Text(40005), "velmar Renderer");
    EXPECT_EQ(Text(10001), "Quality_Memory");
    EXPECT_EQ(Text(10016), "Buckets_From_Renderer");
    EXPECT_EQ(Text(kKeyRanges), "Ranges");
    EXPECT_EQ(Text(kSecFaceLevelAssignment), "FaceLevelAssignment");
    EXPECT_EQ(Text(ParamNameId(pid_length)), "Length");
    for (const int missing : {0, -1, 9999, 12099, 50000}) EXPECT_EQ(FindString(missing), nullptr);
}

TEST(StringTable, EveryClassOfTheLibraryHasItsName) {
    for (const auto& [id, text] : {std::pair(40394, "velmarView"),
                                   {40416, "Hair Default"},
                                   {40345, "velmarVector"},
                                   {40407, "HairViewOld"},
                                   {40454, "velmar G-buffer Output"},
                                   {41004, "WaveWind"},
                                   {40516, "Surface Distribution"},
                                   {40101, "velmar Shadows"},
                                   {30640, "velmar Shader"},
                                   {40370, "Model Hair"},
                                   {11005, "Curve Knot"},
                                   {40624, "Qx Back To velmar"},
                                   {41002, "WaveWindMod"},
                                   {40603, "mr Hair Shader Link"}})
        EXPECT_EQ(Text(id), text);
}

TEST(StringTable, TextsFitTheLookupBuffer) {
    for (int id = 0; id < 60000; ++id) EXPECT_LT(Text(id).size(), 256u) << id;
}

} // namespace
