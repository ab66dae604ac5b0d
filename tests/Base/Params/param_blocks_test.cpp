// The parameter blocks' descriptors.

#include "Base/ParamBlocks.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Base/ParamDefs.h"
#include "HairDLL/StringTable.h"
#include "expected_params.h"

namespace {

std::vector<int> Ids(const ParamBlockDesc2* desc) {
    std::vector<int> ids;
    for (const ParamDef& p : desc->params) ids.push_back(p.id);
    return ids;
}

std::vector<int> ExpectedScalars(int block) {
    std::vector<int> ids;
    for (const ExpectedParam& e : kExpectedParams)
        if (e.block == block) ids.push_back(e.id);
    return ids;
}

const std::vector<int> kObjectIds = {72,  73,  200, 201, 202, 203, 204, 205, 250, 251, 252, 253,
                                     254, 255, 300, 301, 302, 303, 304, 305, 306, 307, 308, 309,
                                     310, 311, 312, 400, 401, 402, 403, 404, 313, 314};

std::vector<int> With(std::vector<int> ids, const std::vector<int>& more) {
    ids.insert(ids.end(), more.begin(), more.end());
    return ids;
}

TEST(ParamBlocks, ObjectBlocksHoldTheirParametersInOrder) {
    EXPECT_EQ(Ids(GetTemplateBlock(0)), kObjectIds);
    EXPECT_EQ(Ids(GetHairBlock(0)), With(kObjectIds, {105, 208, 256, 315, 316}));
    EXPECT_EQ(Ids(GetFurBlock(0)), With(kObjectIds, {256, 315, 316}));
}

TEST(ParamBlocks, OtherBlocksHoldTheirParametersInOrder) {
    std::vector<int> shade = ExpectedScalars(2);
    std::erase(shade, int(pid_knots));
    EXPECT_EQ(Ids(GetTemplateBlock(2)), shade);
    for (const bool fur : {false, true}) {
        EXPECT_EQ(Ids(GetObjectBlock(fur, 1)), ExpectedScalars(1));
        EXPECT_EQ(Ids(GetObjectBlock(fur, 2)), With(shade, {pid_knots})); // a class addition
        EXPECT_EQ(Ids(GetObjectBlock(fur, 3)), ExpectedScalars(3));
        EXPECT_EQ(Ids(GetObjectBlock(fur, 5)), ExpectedScalars(5));
    }
    EXPECT_EQ(Ids(GetFurBlock(4)), With(ExpectedScalars(4), {206, 207}));
    EXPECT_EQ(GetHairBlock(4), nullptr);
    EXPECT_EQ(GetTemplateBlock(4), nullptr);
    for (const int none : {-1, 6, 99}) {
        EXPECT_EQ(GetHairBlock(none), nullptr);
        EXPECT_EQ(GetFurBlock(none), nullptr);
        EXPECT_EQ(GetTemplateBlock(none), nullptr);
    }
}

TEST(ParamBlocks, NamesTitlesAndSlots) {
    const char* names[] = {"velmarObjParams", "velmarBaseParams",    "velmarShadeParams",
                           "velmarDynParams", "lanvoLeanBendParams", "velmarMentalRayParams"};
    const char* titles[] = {"Objects",  "General Parameters", "Shading, Geometry, Quality",
                            "Dynamics", "Leaning, Bending",   "mental ray Geometry Export"};
    for (int b = 0; b < kNumHairBlocks; ++b) {
        for (const bool fur : {false, true}) {
            const ParamBlockDesc2* d = GetObjectBlock(fur, b);
            if (!d) continue;
            EXPECT_EQ(d->intName, !fur && b == 2 ? "MXS_HAIR_PREFIXShadeParams" : names[b]);
            EXPECT_EQ(d->title, titles[b]);
            EXPECT_EQ(FindString(d->titleId), d->title);
            EXPECT_EQ(d->id, b);
            EXPECT_EQ(d->refno, b);
            EXPECT_EQ(d->flags, unsigned(P_AUTO_CONSTRUCT)); // and no automatic rollout
        }
        if (const ParamBlockDesc2* t = GetTemplateBlock(b)) {
            EXPECT_EQ(t->intName, names[b]);
            EXPECT_EQ(t->flags, 0u);
            EXPECT_EQ(t->classDesc, nullptr);
            EXPECT_EQ(t, GetTemplateBlock(b));
        }
    }
}

ParamType2 TypeOf(const char* type) {
    const std::map<std::string, ParamType2> types = {{"float", TYPE_FLOAT},    {"int", TYPE_INT},
                                                     {"bool", TYPE_BOOL},      {"RGBA", TYPE_RGBA},
                                                     {"time", TYPE_TIMEVALUE}, {"string", TYPE_STRING}};
    return types.at(type);
}

bool HeldByObject(int pid) {
    return pid >= pid_updateOnChange && pid <= pid_faceSel_namedSet;
}

TEST(ParamBlocks, ScalarsAgreeWithTheListAndTheTable) {
    for (const ExpectedParam& e : kExpectedParams) {
        SCOPED_TRACE(e.intName);
        const ParamDef* p = GetObjectBlock(e.id != pid_hair_autoInfMix, e.block)->Find(ParamID(e.id));
        ASSERT_NE(p, nullptr);
        const ParamDefRecord& r = ParamDefTable[size_t(e.id)];
        EXPECT_EQ(r.id, e.id);
        EXPECT_EQ(p->intName, e.intName);
        EXPECT_EQ(p->name, e.name);
        EXPECT_EQ(p->nameId, r.name);
        EXPECT_EQ(p->type, TypeOf(e.type));
        const unsigned flags = (e.animatable ? P_ANIMATABLE : 0) | (HeldByObject(e.id) ? P_TRANSIENT : 0);
        EXPECT_EQ(p->flags, flags);
        EXPECT_EQ(p->accessor, HeldByObject(e.id) ? GetFaceSelectionAccessor() : nullptr);
        // The object itself refuses a wrong face selection type; a clamped one would be taken.
        EXPECT_EQ(p->hasRange, *e.range != 0 && e.id != pid_faceSel_type);
        if (p->hasRange) {
            EXPECT_EQ(p->rangeLow, r.min);
            EXPECT_EQ(p->rangeHigh, r.max);
        }
        if (p->type == TYPE_FLOAT) {
            EXPECT_EQ(p->def.f, r.def);
        }
        if (p->type == TYPE_INT || p->type == TYPE_BOOL || p->type == TYPE_TIMEVALUE) {
            EXPECT_EQ(p->def.i, int(r.def));
        }
    }
}

TEST(ParamBlocks, ColoursHaveTheirOwnDefaults) {
    EXPECT_EQ(GetFurBlock(2)->Find(pid_colBase)->def.p, Point3(0.392f, 0.2745f, 0.243f));
    EXPECT_EQ(GetFurBlock(2)->Find(pid_colTip)->def.p, Point3(0.651f, 0.5647f, 0.486f));
}

TEST(ParamBlocks, HairAndFurDifferInLengthAndKnots) {
    const ParamDef *hair = GetHairBlock(1)->Find(pid_length), *fur = GetFurBlock(1)->Find(pid_length);
    EXPECT_EQ(hair->def.f, 1.0f);
    EXPECT_EQ(hair->rangeLow, 0.0f);
    EXPECT_EQ(hair->rangeHigh, 1.0f);
    EXPECT_FALSE(hair->worldUnits);
    EXPECT_EQ(fur->def.f, 4.0f);
    EXPECT_EQ(fur->rangeHigh, 1000000.0f);
    EXPECT_TRUE(fur->worldUnits);
    EXPECT_EQ(GetHairBlock(2)->Find(pid_knots)->def.i, 10);
    EXPECT_EQ(GetFurBlock(2)->Find(pid_knots)->def.i, 5);
}

TEST(ParamBlocks, ReferencesAndListsHaveTheirFlagsAndNames) {
    for (const bool fur : {false, true})
        for (int b = 0; b < kNumHairBlocks; ++b) {
            const ParamBlockDesc2* d = GetObjectBlock(fur, b);
            for (const ParamDef& p : d ? d->params : std::vector<ParamDef>{}) {
                if (p.id < kNumScalarPids) continue;
                SCOPED_TRACE(p.intName);
                const bool list = p.id < kFirstCurvePid;
                EXPECT_EQ(p.type, list ? TYPE_INODE_TAB : TYPE_REFTARG);
                EXPECT_EQ(p.flags, unsigned(list ? P_VARIABLE_SIZE : P_SUBANIM));
                EXPECT_EQ(p.validator, list ? GetNodeListValidator() : nullptr);
                EXPECT_EQ(p.accessor, list ? GetNodeListAccessor() : nullptr);
                EXPECT_EQ(p.name, FindString(ParamNameId(p.id)));
                EXPECT_FALSE(p.name.empty());
                EXPECT_EQ(p.intName.substr(0, 4), "pid_");
                EXPECT_NE(ChangeGroupsOf(p.id) == 0, !list);
            }
        }
    EXPECT_EQ(GetFurBlock(0)->Find(pid_emitters)->name, "Emitters");
    EXPECT_EQ(GetFurBlock(0)->Find(pid_gravs)->name, "Gravity");
    EXPECT_EQ(GetHairBlock(0)->Find(pid_hair_models)->name, "Model Hairs");
    EXPECT_EQ(GetFurBlock(4)->Find(pid_fur_bendVects)->intName, "pid_fur_bendVects");
}

TEST(ParamBlocks, TheMapFindsTheBlockOfEveryParameter) {
    const auto hair = BuildBlockMap(false), fur = BuildBlockMap(true);
    ASSERT_EQ(hair.size(), 405u);
    EXPECT_EQ(hair[pid_fur_leanVects], kNoBlock);
    EXPECT_EQ(fur[pid_fur_leanVects], 4);
    EXPECT_EQ(hair[pid_hair_models], 0);
    EXPECT_EQ(fur[pid_hair_models], kNoBlock);
    EXPECT_EQ(fur[pid_mr_MIFilesDir], 5);
    EXPECT_EQ(hair[pid_knots], 2);
    for (const int none : {0, 3, 108, 149, 199, 257, 317, 399}) {
        EXPECT_EQ(hair[size_t(none)], kNoBlock);
        EXPECT_EQ(fur[size_t(none)], kNoBlock);
    }
    for (const ExpectedParam& e : kExpectedParams) {
        EXPECT_EQ(fur[size_t(e.id)], e.id == pid_hair_autoInfMix ? kNoBlock : e.block);
        EXPECT_EQ(hair[size_t(e.id)], e.block == 4 ? kNoBlock : e.block);
    }
}

TEST(ParamBlocks, NoParameterStandsInTwoBlocks) {
    for (const bool fur : {false, true}) {
        std::set<int> ids;
        std::set<std::string> names;
        for (int b = 0; b < kNumHairBlocks; ++b)
            if (const ParamBlockDesc2* d = GetObjectBlock(fur, b))
                for (const ParamDef& p : d->params) {
                    EXPECT_TRUE(ids.insert(p.id).second);
                    EXPECT_TRUE(names.insert(p.intName).second);
                }
        // 101 scalars, of them 19 for fur and 1 for hair only; 6 lists and 2 or 1 of its own; 7 + 17 + 5 references.
        EXPECT_EQ(ids.size(), fur ? 100u + 8u + 29u : 82u + 7u + 29u);
    }
}

class SomeClass : public ClassDesc2 {
public:
    int IsPublic() override { return 0; }
    void* Create(bool) override { return nullptr; }
    const char* ClassName() override { return "Some"; }
    SClass_ID SuperClassID() override { return 0; }
    Class_ID ClassID() override { return {}; }
    const char* Category() override { return ""; }
};

TEST(ParamBlocks, AClassGetsItsDescriptorsInOrder) {
    SomeClass hair, fur;
    AddObjectBlocks(hair, false);
    AddObjectBlocks(fur, true);
    ASSERT_EQ(hair.NumParamBlockDescs(), 5);
    ASSERT_EQ(fur.NumParamBlockDescs(), 6);
    EXPECT_EQ(hair.GetParamBlockDesc(4), GetHairBlock(5));
    EXPECT_EQ(fur.GetParamBlockDescByID(4), GetFurBlock(4));
    EXPECT_EQ(GetHairBlock(3)->classDesc, &hair);
    EXPECT_EQ(GetFurBlock(3)->classDesc, &fur);
    for (int b = 0; b < kNumHairBlocks; ++b) {
        GetFurBlock(b)->classDesc = nullptr;
        if (GetHairBlock(b)) GetHairBlock(b)->classDesc = nullptr;
    }
}

TEST(HairParamsDefaults, AreThoseOfANewObject) {
    const HairParams fur = HairParams::Defaults(true), hair = HairParams::Defaults(false);
    EXPECT_TRUE(fur.isFur);
    EXPECT_FALSE(hair.isFur);
    EXPECT_EQ(fur.Float(pid_length), 4.0f);
    EXPECT_EQ(hair.Float(pid_length), 1.0f);
    EXPECT_EQ(fur.Int(pid_knots), 5);
    EXPECT_EQ(hair.Int(pid_knots), 10);
    EXPECT_TRUE(fur.On(pid_fixShape));
    EXPECT_TRUE(fur.On(pid_fur_useLeaning));
    EXPECT_FALSE(hair.On(pid_fur_useLeaning)); // it has no such parameter
    EXPECT_EQ(hair.Float(pid_hair_autoInfMix), 0.5f);
    EXPECT_EQ(fur.Int(pid_orientAngle), -90);
    EXPECT_EQ(fur.Int(pid_dyn_frameStart), 0); // -1 tick lies in frame 0
    EXPECT_EQ(fur.colTip, Color(0.651f, 0.5647f, 0.486f));
    for (const int on :
         {pid_curve_thickness, pid_curve_curlRadius, pid_curve_dynWeight, pid_curve_dynHardness, pid_curve_dynInertia})
        EXPECT_NE(fur.Curve(on), nullptr) << on;
    for (const int off : {pid_curve_curlTurns, pid_curve_clumpShape}) EXPECT_EQ(fur.Curve(off), nullptr) << off;
    EXPECT_EQ(fur.Curve(pid_curve_thickness)->Eval(0.0f), 1.0f);
    for (int i = 0; i < kNumRandDists; ++i) EXPECT_EQ(fur.RandCurve(kFirstRandDistPid + i), nullptr);
    for (int i = 0; i < kNumSurfDists; ++i) EXPECT_EQ(fur.Surface(kFirstSurfDistPid + i), nullptr);
}

TEST(DescribeParameters, ListsEveryParameterOfTheObject) {
    const std::string fur = DescribeParameters(true), hair = DescribeParameters(false);
    for (const ExpectedParam& e : kExpectedParams) {
        std::string cell("|");
        cell.append(std::to_string(e.id)).append("|").append(e.intName).append("|");
        EXPECT_EQ(fur.find(cell) != std::string::npos, e.id != pid_hair_autoInfMix) << cell;
        EXPECT_EQ(hair.find(cell) != std::string::npos, e.block != 4) << cell;
    }
    const auto has = [](const std::string& text, const char* line) { return text.find(line) != std::string::npos; };
    EXPECT_TRUE(has(fur, "\n|2|pid_length|Length|float, world units|4|0 .. 1000000|yes|Length / Maximum|shape|\n"));
    EXPECT_TRUE(has(hair, "\n|2|pid_length|Length|float|1|0 .. 1|yes|Length / Maximum|shape|\n"));
    EXPECT_TRUE(
        has(fur, "\n|15|pid_colBase|Base Color|colour|0.392, 0.2745, 0.243|-|yes|Shading / BaseColor|render|\n"));
    EXPECT_TRUE(
        has(fur, "|8|pid_densPerArea|Density Per Area|float|0.2|0.000001 .. 1000000|yes|Density / PerArea|render|"));
    EXPECT_TRUE(has(fur, "|51|pid_faceSel_type|Face Selection Type|int|held by the object|-|no|-|-|"));
    EXPECT_TRUE(has(fur, "|200|pid_emitters|Emitters|node list|-|-|no|-|-|"));
    EXPECT_TRUE(has(fur,
                    "|251|pid_curve_curlRadius|Curliness Radius Along Length|reference|-|-|no|CurlRadiusCurve|shape "
                    "dynamics|"));
    EXPECT_TRUE(has(hair, "## Shading, Geometry, Quality (block 2, `MXS_HAIR_PREFIXShadeParams`)\n"));
    EXPECT_TRUE(has(fur, "|42|pid_dyn_frameStart|Dyn Start Frame|time|-1|-|no|Dynamics / Start|dynamics|"));
}

} // namespace
