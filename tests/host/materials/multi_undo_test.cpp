// Undo of multi materials' lists and of names.

#include <gtest/gtest.h>

#include "materials/multi_mtl.h"
#include "materials/std_mtl.h"
#include "sdk/hold.h"

namespace {

using namespace host;

struct MultiUndo : testing::Test {
    MultiUndo() { theHold.Flush(); }
    ~MultiUndo() override { theHold.Flush(); }
    template <class F>
    static void Step(F&& edit) {
        theHold.Begin();
        edit();
        theHold.Accept("step");
    }
    std::vector<Mtl*> Subs() {
        std::vector<Mtl*> subs;
        for (int i = 0; i < multi.NumSubMtls(); ++i) subs.push_back(multi.GetSubMtl(i));
        return subs;
    }
    StdMtl red, green;
    MultiMtl multi;
};

TEST_F(MultiUndo, ListsGrowAndShrinkBack) {
    using List = std::vector<Mtl*>;
    multi.SetNumSubMtls(1);
    Step([&] { multi.SetSubMtl(2, &red); });
    Step([&] { multi.SetSubMtl(0, &green); });
    Step([&] { multi.SetNumSubMtls(1); });
    const List states[] = {{nullptr}, {nullptr, nullptr, &red}, {&green, nullptr, &red}, {&green}};
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(Subs(), states[3]);
        for (int i = 2; i >= 0; --i) {
            EXPECT_TRUE(theHold.Undo());
            EXPECT_EQ(Subs(), states[i]);
        }
        EXPECT_FALSE(theHold.Undo());
        for (int i = 1; i <= 3; ++i) {
            EXPECT_TRUE(theHold.Redo());
            EXPECT_EQ(Subs(), states[i]);
        }
    }
    multi.DeleteAllRefs();
}

TEST_F(MultiUndo, Names) {
    red.SetName("red");
    Step([&] { red.SetName("rose"); });
    theHold.Undo();
    EXPECT_EQ(red.GetName(), "red");
    theHold.Redo();
    EXPECT_EQ(red.GetName(), "rose");
}

} // namespace
