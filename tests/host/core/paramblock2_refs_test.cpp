// Parameter blocks: references, tables of nodes, cloning, lifetime.

#include <gtest/gtest.h>

#include "core/controllers.h"
#include "paramblock2_fixture.h"

namespace {

using Makers = std::vector<ReferenceMaker*>;

struct BlockRefsTest : BlockTest {
    ~BlockRefsTest() override { owner.DeleteAllRefs(); }
    std::vector<INode*> Nodes() {
        std::vector<INode*> nodes;
        for (int i = 0; i < block->Count(kNodes); ++i) nodes.push_back(block->GetINode(kNodes, 0, i));
        return nodes;
    }
};

TEST_F(BlockRefsTest, ReferencesAreSubObjects) {
    EXPECT_TRUE(block->SetValue(kPlainTarget, 0, &target));
    EXPECT_EQ(block->GetReferenceTarget(kPlainTarget), &target);
    EXPECT_EQ(target.Dependents(), Makers{block});
    EXPECT_TRUE(block->SetValue(kNode, 0, static_cast<INode*>(&node)));
    EXPECT_EQ(block->GetINode(kNode), &node);
    int found = 0;
    for (int i = 0; i < block->NumRefs(); ++i)
        found += block->GetReference(i) == &target || block->GetReference(i) == &node;
    EXPECT_EQ(found, 2);
    EXPECT_TRUE(DependsOn(&owner, &target));
}

TEST_F(BlockRefsTest, KindsOfReferencesMustFit) {
    EXPECT_FALSE(block->SetValue(kNode, 0, &target)) << "no node";
    EXPECT_FALSE(block->SetValue(kMap, 0, &target)) << "no map";
    EXPECT_FALSE(block->SetValue(kMap, 0, static_cast<INode*>(&node)));
    EXPECT_TRUE(block->SetValue(kNode, 0, static_cast<ReferenceTarget*>(&node)));
    EXPECT_EQ(block->GetINode(kNode), &node);
    EXPECT_EQ(block->GetINode(kPlainTarget), nullptr);
}

TEST_F(BlockRefsTest, ValidatorsRefuse) {
    validator.refuse = &target;
    EXPECT_FALSE(block->SetValue(kTarget, 0, &target));
    EXPECT_EQ(block->GetReferenceTarget(kTarget), nullptr);
    EXPECT_FALSE(target.AutoDelete()) << "what was refused is not the block's";
    const int asked = validator.asked;
    EXPECT_TRUE(block->SetValue(kTarget, 0, static_cast<ReferenceTarget*>(nullptr)));
    EXPECT_EQ(validator.asked, asked) << "null is always accepted";
}

TEST_F(BlockRefsTest, AppendAsksTheValidator) {
    EXPECT_TRUE(block->Append(kNodes, &node));
    validator.refuse = &other;
    EXPECT_FALSE(block->Append(kNodes, &other));
    EXPECT_FALSE(block->Append(kNodes, nullptr));
    EXPECT_FALSE(block->Append(kNode, &node)) << "no table";
    EXPECT_EQ(Nodes(), std::vector<INode*>{&node});
}

TEST_F(BlockRefsTest, AppendLeavesNoEntryThatTheAccessorEmptied) {
    refAccessor.refuse = &other;
    EXPECT_FALSE(block->Append(kNodes, &other));
    EXPECT_EQ(block->Count(kNodes), 0);
    EXPECT_FALSE(other.HasDependents());
}

TEST_F(BlockRefsTest, EntriesAreSetThroughTheAccessor) {
    block->Append(kNodes, &node);
    block->Append(kNodes, &node);
    refAccessor.refuse = &other;
    validator.refuse = &other;
    EXPECT_TRUE(block->SetValue(kNodes, 0, static_cast<INode*>(&other), 1));
    EXPECT_EQ(refAccessor.entry, 1);
    EXPECT_EQ(Nodes(), (std::vector<INode*>{&node, nullptr})) << "the accessor emptied the slot";
    EXPECT_FALSE(other.HasDependents());
    refAccessor.refuse = nullptr;
    EXPECT_TRUE(block->SetValue(kNodes, 0, static_cast<INode*>(&other), 1));
    EXPECT_EQ(Nodes(), (std::vector<INode*>{&node, &other}));
    EXPECT_FALSE(block->SetValue(kNodes, 0, static_cast<INode*>(&other), 2)) << "no such entry";
}

TEST_F(BlockRefsTest, TablesGrowAndShrink) {
    EXPECT_TRUE(block->SetCount(kNodes, 3));
    EXPECT_EQ(Nodes(), std::vector<INode*>(3, nullptr));
    block->SetValue(kNodes, 0, static_cast<INode*>(&node), 0);
    block->SetValue(kNodes, 0, static_cast<INode*>(&other), 2);
    block->SetValue(kPlainTarget, 0, &target);
    EXPECT_TRUE(block->Delete(kNodes, 0, 2));
    EXPECT_EQ(Nodes(), std::vector<INode*>{&other});
    EXPECT_FALSE(node.HasDependents());
    EXPECT_EQ(block->GetReferenceTarget(kPlainTarget), &target) << "other slots stay";
    EXPECT_FALSE(block->Delete(kNodes, 0, 2));
    EXPECT_FALSE(block->Delete(kNodes, -1, 1));
    EXPECT_FALSE(block->Delete(kNodes, 2, INT_MAX));
    EXPECT_FALSE(block->SetCount(kNodes, -1));
    EXPECT_FALSE(block->SetCount(kFloat, 2));
    EXPECT_TRUE(block->SetCount(kNodes, 0));
    EXPECT_FALSE(other.HasDependents());
}

TEST_F(BlockRefsTest, CirclesAreRefused) {
    Thing above(1);
    above.ReplaceReference(0, &owner);
    EXPECT_FALSE(block->SetValue(kPlainTarget, 0, &above));
    EXPECT_EQ(block->GetReferenceTarget(kPlainTarget), nullptr);
    EXPECT_EQ(refAccessor.sets, 0) << "the accessor is not even asked";
}

TEST_F(BlockRefsTest, DeletedTargetsEmptyTheirSlotsAndAreTold) {
    auto* const dies = new host::Node("c");
    block->Append(kNodes, &node);
    block->Append(kNodes, dies);
    block->SetValue(kNode, 0, static_cast<INode*>(dies));
    owner.heard.clear();
    delete dies;
    EXPECT_EQ(Nodes(), (std::vector<INode*>{&node, nullptr}));
    EXPECT_EQ(block->GetINode(kNode), nullptr);
    ASSERT_EQ(owner.heard.size(), 1u);
    EXPECT_EQ(owner.heard[0].message, REFMSG_CHANGE);
}

TEST_F(BlockRefsTest, ChangesOfSubObjectsCarryParameterEntryAndPart) {
    block->Append(kNodes, &node);
    block->Append(kNodes, &other);
    owner.heard.clear();
    ParamID seen = -1;
    int entry = -1;
    owner.onNotify = [&](RefTargetHandle, PartID&, RefMessage) {
        seen = block->LastNotifyParamID(&entry);
        return REF_SUCCEED;
    };
    other.SetNodeTM(0, TransMatrix({1, 0, 0}));
    EXPECT_EQ(seen, kNodes);
    EXPECT_EQ(entry, 1);
    ASSERT_EQ(owner.heard.size(), 1u);
    EXPECT_EQ(owner.heard[0].part, PART_TM);
    EXPECT_EQ(owner.heard[0].target, block);
}

TEST_F(BlockRefsTest, SubObjectsOfATrackGoWithTheirLastReference) {
    const int before = Thing::alive;
    auto* const first = new Thing;
    block->SetValue(kTarget, 0, first);
    EXPECT_TRUE(first->AutoDelete());
    block->SetValue(kTarget, 0, first);
    EXPECT_EQ(Thing::alive, before + 1) << "the same again";
    block->SetValue(kTarget, 0, new Thing);
    EXPECT_EQ(Thing::alive, before + 1) << "the first is gone";
    Thing keeper(1);
    keeper.ReplaceReference(0, block->GetReferenceTarget(kTarget));
    owner.DeleteReference(0);
    EXPECT_EQ(Thing::alive, before + 2) << "somebody else still refers to it";
    keeper.DeleteReference(0);
    EXPECT_EQ(Thing::alive, before + 1);
}

TEST_F(BlockRefsTest, PlainReferencesAreNotOwned) {
    block->SetValue(kPlainTarget, 0, &target);
    EXPECT_FALSE(target.AutoDelete());
    owner.DeleteReference(0);
    EXPECT_FALSE(target.HasDependents());
}

TEST_F(BlockRefsTest, ABlockDiesWithItsOwner) {
    auto* const shortLived = new Thing(1);
    IParamBlock2* const own = CreateParameterBlock2(&desc, shortLived);
    shortLived->ReplaceReference(0, own);
    own->SetValue(kPlainTarget, 0, &target);
    EXPECT_EQ(target.Dependents(), Makers{own});
    delete shortLived;
    EXPECT_FALSE(target.HasDependents());
    EXPECT_EQ(CreateParameterBlock2(nullptr, &owner), nullptr);
}

TEST_F(BlockRefsTest, ClonesCopyValuesControllersAndSubObjects) {
    auto* const c = new host::FloatControl;
    c->SetKey(0, 0.25f);
    block->SetController(kFloat, c);
    block->SetValue(kString, 0, TSTR("mine"));
    auto* const sub = new Thing;
    sub->number = 42;
    block->SetValue(kTarget, 0, sub);
    block->Append(kNodes, &node);
    block->Append(kNodes, &other);
    host::Node clonedOther("b2");
    RemapDir remap;
    remap.AddEntry(&other, &clonedOther);
    auto* const copy = static_cast<IParamBlock2*>(remap.CloneRef(block));
    Thing newOwner(1);
    newOwner.ReplaceReference(0, copy);
    EXPECT_EQ(copy->GetOwner(), &newOwner);
    EXPECT_EQ(copy->GetStr(kString), "mine");
    EXPECT_NE(copy->GetController(kFloat), c);
    EXPECT_EQ(copy->GetFloat(kFloat), 0.25f);
    ASSERT_NE(copy->GetReferenceTarget(kTarget), sub);
    EXPECT_EQ(static_cast<Thing*>(copy->GetReferenceTarget(kTarget))->number, 42);
    EXPECT_EQ(copy->GetINode(kNodes, 0, 0), &node) << "nodes are not cloned";
    EXPECT_EQ(copy->GetINode(kNodes, 0, 1), &clonedOther) << "but remapped";
    copy->SetValue(kString, 0, TSTR("theirs"));
    EXPECT_EQ(block->GetStr(kString), "mine");
    newOwner.DeleteAllRefs();
}

TEST_F(BlockRefsTest, WhatCannotBeClonedIsShared) {
    auto* const sub = new Thing;
    sub->canClone = false;
    block->SetValue(kTarget, 0, sub);
    RemapDir remap;
    auto* const copy = static_cast<IParamBlock2*>(remap.CloneRef(block));
    Thing newOwner(1);
    newOwner.ReplaceReference(0, copy);
    EXPECT_EQ(copy->GetReferenceTarget(kTarget), sub);
    owner.DeleteReference(0);
    EXPECT_EQ(copy->GetReferenceTarget(kTarget), sub);
}

TEST_F(BlockRefsTest, TheOwnerIsWhoeverHoldsTheBlock) {
    Thing second(1);
    RemapDir remap;
    auto* const copy = static_cast<IParamBlock2*>(remap.CloneRef(block));
    EXPECT_EQ(copy->GetOwner(), nullptr);
    Thing watcher(2);
    watcher.ReplaceReference(1, copy);
    EXPECT_EQ(copy->GetOwner(), &watcher) << "better than nobody";
    second.ReplaceReference(0, copy);
    EXPECT_EQ(copy->GetOwner(), &second) << "holds it in the slot of the description";
    EXPECT_EQ(block->GetOwner(), &owner);
}

} // namespace
