// Notifications.

#include <gtest/gtest.h>

#include "core/core.h"
#include "sdk/hold.h"

namespace {

using namespace host;

struct Heard {
    int code;
    void* callParam;
};

// Listens to every code from 0 to 127.
class Listener {
public:
    Listener() {
        for (int code = 0; code < 128; ++code) RegisterNotification(Hear, this, code);
    }
    ~Listener() {
        for (int code = 0; code < 128; ++code) UnRegisterNotification(Hear, this, code);
    }
    std::vector<int> Codes() {
        std::vector<int> codes;
        for (const Heard& h : heard) codes.push_back(h.code);
        heard.clear();
        return codes;
    }
    std::vector<Heard> heard;

private:
    static void Hear(void* self, int code, void* callParam) {
        static_cast<Listener*>(self)->heard.push_back({code, callParam});
    }
};

using Codes = std::vector<int>;

TEST(Notify, WithoutAHostNobodyListens) {
    EXPECT_FALSE(RegisterNotification([](void*, int, void*) {}, nullptr, NOTIFY_NODE_CREATED));
    BroadcastNotification(NOTIFY_NODE_CREATED);
    UnRegisterNotification([](void*, int, void*) {}, nullptr, NOTIFY_NODE_CREATED);
}

TEST(Notify, SceneEvents) {
    Core core;
    const Core::Scope scope(core);
    Listener listener;
    Node* const a = core.CreateNode("a");
    EXPECT_EQ(listener.heard.at(0).callParam, static_cast<INode*>(a));
    EXPECT_EQ(listener.Codes(), Codes{NOTIFY_NODE_CREATED});
    a->SetName("b");
    a->SetSelected(true);
    a->SetSelected(true);
    EXPECT_EQ(listener.Codes(), (Codes{NOTIFY_NODE_RENAMED, NOTIFY_SELECTIONSET_CHANGED}));
    core.CloneNodes({a});
    EXPECT_EQ(listener.Codes(), Codes{NOTIFY_NODE_CLONED});
    core.DeleteNode(a);
    EXPECT_EQ(listener.Codes(), (Codes{NOTIFY_SCENE_PRE_DELETED_NODE, NOTIFY_SCENE_POST_DELETED_NODE}));
    core.SetTime(320);
    EXPECT_EQ(listener.Codes(), Codes{NOTIFY_TIME_CHANGED});
    core.SetFrameRate(25);
    core.SetAnimRange({0, 10});
    EXPECT_EQ(listener.Codes(), (Codes{NOTIFY_TIMEUNITS_CHANGED, NOTIFY_ANIMATION_RANGE_CHANGED}));
    core.ResetScene();
    EXPECT_EQ(listener.Codes(), (Codes{NOTIFY_SYSTEM_PRE_RESET, NOTIFY_SYSTEM_POST_RESET}));
}

TEST(Notify, UndoSaysTheStepsName) {
    Core core;
    const Core::Scope scope(core);
    Node* const a = core.CreateNode("a");
    theHold.Begin();
    a->Hide(true);
    theHold.Accept("Hide");
    static std::string named;
    const auto hear = [](void*, int, void* name) { named = static_cast<const char*>(name); };
    RegisterNotification(hear, nullptr, NOTIFY_SCENE_POST_UNDO);
    theHold.Undo();
    EXPECT_EQ(named, "Hide");
    EXPECT_FALSE(a->IsNodeHidden());
}

TEST(Notify, TheEndOfTheHost) {
    static Codes codes;
    codes.clear();
    {
        Core core;
        core.RegisterNotification([](void*, int code, void*) { codes.push_back(code); }, nullptr,
                                  NOTIFY_SYSTEM_SHUTDOWN);
    }
    EXPECT_EQ(codes, Codes{NOTIFY_SYSTEM_SHUTDOWN});
}

// A listener that changes the list while it is told.
struct Mischief {
    Core* core;
    Mischief* victim = nullptr;
    int calls = 0;
    bool adds = false, leaves = false;
    static void Hear(void* param, int code, void*) {
        auto* const self = static_cast<Mischief*>(param);
        ++self->calls;
        if (self->leaves) self->core->UnRegisterNotification(Hear, self, code);
        if (self->victim) self->core->UnRegisterNotification(Hear, self->victim, code);
        if (self->adds) self->core->RegisterNotification(Hear, self, code);
    }
};

TEST(Notify, ListenersComeAndGoWhileTold) {
    Core core;
    Mischief leaves{&core}, killer{&core}, killed{&core}, adds{&core}, last{&core};
    leaves.leaves = adds.adds = true;
    killer.victim = &killed;
    for (Mischief* const m : {&leaves, &killer, &killed, &adds, &last}) core.RegisterNotification(Mischief::Hear, m, 7);
    core.BroadcastNotification(7);
    EXPECT_EQ(leaves.calls, 1);
    EXPECT_EQ(killed.calls, 0);
    EXPECT_EQ(adds.calls, 1) << "the new registration hears the next one first";
    EXPECT_EQ(last.calls, 1);
    core.BroadcastNotification(7);
    EXPECT_EQ(leaves.calls, 1);
    EXPECT_EQ(adds.calls, 3);
    EXPECT_EQ(last.calls, 2);
}

} // namespace
