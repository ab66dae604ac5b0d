// The built library in a process of its own that fails inside of it.

#include <cstdio>

#include "load_test.h"
#include "sdk/atmos.h"
#include "sdk/shadecontext.h"

namespace fs = std::filesystem;

namespace {

/// A camera sample that fails when it is asked for its pixel.
class BadSample : public ShadeContext {
public:
    TimeValue CurTime() override { return 0; }
    Point3 V() override { return {0, 0, -1}; }
    Point3 P() override { return {}; }
    Point3 PObj() override { return {}; }
    IPoint2 ScreenCoord() override {
        asm volatile("movl $1, 0x10" ::: "memory");
        return {};
    }
};

class BadContext : public RenderGlobalContext {
public:
    BadContext() {
        devWidth = devHeight = 16;
        farRange = 100;
    }
    int NumLights() override { return 0; }
    ObjLightDesc* GetLight(int) override { return nullptr; }
};

/// Ends the process with 0 when the failing sample had no hair.
void FailInShade(const std::string& library) {
    std::string error;
    bool unchanged = false;
    {
        host::Core loading;
        host::Core::Scope scope(loading);
        if (!loading.Plugins().Load(library, error)) std::exit(1);
        loading.CreateInstance(0x1010, Class_ID(0x790b49f8, 0x74687d62)); // fur, which brings the renderer along
        Atmospheric* renderer = loading.GetAtmospheric(0);
        BadContext context;
        BadSample sample;
        sample.globContext = &context;
        Color color(0.25f, 0.5f, 0.75f), trans(1, 1, 1);
        renderer->RenderBegin(0);
        renderer->Shade(sample, {0, 0, 10}, {0, 0, -10}, color, trans);
        renderer->RenderEnd(0);
        unchanged = color == Color(0.25f, 0.5f, 0.75f) && trans == Color(1, 1, 1);
    }
    std::exit(unchanged ? 0 : 2);
}

} // namespace

TEST_F(LoadTest, ACrashIsReportedAndLeavesADatedCopyOfTheLog) {
    EXPECT_EXIT(FailInShade(library), testing::ExitedWithCode(0), "");
    const std::string log = LogText();
    const size_t report = log.find("Exception code: C0000005 ACCESS_VIOLATION\r\nWrite to address 00000010\r\n");
    ASSERT_NE(report, std::string::npos) << log;
    const size_t message =
        log.find("\r\nMessage: in HairRender::Shade\r\nMAX Release: 13900\r\nVersion: 1.7.0.82 For MAX "
                 "2010 (64 bit)\r\nRender threads: ",
                 report);
    EXPECT_NE(message, std::string::npos) << log;
    EXPECT_NE(log.find("========================\r\nModule list:\r\n", message), std::string::npos);
    unsigned long long allocated = 0, peak = 0;
    const size_t amounts = log.find("\r\nAllocated memory: ", message);
    ASSERT_NE(amounts, std::string::npos) << log;
    int length = 0;
    EXPECT_EQ(std::sscanf(log.c_str() + amounts, "\r\nAllocated memory: %llu, allocated peak: %llu\r\n\r\n%n",
                          &allocated, &peak, &length),
              2);
    EXPECT_LE(allocated, peak);
    // No profiler: an empty line, and the thread without a depth.
    EXPECT_EQ(log.find("\r\n\r\n========================\r\nThread: ", amounts + 2), log.find("\r\n", amounts + 2));
    EXPECT_EQ(log.find("Thread stack: ", message), std::string::npos);
    EXPECT_NE(log.find("HairRender::Shade(", message), std::string::npos) << log;
    // The attach wrote it; the report does not repeat it.
    EXPECT_EQ(log.find("System information:"), log.rfind("System information:"));
    EXPECT_TRUE(log.ends_with("velmar log end\r\n"));
    int copies = 0;
    for (const auto& entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        int n[6] = {}, length = 0;
        if (std::sscanf(name.c_str(), "velmarCrash_%4d-%2d-%2d_%2d-%2d-%2d.log%n", n, n + 1, n + 2, n + 3, n + 4, n + 5,
                        &length) != 6)
            continue;
        EXPECT_EQ(size_t(length), name.size());
        EXPECT_EQ(TextOf(name), log);
        ++copies;
    }
    EXPECT_EQ(copies, 1);
}
