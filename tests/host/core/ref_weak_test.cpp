// Weak references, handles, enumeration of dependents, transfer, patches of clones; random graphs with undo.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>

#include "core/undo_records.h"
#include "sdk/hold.h"
#include "sdk/weakref.h"
#include "test_objects.h"

namespace {

TEST(WeakRef, DoesNotKeepItsTarget) {
    const int before = Thing::alive;
    auto* const target = new Thing;
    target->SetAutoDelete(true);
    Thing user(1);
    user.ReplaceReference(0, target);
    SingleWeakRefMaker weak(target);
    std::vector<RefMessage> heard;
    weak.SetObserver([&](const Interval&, RefTargetHandle, PartID&, RefMessage m) {
        heard.push_back(m);
        return REF_SUCCEED;
    });
    target->Tell();
    EXPECT_TRUE(target->HasRealDependents());
    user.DeleteReference(0);
    EXPECT_EQ(weak.GetRef(), nullptr);
    EXPECT_EQ(heard, (std::vector<RefMessage>{REFMSG_CHANGE, REFMSG_TARGET_DELETED}));
    EXPECT_EQ(Thing::alive, before + 1);
}

TEST(WeakRef, MayLookBackAtADependent) {
    struct Child : Thing {
        SingleWeakRefMaker parent;
    } child;
    Thing parent(1);
    ASSERT_EQ(parent.ReplaceReference(0, &child), REF_SUCCEED);
    child.parent.SetRef(&parent);
    EXPECT_EQ(child.parent.GetRef(), &parent) << "no circle";
    parent.DeleteAllRefs();
}

TEST(MakerHandle, FollowsUntilDeath) {
    auto* const thing = new Thing;
    const MakerHandle first(thing);
    MakerHandle second(thing), third(thing);
    second.Set(nullptr);
    EXPECT_EQ(first.Target(), thing);
    delete thing;
    EXPECT_EQ(first.Maker(), nullptr);
    EXPECT_EQ(third.Target(), nullptr);
    SingleWeakRefMaker maker;
    const MakerHandle plain(&maker);
    EXPECT_EQ(plain.Maker(), &maker);
    EXPECT_EQ(plain.Target(), nullptr);
}

TEST(MakerHandle, KeepsWhatWouldGo) {
    const int before = Thing::alive;
    auto* const target = new Thing;
    target->SetAutoDelete(true);
    MakerHandle keep(target, true), second(target, true);
    Thing user(1);
    user.ReplaceReference(0, target);
    user.DeleteReference(0);
    EXPECT_EQ(Thing::alive, before + 2);
    keep.Set(nullptr);
    EXPECT_EQ(Thing::alive, before + 2);
    user.ReplaceReference(0, target);
    second.Set(nullptr);
    EXPECT_EQ(Thing::alive, before + 2) << "used again";
    user.DeleteReference(0);
    EXPECT_EQ(Thing::alive, before + 1);
}

struct Enumerator : DependentEnumProc {
    std::vector<ReferenceMaker*> seen;
    ReferenceMaker *skip = nullptr, *halt = nullptr;
    int proc(ReferenceMaker* m) override {
        seen.push_back(m);
        return m == halt ? DEP_ENUM_HALT : m == skip ? DEP_ENUM_SKIP : DEP_ENUM_CONTINUE;
    }
};

TEST(Dependents, EveryoneOnceAndNobodyBeforeWhatItDependsOn) {
    Thing leaf, left(1), right(1), top(3), above(1);
    left.ReplaceReference(0, &leaf);
    right.ReplaceReference(0, &leaf);
    top.ReplaceReference(0, &leaf);
    top.ReplaceReference(1, &left);
    top.ReplaceReference(2, &right);
    above.ReplaceReference(0, &top);
    Enumerator all;
    EXPECT_TRUE(leaf.DoEnumDependents(&all));
    EXPECT_EQ(all.seen, (std::vector<ReferenceMaker*>{&leaf, &left, &right, &top, &above}));
    Enumerator halted;
    halted.halt = &right;
    EXPECT_FALSE(leaf.DoEnumDependents(&halted));
    EXPECT_EQ(halted.seen.size(), 3u);
    Enumerator skipped;
    skipped.skip = &top;
    EXPECT_TRUE(leaf.DoEnumDependents(&skipped));
    EXPECT_EQ(skipped.seen, (std::vector<ReferenceMaker*>{&leaf, &left, &right, &top}));
}

TEST(Transfer, EveryoneRefersToTheNewOne) {
    Thing old, fresh(1), a(2), b(1), below(1);
    a.ReplaceReference(0, &old);
    a.ReplaceReference(1, &old);
    b.ReplaceReference(0, &old);
    fresh.ReplaceReference(0, &below);
    below.ReplaceReference(0, &old);
    fresh.TransferReferences(&old);
    EXPECT_EQ(a.FindRef(&fresh), 0);
    EXPECT_EQ(a.GetReference(1), &fresh);
    EXPECT_EQ(b.GetReference(0), &fresh);
    EXPECT_EQ(below.GetReference(0), &old) << "that would be a circle";
    EXPECT_EQ(a.FindRef(&old), -1);
}

// Refers in slot 0 to its own part and in slot 1 to a friend that is not cloned along.
struct Friendly : Thing {
    Friendly() : Thing(2) {}
    RefTargetHandle Clone(RemapDir& remap) override {
        auto* const copy = new Friendly;
        copy->ReplaceReference(0, remap.CloneRef(GetReference(0)));
        copy->ReplaceReference(1, GetReference(1));
        remap.Backpatch(copy, 1, GetReference(1));
        remap.Backpatch(&copy->plain, plain);
        return copy;
    }
    RefTargetHandle plain = nullptr;
};

TEST(RemapDir, PatchesWhatIsClonedLater) {
    Friendly a, b, c;
    a.ReplaceReference(1, &b);
    a.plain = &c;
    b.ReplaceReference(1, &c);
    RemapDir remap;
    int finished = 0;
    remap.AddPostPatchProc([&](RemapDir& r) {
        ++finished;
        EXPECT_EQ(&r, &remap);
    });
    std::unique_ptr<ReferenceTarget> a2(remap.CloneRef(&a));
    EXPECT_EQ(a2->GetReference(1), &b);
    std::unique_ptr<ReferenceTarget> b2(remap.CloneRef(&b));
    EXPECT_EQ(a2->GetReference(1), b2.get());
    EXPECT_EQ(b2->GetReference(1), &c) << "never cloned";
    std::unique_ptr<ReferenceTarget> lost(new Friendly);
    remap.Backpatch(lost.get(), 1, &c);
    lost.reset();
    EXPECT_EQ(static_cast<Friendly*>(a2.get())->plain, nullptr);
    std::unique_ptr<ReferenceTarget> c2(remap.CloneRef(&c));
    EXPECT_EQ(static_cast<Friendly*>(a2.get())->plain, c2.get());
    EXPECT_EQ(b2->GetReference(1), c2.get());
    remap.Finish();
    EXPECT_EQ(finished, 1);
    // What refers goes before what is referred to.
    a2.reset();
    b2.reset();
}

// Random graphs of owned and shared things: references, clones, deaths inside and outside of holds, undo and redo.
// Nothing leaks, and every slot has its back reference.
class Graph {
public:
    static constexpr int kSlots = 3;
    Graph() { theHold.Flush(); }
    ~Graph() { theHold.Flush(); }

    void Take(int op, int a, int b, int slot) {
        Thing* const x = Choose(a);
        Thing* const y = Choose(b);
        switch (op) {
        case 0:
            return Adopt(new Thing(kSlots));
        case 1:
            if (x) x->ReplaceReference(slot, y);
            return;
        case 2:
            if (x) x->DeleteReference(slot);
            return;
        case 3:
            return MakeShared(x, slot);
        case 4:
            if (x) x->DeleteThis();
            return;
        case 5:
            return Clone(x);
        case 6:
            return theHold.Holding() ? theHold.Accept("step") : theHold.Begin();
        case 7:
            return theHold.Cancel();
        case 8:
            theHold.Undo();
            return;
        case 9:
            theHold.Redo();
            return;
        case 10:
            if (x) weak_.SetRef(x);
            return;
        default:
            if (x) x->Tell();
        }
    }
    void Check() {
        std::map<RefTargetHandle, std::multiset<ReferenceMaker*>> expected;
        for (ReferenceTarget* const t : owner_.Targets()) Collect(t, expected);
        if (weak_.GetRef()) expected[weak_.GetRef()].insert(&weak_);
        for (ReferenceTarget* const t : owner_.Targets()) {
            for (ReferenceMaker* const m : t->Dependents()) {
                // Things that undo may bring back refer as well, but nobody else refers without a slot.
                const auto& makers = expected[t];
                RC_ASSERT(size_t(std::count(t->Dependents().begin(), t->Dependents().end(), m)) ==
                          std::max(makers.count(m), SlotsOf(m, t)));
            }
            for (ReferenceMaker* const m : expected[t])
                RC_ASSERT(std::count(t->Dependents().begin(), t->Dependents().end(), m) ==
                          std::ptrdiff_t(expected[t].count(m)));
        }
    }

private:
    static size_t SlotsOf(ReferenceMaker* m, RefTargetHandle t) {
        size_t n = 0;
        for (int i = 0; i < m->NumRefs(); ++i) n += m->GetReference(i) == t;
        return n;
    }
    void Collect(ReferenceTarget* t, std::map<RefTargetHandle, std::multiset<ReferenceMaker*>>& expected) {
        for (int i = 0; i < t->NumRefs(); ++i)
            if (const RefTargetHandle to = t->GetReference(i)) expected[to].insert(t);
    }
    Thing* Choose(int n) {
        const auto& all = owner_.Targets();
        return all.empty() ? nullptr : static_cast<Thing*>(all[size_t(n) % all.size()]);
    }
    // As a scene adopts: undoably.
    void Adopt(Thing* t) {
        if (theHold.Holding()) theHold.Put(new host::OwnerRestore(&owner_, t, true, owner_.Targets().size()));
        owner_.Adopt(t);
    }
    // A thing that lives by its references only.
    static void MakeShared(Thing* user, int slot) {
        if (!user) return;
        auto* const shared = new Thing(kSlots);
        shared->SetAutoDelete(true);
        user->ReplaceReference(slot, shared);
    }
    void Clone(Thing* x) {
        if (!x || owner_.Targets().size() > 40) return;
        RemapDir remap;
        std::vector<ReferenceTarget*> reached;
        Reach(x, reached);
        if (reached.size() > 20) return;
        remap.CloneRef(x);
        for (ReferenceTarget* const from : reached) {
            auto* const copy = static_cast<Thing*>(remap.FindMapping(from));
            if (!copy->AutoDelete()) Adopt(copy);
        }
    }
    static void Reach(ReferenceTarget* t, std::vector<ReferenceTarget*>& reached) {
        if (!t || std::find(reached.begin(), reached.end(), t) != reached.end()) return;
        reached.push_back(t);
        for (int i = 0; i < t->NumRefs(); ++i) Reach(t->GetReference(i), reached);
    }

    host::TargetOwner owner_;
    SingleWeakRefMaker weak_;
};

TEST(RefRandomUndo, NothingLeaksAndNothingDangles) {
    const int before = Thing::alive;
    const auto number = [](int below) { return rc::gen::resize(rc::kNominalSize, rc::gen::inRange(0, below)); };
    const auto step = rc::gen::tuple(number(12), number(64), number(64), number(Graph::kSlots));
    EXPECT_TRUE(rc::check("random graphs with undo", [&] {
        const auto steps = *rc::gen::container<std::vector<std::tuple<int, int, int, int>>>(300, step);
        {
            Graph graph;
            for (const auto& [op, a, b, slot] : steps) {
                graph.Take(op, a, b, slot);
                graph.Check();
            }
            while (theHold.Serial() != 0) theHold.Accept("end");
        }
        RC_ASSERT(Thing::alive == before);
    }));
}

} // namespace
