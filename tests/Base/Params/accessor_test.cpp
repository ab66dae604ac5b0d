// Node lists and object-held parameters, through real parameter blocks.

#include <gtest/gtest.h>

#include <filesystem>

#include "Base/ParamBlocks.h"
#include "DebugTools/Assert.h"
#include "core/node.h"

namespace {

/// Stands for a hair or fur object: holds its blocks and its face selection.
class Owner : public ReferenceTarget, public IFaceSelectionOwner {
public:
    explicit Owner(bool fur) {
        for (int b = 0; b < kNumHairBlocks; ++b)
            if (GetObjectBlock(fur, b)) ReplaceReference(b, CreateParameterBlock2(GetObjectBlock(fur, b), this));
    }
    ~Owner() override { DeleteAllRefs(); }
    int NumRefs() override { return kNumHairBlocks; }
    RefTargetHandle GetReference(int i) override { return blocks[i]; }
    void SetReference(int i, RefTargetHandle t) override { blocks[i] = static_cast<IParamBlock2*>(t); }
    FaceSelection& GetFaceSelection() override { return selection; }
    bool& GetUpdateOnChange() override { return updateOnChange; }
    void ParametersChanged() override { ++changes; }

    IParamBlock2* blocks[kNumHairBlocks] = {};
    FaceSelection selection;
    bool updateOnChange = true;
    int changes = 0;
};

TEST(FaceSelectionAccessor, ReadsAndWritesTheOwnersFields) {
    Owner owner(true);
    IParamBlock2* block = owner.blocks[BLOCK_GENERAL];
    owner.selection = {2, 7, "1,3-5", "ears"};
    EXPECT_EQ(block->GetInt(pid_faceSel_type), 2);
    EXPECT_EQ(block->GetInt(pid_faceSel_mtlID), 7);
    EXPECT_EQ(block->GetStr(pid_faceSel_mtlIDs), "1,3-5");
    EXPECT_EQ(block->GetStr(pid_faceSel_namedSet), "ears");
    EXPECT_EQ(block->GetInt(pid_updateOnChange), 1);
    Interval valid = FOREVER;
    block->GetInt(pid_faceSel_type, 0, valid);
    EXPECT_EQ(valid, FOREVER);

    block->SetValue(pid_faceSel_type, 0, 4);
    block->SetValue(pid_faceSel_mtlID, 0, 300);
    block->SetValue(pid_faceSel_mtlIDs, 0, TSTR("2"));
    block->SetValue(pid_faceSel_namedSet, 0, TSTR("tail"));
    block->SetValue(pid_updateOnChange, 0, 0);
    EXPECT_EQ(owner.selection.type, 4);
    EXPECT_EQ(owner.selection.mtlId, 300);
    EXPECT_EQ(owner.selection.mtlIds, "2");
    EXPECT_EQ(owner.selection.namedSet, "tail");
    EXPECT_FALSE(owner.updateOnChange);
    EXPECT_EQ(owner.changes, 5);
}

TEST(FaceSelectionAccessor, ATypeOutOfRangeIsIgnored) {
    Owner owner(false);
    IParamBlock2* block = owner.blocks[BLOCK_GENERAL];
    owner.selection.type = 3;
    for (const int wrong : {5, -1, 1000}) block->SetValue(pid_faceSel_type, 0, wrong);
    EXPECT_EQ(owner.selection.type, 3);
    EXPECT_EQ(block->GetInt(pid_faceSel_type), 3);
    EXPECT_EQ(owner.changes, 0);
}

TEST(FaceSelectionAccessor, OwnersOfAnotherKindAreLeftAlone) {
    PB2Value v;
    v.i = 3;
    Interval valid = FOREVER;
    GetFaceSelectionAccessor()->Get(v, nullptr, pid_faceSel_type, 0, 0, valid);
    GetFaceSelectionAccessor()->Set(v, nullptr, pid_faceSel_type, 0, 0);
    EXPECT_EQ(v.i, 3);
}

TEST(ParameterBlocks, HoldTheDefaultsAndClamp) {
    Owner fur(true), hair(false);
    EXPECT_EQ(fur.blocks[BLOCK_GENERAL]->GetFloat(pid_length), 4.0f);
    EXPECT_EQ(hair.blocks[BLOCK_GENERAL]->GetFloat(pid_length), 1.0f);
    hair.blocks[BLOCK_GENERAL]->SetValue(pid_length, 0, 5.0f);
    EXPECT_EQ(hair.blocks[BLOCK_GENERAL]->GetFloat(pid_length), 1.0f);
    fur.blocks[BLOCK_GENERAL]->SetValue(pid_length, 0, 5.0f);
    EXPECT_EQ(fur.blocks[BLOCK_GENERAL]->GetFloat(pid_length), 5.0f);
    EXPECT_EQ(fur.blocks[BLOCK_SHADE]->GetColor(pid_colTip), Color(0.651f, 0.5647f, 0.486f));
    EXPECT_EQ(fur.blocks[BLOCK_DYNAMICS]->GetInt(pid_dyn_frameStart), -1);
    fur.blocks[BLOCK_GENERAL]->SetValue(pid_fixRefFrame, 0, INT_MAX);
    EXPECT_EQ(fur.blocks[BLOCK_GENERAL]->GetInt(pid_fixRefFrame), INT_MAX);
    fur.blocks[BLOCK_GENERAL]->SetValue(pid_densPerArea, 0, 0.0f);
    EXPECT_EQ(fur.blocks[BLOCK_GENERAL]->GetFloat(pid_densPerArea), 0.000001f);
}

/// An object of any super class and class.
class Dummy : public Object {
public:
    Dummy(SClass_ID sid, Class_ID cid, bool triangles = false) : sid_(sid), cid_(cid), triangles_(triangles) {}
    ~Dummy() override { DeleteAllRefs(); }
    SClass_ID SuperClassID() override { return sid_; }
    Class_ID ClassID() override { return cid_; }
    bool CanConvertToType(Class_ID id) override { return triangles_ && id == TRIOBJ_CLASS_ID; }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int) override { return source_; }
    void SetReference(int, RefTargetHandle t) override { source_ = t; }

private:
    SClass_ID sid_;
    Class_ID cid_;
    bool triangles_;
    RefTargetHandle source_ = nullptr;
};

class DummyModifier : public Modifier {
public:
    explicit DummyModifier(Class_ID cid) : cid_(cid) {}
    Class_ID ClassID() override { return cid_; }

private:
    Class_ID cid_;
};

constexpr Class_ID kHairView{0x54d9504e, 0x48822ea3}, kVector{0x265057db, 0x378a63fe},
    kModelHair{0x6af3cd97, 0x99c3b9db}, kOther{1, 2};

/// A node with its object; both go with the fixture.
struct Placed {
    Placed(SClass_ID sid, Class_ID cid, bool triangles = false) : object(sid, cid, triangles) {
        node.SetObjectRef(&object);
    }
    ~Placed() { node.SetObjectRef(nullptr); }
    Dummy object;
    host::Node node;
};

TEST(NodeLists, EmittersAreGeometry) {
    Owner owner(true);
    Placed sphere(GEOMOBJECT_CLASS_ID, kOther), light(LIGHT_CLASS_ID, kOther), shape(SHAPE_CLASS_ID, kOther);
    EXPECT_TRUE(AcceptsNode(pid_emitters, &sphere.node, &owner, 0));
    EXPECT_FALSE(AcceptsNode(pid_emitters, &light.node, &owner, 0));
    EXPECT_FALSE(AcceptsNode(pid_emitters, &shape.node, &owner, 0));
    EXPECT_FALSE(AcceptsNode(pid_emitters, nullptr, &owner, 0));
    host::Node empty;
    EXPECT_FALSE(AcceptsNode(pid_emitters, &empty, &owner, 0));
}

TEST(NodeLists, HairGeometryOfTheSameObjectIsNoEmitter) {
    Placed view(GEOMOBJECT_CLASS_ID, kHairView), second(GEOMOBJECT_CLASS_ID, kHairView);
    Owner owner(true), other(true);
    view.object.ReplaceReference(0, &owner);
    EXPECT_FALSE(AcceptsNode(pid_emitters, &view.node, &owner, 0));
    EXPECT_TRUE(AcceptsNode(pid_emitters, &view.node, &other, 0));
    EXPECT_TRUE(AcceptsNode(pid_emitters, &view.node, nullptr, 0));
    // Another object grows on that geometry; its own geometry leads back to the first object by the chain.
    ASSERT_TRUE(other.blocks[BLOCK_OBJECTS]->Append(pid_emitters, &view.node));
    second.object.ReplaceReference(0, &other);
    EXPECT_FALSE(AcceptsNode(pid_emitters, &second.node, &owner, 0));
    second.object.ReplaceReference(0, nullptr);
    view.object.ReplaceReference(0, nullptr);
    other.blocks[BLOCK_OBJECTS]->SetCount(pid_emitters, 0);
}

TEST(NodeLists, CuttersConvertToTrianglesAndAreNoHairGeometry) {
    Placed box(GEOMOBJECT_CLASS_ID, kOther, true), shape(SHAPE_CLASS_ID, kOther),
        view(GEOMOBJECT_CLASS_ID, kHairView, true);
    for (const int list : {pid_cutters, pid_modcuts}) {
        EXPECT_TRUE(AcceptsNode(list, &box.node, nullptr, 0));
        EXPECT_FALSE(AcceptsNode(list, &shape.node, nullptr, 0));
        EXPECT_FALSE(AcceptsNode(list, &view.node, nullptr, 0));
    }
}

TEST(NodeLists, ForcesVectorsAndModelHairs) {
    Placed wind(WSM_OBJECT_CLASS_ID, kOther), vector(HELPER_CLASS_ID, kVector), helper(HELPER_CLASS_ID, kOther);
    for (const int list : {pid_winds, pid_gravs, pid_colls}) {
        EXPECT_TRUE(AcceptsNode(list, &wind.node, nullptr, 0));
        EXPECT_FALSE(AcceptsNode(list, &helper.node, nullptr, 0));
    }
    for (const int list : {pid_fur_leanVects, pid_fur_bendVects}) {
        EXPECT_TRUE(AcceptsNode(list, &vector.node, nullptr, 0));
        EXPECT_FALSE(AcceptsNode(list, &helper.node, nullptr, 0));
    }
    DummyModifier bend(kOther), style(kModelHair);
    Placed styled(SHAPE_CLASS_ID, kOther), plain(SHAPE_CLASS_ID, kOther);
    styled.node.AddModifier(&bend);
    EXPECT_FALSE(AcceptsNode(pid_hair_models, &styled.node, nullptr, 0));
    styled.node.AddModifier(&style, 1);
    EXPECT_TRUE(AcceptsNode(pid_hair_models, &styled.node, nullptr, 0));
    EXPECT_FALSE(AcceptsNode(pid_hair_models, &plain.node, nullptr, 0));
    EXPECT_FALSE(AcceptsNode(pid_hair_models, &vector.node, nullptr, 0));
}

TEST(NodeLists, AnyOtherListIsAnInternalError) {
    Placed sphere(GEOMOBJECT_CLASS_ID, kOther);
    static int reports = 0;
    reports = 0;
    const auto logFile = std::filesystem::temp_directory_path() / "velmar_accessor_test.log";
    LogSetFileName(nullptr, logFile.c_str());
    LogSetCrashCopyName(nullptr, logFile.c_str());
    const auto former = GetDiagSystem()->assertCallback.exchange([](const char*) { return ++reports > 0; });
    EXPECT_FALSE(AcceptsNode(199, &sphere.node, nullptr, 0));
    EXPECT_FALSE(AcceptsNode(209, &sphere.node, nullptr, 0));
    EXPECT_EQ(reports, 2);
    GetDiagSystem()->assertCallback = former;
    LogSetCopyOnClose(nullptr, false);
    LogSetFileName(nullptr, nullptr); // closes the file
    std::filesystem::remove(logFile);
}

TEST(NodeLists, BlocksRefuseAndClear) {
    Placed sphere(GEOMOBJECT_CLASS_ID, kOther), helper(HELPER_CLASS_ID, kOther), vector(HELPER_CLASS_ID, kVector);
    Owner owner(true);
    IParamBlock2 *objects = owner.blocks[BLOCK_OBJECTS], *lean = owner.blocks[BLOCK_LEAN_BEND];
    EXPECT_EQ(objects->Count(pid_emitters), 0);
    EXPECT_FALSE(objects->Append(pid_emitters, &helper.node)); // refused by the validator
    EXPECT_EQ(objects->Count(pid_emitters), 0);
    EXPECT_TRUE(objects->Append(pid_emitters, &sphere.node));
    EXPECT_EQ(objects->GetINode(pid_emitters), &sphere.node);
    objects->SetValue(pid_emitters, 0, static_cast<INode*>(&helper.node)); // cleared by the accessor
    EXPECT_EQ(objects->GetINode(pid_emitters), nullptr);
    EXPECT_EQ(objects->Count(pid_emitters), 1);
    EXPECT_FALSE(lean->Append(pid_fur_leanVects, &helper.node));
    EXPECT_TRUE(lean->Append(pid_fur_leanVects, &vector.node));
    PB2Value v;
    v.r = &sphere.node;
    EXPECT_FALSE(GetNodeListValidator()->Validate(v)); // without a list nothing can be told
}

} // namespace
