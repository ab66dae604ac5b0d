// Holds, undo and redo; records of scene objects.

#include <gtest/gtest.h>

#include <thread>

#include "core/controllers.h"
#include "core/core.h"
#include "core/light.h"
#include "test_objects.h"

namespace {

using namespace host;

// Records what happens to it.
class LogRecord : public RestoreObj {
public:
    LogRecord(std::vector<std::string>& log, std::string name) : log_(log), name_(std::move(name)) {}
    ~LogRecord() override { log_.push_back("drop " + name_); }
    void Restore(int isUndo) override { log_.push_back((isUndo ? "undo " : "take back ") + name_); }
    void Redo() override { log_.push_back("redo " + name_); }
    void EndHold() override { log_.push_back("end " + name_); }

private:
    std::vector<std::string>& log_;
    std::string name_;
};

struct UndoTest : testing::Test {
    using Log = std::vector<std::string>;
    UndoTest() { theHold.Flush(); }
    ~UndoTest() override {
        core.ResetScene();
        theHold.SetUndoLimit(100);
    }
    void Put(const char* name) { theHold.Put(new LogRecord(log, name)); }
    Log Taken() { return std::exchange(log, {}); }
    template <class F>
    void Step(const char* name, F&& edit) {
        theHold.Begin();
        edit();
        theHold.Accept(name);
    }
    Light* NewLight() { return core.Adopt(new Light(OMNI_LGT)); }

    Log log;
    Core core;
    Core::Scope scope{core};
};

TEST_F(UndoTest, RecordsGoBackInReverseOrder) {
    EXPECT_FALSE(theHold.Holding());
    Put("lost");
    EXPECT_EQ(Taken(), Log{"drop lost"});
    Step("both", [&] {
        EXPECT_TRUE(theHold.Holding());
        Put("a");
        Put("b");
        EXPECT_FALSE(theHold.Undo()) << "not while a hold is open";
    });
    EXPECT_EQ(Taken(), (Log{"end a", "end b"}));
    EXPECT_EQ(theHold.UndoName(), "both");
    EXPECT_TRUE(theHold.Undo());
    EXPECT_EQ(Taken(), (Log{"undo b", "undo a"}));
    EXPECT_EQ(theHold.UndoName(), "");
    EXPECT_EQ(theHold.RedoName(), "both");
    EXPECT_TRUE(theHold.Redo());
    EXPECT_EQ(Taken(), (Log{"redo a", "redo b"}));
    EXPECT_FALSE(theHold.Redo());
    theHold.Flush();
    EXPECT_EQ(Taken(), (Log{"drop a", "drop b"}));
}

TEST_F(UndoTest, CancelAndRestoreTakeBack) {
    theHold.Begin();
    Put("a");
    theHold.Restore();
    EXPECT_EQ(Taken(), (Log{"take back a", "drop a"}));
    EXPECT_TRUE(theHold.Holding());
    Put("b");
    theHold.Cancel();
    EXPECT_EQ(Taken(), (Log{"take back b", "drop b"}));
    EXPECT_FALSE(theHold.Holding());
    theHold.Cancel();
    theHold.Accept("nothing open");
    Step("empty", [] {});
    EXPECT_EQ(theHold.NumUndo(), 0);
}

TEST_F(UndoTest, InnerHoldsJoinTheOuterOne) {
    theHold.Begin();
    Put("a");
    theHold.Begin();
    Put("b");
    theHold.Cancel();
    EXPECT_EQ(Taken(), (Log{"take back b", "drop b"}));
    Step("inner", [&] { Put("c"); });
    EXPECT_EQ(theHold.NumUndo(), 0);
    theHold.Accept("outer");
    EXPECT_EQ(Taken(), (Log{"end a", "end c"}));
    EXPECT_EQ(theHold.UndoName(), "outer");
}

TEST_F(UndoTest, SuperGroupsAreOneStep) {
    theHold.SuperBegin();
    Step("one", [&] { Put("a"); });
    theHold.SuperBegin();
    Step("two", [&] { Put("b"); });
    EXPECT_FALSE(theHold.Undo());
    theHold.SuperAccept("inner");
    theHold.SuperAccept("group");
    EXPECT_EQ(theHold.NumUndo(), 1);
    EXPECT_EQ(theHold.UndoName(), "group");
    Taken();
    theHold.Undo();
    EXPECT_EQ(Taken(), (Log{"undo b", "undo a"}));
    theHold.SuperBegin();
    Step("three", [&] { Put("c"); });
    Taken();
    theHold.SuperCancel();
    EXPECT_EQ(Taken(), (Log{"take back c", "drop c"}));
    EXPECT_EQ(theHold.NumRedo(), 1) << "what was cancelled is no new step";
}

TEST_F(UndoTest, NewStepsDropRedoAndOldOnesGo) {
    theHold.SetUndoLimit(2);
    for (const char* const name : {"a", "b", "c"}) Step(name, [&] { Put(name); });
    EXPECT_EQ(theHold.NumUndo(), 2);
    EXPECT_EQ(theHold.UndoName(1), "b");
    EXPECT_EQ(theHold.UndoName(2), "");
    theHold.Undo();
    Taken();
    Step("d", [&] { Put("d"); });
    EXPECT_EQ(Taken(), (Log{"end d", "drop c"}));
    EXPECT_EQ(theHold.NumRedo(), 0);
    theHold.SetUndoLimit(0);
    EXPECT_EQ(theHold.NumUndo(), 0);
    Step("e", [&] { Put("e"); });
    EXPECT_EQ(theHold.NumUndo(), 0) << "no steps are kept";
}

TEST_F(UndoTest, SuspendedHoldsRecordNothing) {
    theHold.Begin();
    {
        const HoldSuspend outer;
        const HoldSuspend inner;
        EXPECT_FALSE(theHold.Holding());
        EXPECT_TRUE(theHold.IsSuspended());
        Put("a");
    }
    EXPECT_TRUE(theHold.Holding());
    theHold.Accept("nothing");
    EXPECT_EQ(theHold.NumUndo(), 0);
}

TEST_F(UndoTest, OtherThreadsDoNotRecord) {
    theHold.Begin();
    bool holding = true;
    std::thread([&] { holding = theHold.Holding(); }).join();
    EXPECT_FALSE(holding);
    theHold.Cancel();
}

TEST_F(UndoTest, OneRecordOfAStateIsEnough) {
    uint64_t mark = 0;
    EXPECT_FALSE(HoldOnce(mark));
    theHold.Begin();
    EXPECT_TRUE(HoldOnce(mark));
    EXPECT_FALSE(HoldOnce(mark));
    theHold.Begin();
    EXPECT_TRUE(HoldOnce(mark)) << "the inner hold may be cancelled by itself";
    theHold.Cancel();
    theHold.Restore();
    EXPECT_TRUE(HoldOnce(mark)) << "what was recorded is gone";
    theHold.Cancel();
}

TEST_F(UndoTest, ReferencesAndTheLifeOfWhatTheyHeld) {
    const int before = Thing::alive;
    {
        Thing user(1);
        auto* const first = new Thing;
        first->SetAutoDelete(true);
        user.ReplaceReference(0, first);
        Step("replace", [&] { user.DeleteReference(0); });
        EXPECT_EQ(Thing::alive, before + 2) << "the record keeps it";
        theHold.Undo();
        EXPECT_EQ(user.GetReference(0), first);
        theHold.Redo();
        theHold.Flush();
        EXPECT_EQ(Thing::alive, before + 1) << "nobody can bring it back any more";
    }
    EXPECT_EQ(Thing::alive, before);
}

TEST_F(UndoTest, RecordsOfDeadObjectsDoNothing) {
    auto* const user = new Thing(1);
    auto* const target = new Thing;
    Step("a", [&] { user->ReplaceReference(0, target); });
    delete target;
    theHold.Undo();
    theHold.Redo();
    EXPECT_EQ(user->GetReference(0), nullptr);
    delete user;
    theHold.Undo();
    theHold.Redo();
}

TEST_F(UndoTest, UndoTellsDependents) {
    Light* const light = NewLight();
    Thing watcher(1);
    watcher.ReplaceReference(0, light);
    Step("strength", [&] { light->Params()->SetValue(kLightMultiplier, 0, 3.0f); });
    watcher.heard.clear();
    ParamID told = -1;
    watcher.onNotify = [&](RefTargetHandle, PartID&, RefMessage) {
        told = light->Params()->LastNotifyParamID();
        return REF_SUCCEED;
    };
    theHold.Undo();
    EXPECT_EQ(light->Params()->GetFloat(kLightMultiplier), 1);
    EXPECT_EQ(watcher.heard.size(), 1u);
    EXPECT_EQ(told, kLightMultiplier);
    watcher.DeleteAllRefs();
}

TEST_F(UndoTest, DeletedNodesComeBackWithTheirPlaceInTheScene) {
    Node* const a = core.CreateNode("a", new Light(OMNI_LGT));
    Node* const b = core.CreateNode("b", nullptr, a);
    core.CreateNode("c");
    auto* const lamp = static_cast<Light*>(a->GetObjectRef());
    Light* const other = NewLight();
    other->Params()->Append(kLightExclude, a);
    Step("Delete", [&] { core.DeleteNode(a); });
    EXPECT_EQ(core.GetINodeByName("a"), nullptr);
    EXPECT_EQ(b->GetParentNode(), core.GetRootNode());
    EXPECT_EQ(other->Params()->GetINode(kLightExclude, 0, 0), nullptr);
    EXPECT_EQ(TargetOwner::Of(a), nullptr);
    theHold.Undo();
    EXPECT_EQ(core.GetRootNode()->GetChildNode(0), a);
    EXPECT_EQ(b->GetParentNode(), a);
    EXPECT_EQ(a->GetObjectRef(), lamp);
    EXPECT_EQ(other->Params()->GetINode(kLightExclude, 0, 0), a);
    theHold.Redo();
    EXPECT_EQ(core.GetINodeByName("a"), nullptr);
}

TEST_F(UndoTest, ObjectsThatNobodyCanBringBackAreDeleted) {
    const int before = Thing::alive;
    auto* const kept = core.Adopt(new Thing);
    Step("add", [&] { core.Adopt(new Thing); });
    theHold.Undo();
    EXPECT_EQ(Thing::alive, before + 2);
    Step("delete", [&] { kept->DeleteThis(); });
    EXPECT_EQ(Thing::alive, before + 1) << "the added one went with the redo step, the deleted one may come back";
    theHold.Flush();
    EXPECT_EQ(Thing::alive, before);
}

TEST_F(UndoTest, ClonedNodesPointToClones) {
    Node* const a = core.CreateNode("a", new Light(OMNI_LGT));
    Node* const b = core.CreateNode("b", new Light(OMNI_LGT), a);
    static_cast<Light*>(b->GetObjectRef())->Params()->Append(kLightExclude, a);
    Node* const eye = core.CreateNode("eye");
    ASSERT_TRUE(eye->SetTarget(b));
    std::vector<Node*> clones;
    Step("clone", [&] { clones = core.CloneNodes({eye, b, a}); });
    ASSERT_EQ(clones.size(), 3u);
    EXPECT_EQ(clones[0]->GetTarget(), clones[1]) << "cloned before its target";
    EXPECT_EQ(clones[1]->GetParentNode(), clones[2]);
    EXPECT_EQ(clones[2]->GetParentNode(), core.GetRootNode());
    EXPECT_EQ(static_cast<Light*>(clones[1]->GetObjectRef())->Params()->GetINode(kLightExclude), clones[2]);
    theHold.Undo();
    EXPECT_EQ(core.AllNodes().size(), 3u);
    theHold.Redo();
    EXPECT_EQ(core.AllNodes().size(), 6u);
    EXPECT_EQ(core.CloneNodes({core.GetRootNode(), nullptr}), (std::vector<Node*>{nullptr, nullptr}));
}

TEST_F(UndoTest, FailedAppendsLeaveNoTrace) {
    Node* const a = core.CreateNode("a", new Light(OMNI_LGT));
    IParamBlock2* const block = static_cast<Light*>(a->GetObjectRef())->Params();
    theHold.Begin();
    EXPECT_FALSE(block->Append(kLightExclude, a)) << "a light that refers to itself";
    EXPECT_EQ(block->Count(kLightExclude), 0);
    theHold.Accept("Append");
    EXPECT_EQ(theHold.NumUndo(), 0);
}

TEST_F(UndoTest, MovedNodesWithListsInCirclesComeToAnEnd) {
    // Moving the parent moves the child, which the lamp's list knows, and the lamp is what the parent looks at.
    Node* const lamp = core.CreateNode("lamp", new Light(OMNI_LGT));
    Node* const parent = core.CreateNode("parent");
    Node* const child = core.CreateNode("child", nullptr, parent);
    ASSERT_TRUE(static_cast<Light*>(lamp->GetObjectRef())->Params()->Append(kLightExclude, child));
    ASSERT_TRUE(parent->SetTarget(lamp));
    parent->SetNodeTM(0, TransMatrix({1, 2, 3}));
    EXPECT_EQ(child->GetNodeTM(0).GetTrans(), Point3(1, 2, 3));
}

} // namespace
