// Curve controls in scene files and settings files.

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <vector>

#include "CurveCtl/CurveCtl.h"

namespace {

struct Chunk {
    uint16_t id;
    std::vector<char> data;
};

/// Chunks in memory.
class MemorySave : public ISave {
public:
    void BeginChunk(uint16_t id) override { chunks.push_back({id, {}}); }
    void EndChunk() override {}
    IOResult Write(const void* data, uint32_t bytes, uint32_t* written) override {
        if (int(chunks.size()) > failAfter) return IO_ERROR;
        const char* p = static_cast<const char*>(data);
        chunks.back().data.insert(chunks.back().data.end(), p, p + bytes);
        *written = bytes;
        return IO_OK;
    }
    std::vector<Chunk> chunks;
    int failAfter = 1000;
};

class MemoryLoad : public ILoad {
public:
    explicit MemoryLoad(std::vector<Chunk> chunks) : chunks_(std::move(chunks)) {}
    IOResult OpenChunk() override { return ++at_ < int(chunks_.size()) ? IO_OK : IO_END; }
    IOResult CloseChunk() override { return IO_OK; }
    uint16_t CurChunkID() override { return chunks_[size_t(at_)].id; }
    uint32_t CurChunkLength() override { return uint32_t(chunks_[size_t(at_)].data.size()); }
    IOResult Read(void* data, uint32_t bytes, uint32_t* read) override {
        const std::vector<char>& d = chunks_[size_t(at_)].data;
        *read = uint32_t(std::min<size_t>(bytes, d.size()));
        std::memcpy(data, d.data(), *read);
        return *read == bytes ? IO_OK : IO_ERROR;
    }
    void RegisterPostLoadCallback(PostLoadCallback*) override {}

private:
    std::vector<Chunk> chunks_;
    int at_ = -1;
};

template <class T>
Chunk MakeChunk(uint16_t id, T value) {
    Chunk c{id, std::vector<char>(sizeof value)};
    std::memcpy(c.data.data(), &value, sizeof value);
    return c;
}

TEST(CurveStore, WritesTheChunksInOrder) {
    CurveCtl c(1, 2, 3, 7);
    MemorySave save;
    EXPECT_EQ(c.Save(&save), IO_OK);
    std::vector<uint16_t> ids;
    for (const Chunk& k : save.chunks) {
        ids.push_back(k.id);
        EXPECT_EQ(k.data.size(), 4u);
    }
    EXPECT_EQ(ids,
              (std::vector<uint16_t>{0x11, 0x13, 0x12, 0x10, 0x100, 0x110, 0x120, 0x130, 0x140, 0x150, 0x160, 0x170}));
    save = MemorySave();
    save.failAfter = 3;
    EXPECT_EQ(c.Save(&save), IO_ERROR);
    EXPECT_EQ(save.chunks.size(), 4u);
}

TEST(CurveStore, LoadsItsFieldsAndEmptiesTheSlots) {
    CurveCtl c(1, 2, 3, 7), d;
    c.AddKnot(1.5f, 5);
    c.SetEnabled(1);
    c.SetNoise(true, 8, 9, 10);
    c.defaultType = CURVE_STEP;
    c.viewUpdateMode = 2;
    MemorySave save;
    c.Save(&save);
    MemoryLoad load(save.chunks);
    EXPECT_EQ(d.Load(&load), IO_OK);
    EXPECT_TRUE(d.Enabled() && d.UseNoise());
    EXPECT_EQ(d.XMin(), 1.0f);
    EXPECT_EQ(d.XMax(), 2.0f);
    EXPECT_EQ(d.YMin(), 3.0f);
    EXPECT_EQ(d.YMax(), 7.0f);
    EXPECT_EQ(d.NoisePhase(), 10.0f);
    EXPECT_EQ(d.defaultType, CURVE_STEP);
    EXPECT_EQ(d.viewUpdateMode, 2);
    ASSERT_EQ(d.NumRefs(), 3);
    EXPECT_EQ(d.selection.GetSize(), 3);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(d.Knot(i), nullptr);
    EXPECT_TRUE(d.Shape(0).knots.empty()); // half-loaded: harmless
    // The host then restores the references.
    RemapDir remap;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(d.ReplaceReference(i, remap.CloneRef(c.Knot(i))), REF_SUCCEED);
    EXPECT_EQ(d.GetValue(0, 1.7f), c.GetValue(0, 1.7f));
}

TEST(CurveStore, StopsAtTheFirstChunkThatFails) {
    CurveCtl c;
    c.GetValue(0, 0.5f);
    MemoryLoad load({MakeChunk<float>(0x120, 0.75f), MakeChunk<short>(0x130, 1), MakeChunk<int>(0x11, 1)});
    EXPECT_EQ(c.Load(&load), IO_ERROR);
    EXPECT_EQ(c.YMin(), 0.75f);
    EXPECT_FALSE(c.Enabled());
    EXPECT_EQ(c.GetValue(0, 0.0f), 0.75f); // the cached evaluation is gone all the same
}

TEST(CurveStore, RefusesImpossibleKnotCountsAndPassesOverUnknownChunks) {
    for (const int count : {-1, 101, 1 << 30}) {
        CurveCtl c;
        MemoryLoad load({MakeChunk<int>(0x10, count)});
        EXPECT_EQ(c.Load(&load), IO_ERROR);
        EXPECT_EQ(c.KnotCount(), 2);
    }
    CurveCtl c;
    MemoryLoad load({MakeChunk<int>(0x777, 5), MakeChunk<int>(0x11, 1)});
    EXPECT_EQ(c.Load(&load), IO_OK);
    EXPECT_TRUE(c.Enabled());
}

class CurveIni : public testing::Test {
protected:
    CurveIni() {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        path_ = std::filesystem::temp_directory_path() /
                ("velmar_curve_" + std::to_string(getpid()) + "_" + info->name() + ".ini");
        std::filesystem::remove(path_);
    }
    ~CurveIni() override { std::filesystem::remove(path_); }
    void Write(const std::string& text) { std::ofstream(path_) << text; }
    std::string Text() {
        std::stringstream s;
        s << std::ifstream(path_).rdbuf();
        std::string text = s.str();
        std::erase(text, '\r');
        return text;
    }
    const char* File() { return path_.c_str(); }
    std::filesystem::path path_;
};

TEST_F(CurveIni, WritesItsKeysInOrder) {
    CurveCtl c(0, 1, -1, 1);
    c.AddKnot(0.5f, 0.25f);
    c.SetEnabled(1);
    c.SaveToINI(File(), "ThicknessCurve");
    EXPECT_EQ(Text(), "[ThicknessCurve]\n"
                      "Enabled=1\n"
                      "Knots=3\n"
                      "Ranges=0.000000 1.000000 -1.000000 1.000000\n"
                      "0=1 0.000000 -1.000000\n"
                      "1=0 0.500000 0.250000\n"
                      "2=1 1.000000 1.000000\n");
}

TEST_F(CurveIni, SavesTheCorrectedValues) {
    CurveCtl c;
    c.AddKnot(3.0f, 9.0f); // becomes the last knot, outside the range
    c.SaveToINI(File(), "C");
    EXPECT_NE(Text().find("1=1 0.999000 1.000000\n2=0 1.000000 1.000000\n"), std::string::npos) << Text();
}

TEST_F(CurveIni, ReadsBackWhatItWrote) {
    CurveCtl c(0, 2, 0, 4), d;
    c.AddKnot(0.5f, 3.25f);
    c.AddKnot(1.25f, 1.0f);
    c.SetKnotType(2, CURVE_STEP);
    c.SetEnabled(1);
    d.selection.Set(0);
    c.SaveToINI(File(), "C");
    ASSERT_TRUE(d.LoadFromINI(File(), "C"));
    EXPECT_TRUE(d.Enabled());
    EXPECT_EQ(d.XMax(), 2.0f);
    EXPECT_EQ(d.YMax(), 4.0f);
    EXPECT_EQ(d.selection.GetSize(), 4);
    EXPECT_TRUE(d.selection.IsEmpty());
    for (int i = 0; i <= 40; ++i) EXPECT_EQ(d.GetValue(0, float(i) / 20.0f), c.GetValue(0, float(i) / 20.0f));
}

TEST_F(CurveIni, WithoutAUsableCountNothingChanges) {
    for (const char* text :
         {"[D]\nKnots=2\n", "[C]\nEnabled=1\n", "[C]\nEnabled=1\nKnots=101\n0=0 0 0\n", "[C]\nEnabled=1\nKnots=-1\n",
          "[C]\nEnabled=1\nKnots=many\n", "[C]\nEnabled=1\nKnots=\n"}) {
        Write(text);
        CurveCtl c;
        c.AddKnot(0.5f, 0.75f);
        EXPECT_FALSE(c.LoadFromINI(File(), "C")) << text;
        EXPECT_EQ(c.KnotCount(), 3);
        EXPECT_FALSE(c.Enabled());
        EXPECT_FALSE(c.LoadFromINI("/nonexistent/file", "C"));
    }
}

TEST_F(CurveIni, MissingKeysKeepOldValuesAndMissingKnotsAreCorners) {
    Write("[C]\nKnots=3\n0=2 0 0.5\n2=0 1 0.25\n");
    CurveCtl c(0, 1, 0, 1);
    c.SetEnabled(1);
    ASSERT_TRUE(c.LoadFromINI(File(), "C"));
    EXPECT_TRUE(c.Enabled());
    EXPECT_EQ(c.XMax(), 1.0f);
    ASSERT_EQ(c.KnotCount(), 3);
    EXPECT_EQ(c.Knot(0)->Type(), CURVE_STEP);
    EXPECT_EQ(c.Knot(1)->Type(), CURVE_CORNER);
    EXPECT_EQ(c.Knot(1)->X(0), 0.0f);
    EXPECT_EQ(c.Knot(1)->Y(0), 0.0f);
    EXPECT_EQ(c.Knot(2)->Type(), CURVE_SMOOTH); // a section can make the last knot Smooth
    EXPECT_EQ(c.GetValue(0, 0.5f), 0.0f);       // its run gets no fit: coefficients 0
}

TEST_F(CurveIni, EmptyAndHundredKnotSectionsWork) {
    Write("[C]\nKnots=0\nEnabled=1\n");
    CurveCtl c;
    ASSERT_TRUE(c.LoadFromINI(File(), "C"));
    EXPECT_EQ(c.KnotCount(), 0);
    EXPECT_FALSE(c.Active());
    EXPECT_EQ(c.GetValue(0, 0.5f), 0.0f);
    EXPECT_EQ(c.AddKnot(0.5f, 0.5f), 0);
    c.FlipHorizontal();
    c.DeleteSelected();
    EXPECT_EQ(c.KnotCount(), 1);
    Write("[C]\nKnots=100\n");
    ASSERT_TRUE(c.LoadFromINI(File(), "C"));
    EXPECT_EQ(c.KnotCount(), 100);
    EXPECT_TRUE(std::isfinite(c.GetValue(0, 0.5f)));
}

} // namespace
