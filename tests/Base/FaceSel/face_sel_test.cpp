// Which faces grow hair.

#include <gtest/gtest.h>

#include "Base/EngineFixture.h"
#include "Base/FaceSel.h"

namespace {

using namespace engine;
using Ranges = std::vector<MtlIdRange>;

TEST(MtlIdList, IdsAndRanges) {
    EXPECT_EQ(ParseMtlIdList("1,3,5-8"), (Ranges{{1, 1}, {3, 3}, {5, 8}}));
    EXPECT_EQ(ParseMtlIdList("007"), (Ranges{{7, 7}}));
    EXPECT_EQ(ParseMtlIdList("5-3"), (Ranges{{5, 3}}));
    EXPECT_EQ(ParseMtlIdList("2-"), (Ranges{{2, 0}}));
    EXPECT_EQ(ParseMtlIdList(""), Ranges());
    EXPECT_EQ(ParseMtlIdList(",,"), Ranges());
}

TEST(MtlIdList, AWrongCharacterEndsItsEntry) {
    EXPECT_EQ(ParseMtlIdList("a,4"), (Ranges{{4, 4}}));
    EXPECT_EQ(ParseMtlIdList("12x34,4"), (Ranges{{12, 12}, {4, 4}}));
    EXPECT_EQ(ParseMtlIdList("1-2-3,4"), (Ranges{{1, 2}, {4, 4}}));
    EXPECT_EQ(ParseMtlIdList("1-2 ,4"), (Ranges{{1, 2}, {4, 4}}));
    EXPECT_EQ(ParseMtlIdList("-5,6"), (Ranges{{6, 6}}));
    EXPECT_EQ(ParseMtlIdList(" 5,6"), (Ranges{{6, 6}}));
    EXPECT_EQ(ParseMtlIdList("99999999999"), (Ranges{{2147483647, 2147483647}}));
}

// Eight faces with the ids 1..8.
Emitter Numbered() {
    Emitter e(FlatGrid(2, 1));
    for (int f = 0; f < 8; ++f) e.mesh.faces[size_t(f)].SetMatID(f);
    e.mesh.faceSel.SetSize(8);
    e.mesh.faceSel.Set(2);
    BitArray set(4);
    set.Set(1);
    e.mesh.faceSets = {{"ears", set}};
    return e;
}

std::vector<int> Selected(const FaceSelection& s, bool* found = nullptr) {
    Emitter e = Numbered();
    const FaceSelectionResult r = ComputeFaceSelection(s, e.mesh, e);
    EXPECT_EQ(r.faces.GetSize(), 8);
    if (found) *found = r.found;
    std::vector<int> faces;
    for (int f = 0; f < 8; ++f)
        if (r.faces[f]) faces.push_back(f);
    return faces;
}

TEST(FaceSelection, ByType) {
    using Faces = std::vector<int>;
    EXPECT_EQ(Selected({0, 1, "", ""}).size(), 8u);
    EXPECT_EQ(Selected({1, 1, "", ""}), (Faces{2}));
    EXPECT_EQ(Selected({2, 5, "", ""}), (Faces{4}));
    EXPECT_EQ(Selected({2, 9, "", ""}), Faces());
    EXPECT_EQ(Selected({4, 1, "1,3,5-8", ""}), (Faces{0, 2, 4, 5, 6, 7}));
    EXPECT_EQ(Selected({4, 1, "5-3", ""}), Faces());
    EXPECT_EQ(Selected({4, 1, "2-", ""}), Faces());
    EXPECT_EQ(Selected({4, 1, "007", ""}), (Faces{6}));
}

TEST(FaceSelection, NamedSets) {
    bool found = false;
    EXPECT_EQ(Selected({3, 1, "", "ears"}, &found), (std::vector<int>{1})) << "a short set ends with clear bits";
    EXPECT_TRUE(found);
    EXPECT_TRUE(Selected({3, 1, "", "tail"}, &found).empty());
    EXPECT_FALSE(found);
}

TEST(FaceSelection, AMissingNamedSetGrowsNothing) {
    HairParams p = PlainFur();
    p.faceSelection = {3, 1, "", "tail"};
    Engine e(FlatGrid(2, 1), p);
    EXPECT_TRUE(e.Strands().empty());
    for (int v = 0; v < 9; ++v) EXPECT_EQ(e.control.Strand(v), nullptr);
}

} // namespace
