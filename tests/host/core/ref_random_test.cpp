// References: random graphs and random operations.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <map>
#include <set>

#include "test_objects.h"

namespace {

constexpr int kSlots = 3;

// A pool of targets whose deaths are known, beside the truth as plain maps.
struct Graph {
    std::vector<Thing*> things;
    ~Graph() {
        for (Thing* t : things) delete t;
    }
    static bool Reaches(Thing* from, Thing* to) {
        if (from == to) return true;
        for (int i = 0; i < from->NumRefs(); ++i)
            if (auto* const next = static_cast<Thing*>(from->GetReference(i)); next && Reaches(next, to)) return true;
        return false;
    }
    // Every slot has its back reference and there are no others.
    void Check() const {
        std::map<Thing*, std::multiset<ReferenceMaker*>> expected;
        for (Thing* t : things)
            for (int i = 0; i < kSlots; ++i)
                if (auto* const to = static_cast<Thing*>(t->GetReference(i))) expected[to].insert(t);
        for (Thing* t : things) {
            const std::multiset<ReferenceMaker*> found(t->Dependents().begin(), t->Dependents().end());
            RC_ASSERT(found == expected[t]);
        }
    }
};

RC_GTEST_PROP(RefRandom, BackReferencesFollowEveryChange, ()) {
    Graph g;
    const int count = *rc::gen::inRange(2, 12);
    for (int i = 0; i < count; ++i) g.things.push_back(new Thing(kSlots));
    const int steps = *rc::gen::inRange(1, 60);
    for (int s = 0; s < steps && g.things.size() > 1; ++s) {
        const size_t n = g.things.size();
        Thing* const a = g.things[*rc::gen::inRange<size_t>(0, n)];
        const size_t other = *rc::gen::inRange<size_t>(0, n + 1);
        Thing* const b = other < n ? g.things[other] : nullptr;
        const int slot = *rc::gen::inRange(0, kSlots);
        const int what = *rc::gen::inRange(0, 20);
        if (what == 0) {
            delete a;
            std::erase(g.things, a);
        } else if (what == 1) {
            a->DeleteAllRefs();
        } else {
            const bool circle = b && Graph::Reaches(b, a);
            Thing* const old = static_cast<Thing*>(a->GetReference(slot));
            const RefResult result = a->ReplaceReference(slot, b);
            RC_ASSERT(result == (circle ? REF_FAIL : REF_SUCCEED));
            RC_ASSERT(a->GetReference(slot) == (circle ? old : b));
        }
        g.Check();
    }
}

RC_GTEST_PROP(RefRandom, MessagesReachExactlyTheDependents, ()) {
    Graph g;
    const int count = *rc::gen::inRange(2, 9);
    for (int i = 0; i < count; ++i) {
        g.things.push_back(new Thing(kSlots));
        for (int slot = 0; slot < kSlots && i > 0; ++slot)
            if (*rc::gen::arbitrary<bool>())
                g.things.back()->ReplaceReference(slot, g.things[size_t(*rc::gen::inRange(0, i))]);
    }
    Thing* const source = g.things[size_t(*rc::gen::inRange(0, count))];
    source->Tell();
    for (Thing* t : g.things) {
        RC_ASSERT(t->heard.empty() == (t == source || !Graph::Reaches(t, source)));
        RC_ASSERT(DependsOn(t, source) == (t != source && Graph::Reaches(t, source)));
    }
}

RC_GTEST_PROP(RefRandom, ClonesHaveTheSameShapeAndShareNothing, ()) {
    Graph g, copies;
    const int count = *rc::gen::inRange(1, 9);
    for (int i = 0; i < count; ++i) {
        g.things.push_back(new Thing(kSlots));
        g.things.back()->number = i;
        for (int slot = 0; slot < kSlots && i > 0; ++slot)
            if (*rc::gen::arbitrary<bool>())
                g.things.back()->ReplaceReference(slot, g.things[size_t(*rc::gen::inRange(0, i))]);
    }
    RemapDir remap;
    for (Thing* t : g.things) copies.things.push_back(static_cast<Thing*>(remap.CloneRef(t)));
    for (size_t i = 0; i < g.things.size(); ++i) {
        RC_ASSERT(copies.things[i]->number == int(i));
        for (int slot = 0; slot < kSlots; ++slot) {
            auto* const from = static_cast<Thing*>(g.things[i]->GetReference(slot));
            auto* const to = static_cast<Thing*>(copies.things[i]->GetReference(slot));
            RC_ASSERT((from == nullptr) == (to == nullptr));
            if (from) {
                RC_ASSERT(to == copies.things[size_t(from->number)]);
            }
        }
    }
    g.Check();
    copies.Check();
}

// Shared ownership: whatever the order in which roots let go, everything dies exactly when nothing refers to it.
RC_GTEST_PROP(RefRandom, AutoDeletedGraphsVanishWithTheirRoots, ()) {
    const int before = Thing::alive;
    const int count = *rc::gen::inRange(1, 12);
    std::vector<Thing*> things;
    Thing root(count);
    for (int i = 0; i < count; ++i) {
        things.push_back(new Thing(kSlots));
        things.back()->SetAutoDelete(true);
        root.ReplaceReference(i, things.back());
        for (int slot = 0; slot < kSlots && i > 0; ++slot)
            if (*rc::gen::arbitrary<bool>())
                things.back()->ReplaceReference(slot, things[size_t(*rc::gen::inRange(0, i))]);
    }
    std::vector<int> order;
    for (int i = 0; i < count; ++i) order.insert(order.begin() + *rc::gen::inRange(0, i + 1), i);
    for (const int i : order) root.DeleteReference(i);
    RC_ASSERT(Thing::alive == before + 1);
}

// Dependents that drop slots, take new ones or delete each other in the middle of a notification.
RC_GTEST_PROP(RefRandom, NotificationsSurviveAnyMischief, ()) {
    const int count = *rc::gen::inRange(2, 8);
    auto* const target = new Thing;
    target->SetAutoDelete(*rc::gen::arbitrary<bool>());
    std::vector<Thing*> makers;
    for (int i = 0; i < count; ++i) {
        makers.push_back(new Thing(kSlots));
        for (int slot = 0; slot < kSlots; ++slot)
            if (*rc::gen::arbitrary<bool>()) makers.back()->ReplaceReference(slot, target);
    }
    bool targetAlive = target->HasDependents() || !target->AutoDelete();
    std::vector<std::pair<int, int>> script;
    for (int i = 0; i < count; ++i) script.push_back({*rc::gen::inRange(0, 4), *rc::gen::inRange(0, count)});
    TargetWatch watch(target);
    for (int i = 0; i < count; ++i) {
        makers[size_t(i)]->onNotify = [&, i](RefTargetHandle, PartID&, RefMessage message) {
            if (message != REFMSG_CHANGE) return REF_SUCCEED;
            const auto [what, whom] = script[size_t(i)];
            Thing*& other = makers[size_t(whom)];
            if (what == 0 && other) other->DeleteAllRefs();
            if (what == 1 && other) {
                Thing* const victim = other;
                other = nullptr;
                delete victim;
            }
            if (what == 2 && other) other->ReplaceReference(0, target);
            return REF_SUCCEED;
        };
    }
    target->Tell();
    RC_ASSERT(!watch.Deleted());
    size_t slots = 0;
    for (Thing* t : makers)
        for (int slot = 0; t && slot < kSlots; ++slot) slots += t->GetReference(slot) == target;
    RC_ASSERT(target->Dependents().size() == slots);
    for (Thing* t : makers) delete t;
    RC_ASSERT(!target->HasDependents());
    if (!target->AutoDelete() || !targetAlive) {
        target->SetAutoDelete(false);
        delete target;
    }
}

} // namespace
