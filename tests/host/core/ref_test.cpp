// References: slots, circles, notification, deletion, cloning.

#include <gtest/gtest.h>

#include <memory>

#include "core/target_owner.h"
#include "test_objects.h"

namespace {

using Makers = std::vector<ReferenceMaker*>;

TEST(Ref, ReplaceReferenceKeepsOneBackReferenceASlot) {
    Thing target, maker(3);
    EXPECT_EQ(maker.ReplaceReference(0, &target), REF_SUCCEED);
    EXPECT_EQ(maker.ReplaceReference(2, &target), REF_SUCCEED);
    EXPECT_EQ(target.Dependents(), (Makers{&maker, &maker}));
    EXPECT_EQ(maker.ReplaceReference(0, &target), REF_SUCCEED) << "the same again changes nothing";
    EXPECT_EQ(target.Dependents(), (Makers{&maker, &maker}));
    EXPECT_EQ(maker.DeleteReference(0), REF_SUCCEED);
    EXPECT_EQ(target.Dependents(), Makers{&maker});
    EXPECT_EQ(maker.GetReference(0), nullptr);
    maker.DeleteAllRefs();
    EXPECT_FALSE(target.HasDependents());
    EXPECT_EQ(maker.GetReference(2), nullptr);
}

TEST(Ref, SlotsOutsideFail) {
    Thing target, maker(1);
    EXPECT_EQ(maker.ReplaceReference(1, &target), REF_FAIL);
    EXPECT_EQ(maker.ReplaceReference(-1, &target), REF_FAIL);
    EXPECT_FALSE(target.HasDependents());
}

TEST(Ref, AMakerThatDoesNotStoreIsNoDependent) {
    struct Refuses : ReferenceMaker {
        int NumRefs() override { return 1; }
    } maker;
    Thing target;
    EXPECT_EQ(maker.ReplaceReference(0, &target), REF_FAIL);
    EXPECT_FALSE(target.HasDependents());
}

TEST(Ref, APointerStoredBeforehandGetsItsBackReference) {
    Thing target, maker(1);
    maker.SetReference(0, &target);
    EXPECT_EQ(maker.ReplaceReference(0, &target), REF_SUCCEED);
    EXPECT_EQ(target.Dependents(), Makers{&maker});
}

TEST(Ref, CirclesAreRefused) {
    Thing a(1), b(1), c(1);
    EXPECT_EQ(a.ReplaceReference(0, &a), REF_FAIL);
    EXPECT_EQ(a.ReplaceReference(0, &b), REF_SUCCEED);
    EXPECT_EQ(b.ReplaceReference(0, &c), REF_SUCCEED);
    EXPECT_EQ(c.ReplaceReference(0, &a), REF_FAIL);
    EXPECT_EQ(c.GetReference(0), nullptr);
    EXPECT_FALSE(a.HasDependents());
    EXPECT_TRUE(DependsOn(&a, &c));
    EXPECT_FALSE(DependsOn(&c, &a));
    EXPECT_FALSE(DependsOn(&a, &a));
    EXPECT_FALSE(DependsOn(nullptr, &a));
}

TEST(Ref, ChangesTravelWithTheirPartMask) {
    Thing leaf, middle(1), top(1);
    middle.ReplaceReference(0, &leaf);
    top.ReplaceReference(0, &middle);
    middle.onNotify = [](RefTargetHandle, PartID& part, RefMessage) {
        part = PART_GEOM;
        return REF_SUCCEED;
    };
    leaf.Tell(PART_TM);
    ASSERT_EQ(middle.heard.size(), 1u);
    EXPECT_EQ(middle.heard[0].part, PART_TM);
    EXPECT_EQ(middle.heard[0].target, &leaf);
    ASSERT_EQ(top.heard.size(), 1u);
    EXPECT_EQ(top.heard[0].part, PART_GEOM);
    EXPECT_EQ(top.heard[0].target, &middle);
}

TEST(Ref, RefStopKeepsTheMessageFromThoseFurtherOn) {
    Thing leaf, stops(1), above(1), other(1);
    stops.ReplaceReference(0, &leaf);
    above.ReplaceReference(0, &stops);
    other.ReplaceReference(0, &leaf);
    stops.onNotify = [](RefTargetHandle, PartID&, RefMessage) { return REF_STOP; };
    leaf.Tell();
    EXPECT_EQ(stops.heard.size(), 1u);
    EXPECT_TRUE(above.heard.empty());
    EXPECT_EQ(other.heard.size(), 1u) << "only the way through the stopping dependent is cut";
}

TEST(Ref, ADependentWithSeveralSlotsHearsOnce) {
    Thing target, first(3), second(1);
    first.ReplaceReference(0, &target);
    second.ReplaceReference(0, &target);
    first.ReplaceReference(1, &target);
    first.ReplaceReference(2, &target);
    target.Tell();
    EXPECT_EQ(first.heard.size(), 1u);
    EXPECT_EQ(second.heard.size(), 1u);
}

TEST(Ref, ADependentOnTwoWaysHearsOnBoth) {
    Thing leaf, left(1), right(1), top(2);
    left.ReplaceReference(0, &leaf);
    right.ReplaceReference(0, &leaf);
    top.ReplaceReference(0, &left);
    top.ReplaceReference(1, &right);
    leaf.Tell();
    ASSERT_EQ(top.heard.size(), 2u);
    EXPECT_EQ(top.heard[0].target, &left);
    EXPECT_EQ(top.heard[1].target, &right);
}

TEST(Ref, DependentsMayDropTheirReferenceWhileTold) {
    Thing target, a(2), b(1), c(1);
    for (Thing* t : {&a, &b, &c}) t->ReplaceReference(0, &target);
    a.ReplaceReference(1, &target);
    a.onNotify = [&](RefTargetHandle, PartID&, RefMessage) {
        a.DeleteAllRefs();
        b.DeleteReference(0);
        return REF_SUCCEED;
    };
    target.Tell();
    EXPECT_EQ(a.heard.size(), 1u);
    EXPECT_TRUE(b.heard.empty()) << "no dependent any more when its turn came";
    EXPECT_EQ(c.heard.size(), 1u);
}

TEST(Ref, NewDependentsAreNotToldOfARunningChange) {
    Thing target, a(2), late(1);
    a.ReplaceReference(0, &target);
    a.onNotify = [&](RefTargetHandle, PartID&, RefMessage) {
        late.ReplaceReference(0, &target);
        a.ReplaceReference(1, &target);
        return REF_SUCCEED;
    };
    target.Tell();
    EXPECT_EQ(a.heard.size(), 1u);
    EXPECT_TRUE(late.heard.empty());
    EXPECT_EQ(target.Dependents(), (Makers{&a, &a, &late}));
}

TEST(Ref, DependentsAndTheTargetMayDieWhileTold) {
    auto* const target = new Thing;
    Thing watcher(1), last(1);
    auto* const victim = new Thing(1);
    auto* const above = new Thing(1);
    watcher.ReplaceReference(0, target);
    victim->ReplaceReference(0, target);
    above->ReplaceReference(0, victim);
    last.ReplaceReference(0, target);
    victim->onNotify = [&](RefTargetHandle, PartID&, RefMessage message) {
        if (message == REFMSG_CHANGE) delete victim;
        return REF_SUCCEED;
    };
    last.onNotify = [&](RefTargetHandle, PartID&, RefMessage message) {
        if (message == REFMSG_CHANGE) target->DeleteThis();
        return REF_SUCCEED;
    };
    target->Tell();
    EXPECT_EQ(watcher.heard.size(), 2u) << "the change, then the deletion";
    EXPECT_EQ(watcher.heard[1].message, REFMSG_TARGET_DELETED);
    EXPECT_EQ(watcher.GetReference(0), nullptr);
    ASSERT_EQ(above->heard.size(), 1u);
    EXPECT_EQ(above->heard[0].message, REFMSG_TARGET_DELETED);
    delete above;
    EXPECT_EQ(Thing::alive, 2);
}

TEST(Ref, DeletionEmptiesEverySlotOnceAndGoesNoFurther) {
    auto* const target = new Thing;
    Thing maker(3), above(1);
    maker.ReplaceReference(0, target);
    maker.ReplaceReference(2, target);
    above.ReplaceReference(0, &maker);
    bool emptyWhenTold = false;
    maker.onNotify = [&](RefTargetHandle t, PartID&, RefMessage message) {
        emptyWhenTold = message == REFMSG_TARGET_DELETED && t == target && !maker.GetReference(0);
        return REF_SUCCEED;
    };
    delete target;
    EXPECT_TRUE(emptyWhenTold);
    EXPECT_EQ(maker.heard.size(), 1u);
    EXPECT_TRUE(above.heard.empty());
}

TEST(Ref, DeleteThisTellsWhileTheObjectIsWhole) {
    struct Named : Thing {
        Class_ID ClassID() override { return {1, 2}; }
    };
    auto* const target = new Named;
    Thing maker(1);
    maker.ReplaceReference(0, target);
    Class_ID seen;
    maker.onNotify = [&](RefTargetHandle t, PartID&, RefMessage) {
        seen = t->ClassID();
        return REF_SUCCEED;
    };
    target->DeleteThis();
    EXPECT_EQ(seen, Class_ID(1, 2));
}

TEST(Ref, AMakerWithoutDeleteAllRefsLeavesNothingBehind) {
    struct Careless : ReferenceMaker {
        RefTargetHandle slot = nullptr;
        int NumRefs() override { return 1; }
        RefTargetHandle GetReference(int) override { return slot; }
        void SetReference(int, RefTargetHandle t) override { slot = t; }
    };
    Thing target;
    {
        Careless maker;
        maker.ReplaceReference(0, &target);
        EXPECT_TRUE(target.HasDependents());
    }
    EXPECT_FALSE(target.HasDependents());
}

TEST(Ref, CopiesHaveNoReferencesOfTheirOwn) {
    Thing target, maker(1);
    maker.ReplaceReference(0, &target);
    struct Plain : ReferenceTarget {
    } a;
    Thing refersToA(1);
    refersToA.ReplaceReference(0, &a);
    const Plain copy(a);
    EXPECT_FALSE(copy.HasDependents());
}

TEST(AutoDelete, TheLastReferenceTakesTheTargetAlong) {
    const int before = Thing::alive;
    auto* const target = new Thing;
    target->SetAutoDelete(true);
    Thing a(1), b(1);
    a.ReplaceReference(0, target);
    b.ReplaceReference(0, target);
    a.DeleteReference(0);
    EXPECT_EQ(Thing::alive, before + 3);
    b.DeleteReference(0);
    EXPECT_EQ(Thing::alive, before + 2);
}

TEST(AutoDelete, WaitsForTheEndOfANotificationAndOfWatches) {
    const int before = Thing::alive;
    auto* const target = new Thing;
    target->SetAutoDelete(true);
    {
        Thing a(1);
        a.ReplaceReference(0, target);
        a.onNotify = [&](RefTargetHandle t, PartID&, RefMessage) {
            a.DeleteReference(0);
            EXPECT_EQ(Thing::alive, before + 2) << "still told";
            return REF_SUCCEED;
        };
        target->Tell();
        EXPECT_EQ(Thing::alive, before + 1);
        auto* const second = new Thing;
        second->SetAutoDelete(true);
        a.ReplaceReference(0, second);
        {
            const TargetWatch watch(second);
            a.DeleteReference(0);
            EXPECT_EQ(Thing::alive, before + 2);
            EXPECT_FALSE(watch.Deleted());
        }
        EXPECT_EQ(Thing::alive, before + 1);
    }
    EXPECT_EQ(Thing::alive, before);
}

TEST(AutoDelete, ATargetThatFindsANewDependentStays) {
    auto* const target = new Thing;
    target->SetAutoDelete(true);
    Thing a(1), b(1);
    a.ReplaceReference(0, target);
    {
        const TargetWatch watch(target);
        a.DeleteReference(0);
        b.ReplaceReference(0, target);
    }
    EXPECT_EQ(target->Dependents(), Makers{&b});
}

TEST(RemapDir, SharedTargetsStayShared) {
    Thing shared, left(1), right(1), top(3);
    shared.number = 7;
    left.ReplaceReference(0, &shared);
    right.ReplaceReference(0, &shared);
    top.ReplaceReference(0, &left);
    top.ReplaceReference(1, &right);
    RemapDir remap;
    auto* const copy = static_cast<Thing*>(remap.CloneRef(&top));
    auto* const copyLeft = static_cast<Thing*>(copy->GetReference(0));
    auto* const copyRight = static_cast<Thing*>(copy->GetReference(1));
    ASSERT_NE(copyLeft, copyRight);
    EXPECT_EQ(copyLeft->GetReference(0), copyRight->GetReference(0));
    EXPECT_NE(copyLeft->GetReference(0), &shared);
    EXPECT_EQ(static_cast<Thing*>(copyLeft->GetReference(0))->number, 7);
    EXPECT_EQ(copy->GetReference(2), nullptr);
    EXPECT_EQ(remap.CloneRef(&top), copy) << "one clone a target";
    EXPECT_EQ(remap.FindMapping(&left), copyLeft);
    for (RefTargetHandle t : std::initializer_list<RefTargetHandle>{copy, copyLeft, copyRight, remap.CloneRef(&shared)})
        delete t;
}

TEST(RemapDir, WhatCannotBeClonedGivesNull) {
    Thing t;
    t.canClone = false;
    RemapDir remap;
    EXPECT_EQ(remap.CloneRef(&t), nullptr);
    EXPECT_EQ(remap.CloneRef(nullptr), nullptr);
    EXPECT_EQ(remap.FindMapping(&t), nullptr);
}

TEST(TargetOwner, DeletesWhatItAdoptedDependentsFirst) {
    const int before = Thing::alive;
    auto* const leaf = new Thing;
    auto* const top = new Thing(1);
    top->ReplaceReference(0, leaf);
    bool told = false;
    top->onNotify = [&](RefTargetHandle, PartID&, RefMessage) {
        told = true;
        return REF_SUCCEED;
    };
    {
        host::TargetOwner owner;
        owner.Adopt(top);
        owner.Adopt(leaf);
        owner.Adopt(leaf);
        EXPECT_EQ(owner.Targets().size(), 2u);
        EXPECT_TRUE(owner.Owns(leaf));
        EXPECT_EQ(host::TargetOwner::Of(leaf), &owner);
    }
    EXPECT_EQ(Thing::alive, before);
    EXPECT_FALSE(told) << "the dependent went first";
}

TEST(TargetOwner, ForgetsWhatDiesByOtherHandsOrIsReleased) {
    host::TargetOwner owner, other;
    auto* const dies = new Thing;
    const auto kept = std::make_unique<Thing>(), moves = std::make_unique<Thing>();
    owner.Adopt(dies);
    owner.Adopt(kept.get());
    owner.Adopt(moves.get());
    delete dies;
    owner.Release(kept.get());
    other.Adopt(moves.get());
    EXPECT_TRUE(owner.Targets().empty());
    EXPECT_TRUE(other.Owns(moves.get()));
    other.Release(moves.get());
}

} // namespace
