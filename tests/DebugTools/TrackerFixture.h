// A tracker of the test's own, with its log and a raw allocator that can be watched and made to fail.
#pragma once

#include "DebugTools/MemTracker.h"
#include "DebugTools/Tracer.h"
#include "TestFiles.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

namespace tracker_test {

struct RawWatch {
    int requests = 0, frees = 0, live = 0;
    int left = -1; ///< requests until they fail; -1 never
    size_t lastSize = 0;
    unsigned char* last = nullptr;
    size_t inspectSize = 0; ///< bytes kept of the next block that is freed
    std::string inspected;
};
inline RawWatch raw;
inline std::mutex rawMutex; ///< while threads allocate

inline const RawAllocator kWatched = {[](size_t size) -> void* {
                                          const std::lock_guard guard(rawMutex);
                                          ++raw.requests;
                                          if (raw.left == 0) return nullptr;
                                          if (raw.left > 0) --raw.left;
                                          ++raw.live;
                                          raw.lastSize = size;
                                          raw.last = static_cast<unsigned char*>(std::malloc(size));
                                          return raw.last;
                                      },
                                      [](void* memory) {
                                          const std::lock_guard guard(rawMutex);
                                          ++raw.frees, --raw.live;
                                          raw.inspected.assign(static_cast<char*>(memory), raw.inspectSize);
                                          raw.inspectSize = 0;
                                          std::free(memory);
                                      }};

inline void* AllocAt(MemTracker* tracker, size_t size, int line, const char* file) {
    SetSourceLocation(tracker, line, file);
    return memAlloc(tracker, size);
}

class TrackerTest : public testing::Test {
protected:
    TrackerTest() {
        raw = RawWatch();
        tracker = CreateMemTracker(Setup());
    }
    ~TrackerTest() override { DestroyMemTracker(tracker); }

    MemTrackerSetup Setup() const {
        MemTrackerSetup setup;
        setup.log = log.log;
        setup.raw = &kWatched;
        return setup;
    }
    MemTracker* Threaded() const {
        MemTrackerSetup setup = Setup();
        setup.threads = OsThreadOps();
        return CreateMemTracker(setup);
    }
    Tracer* MakeProfiler() const {
        TracerSetup setup;
        setup.log = log.log;
        Tracer* profiler = tracer::Create(setup);
        tracer::SetMode(profiler, kTracerProfile);
        return profiler;
    }
    MemTracker* Profiled(Tracer* profiler) const {
        MemTrackerSetup setup = Setup();
        setup.profiler = profiler;
        return CreateMemTracker(setup);
    }
    static std::string Address(const void* block) {
        std::ostringstream text;
        text << "0x" << std::hex << reinterpret_cast<uintptr_t>(block);
        return text.str();
    }
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        std::istringstream text(log.Text());
        for (std::string line; std::getline(text, line);) lines.push_back(line.substr(0, line.find('\r')));
        return lines;
    }
    /// The id column of a list of leaks.
    static std::vector<uint32_t> IdsIn(const std::string& report) {
        std::vector<uint32_t> ids;
        std::istringstream text(report);
        std::string line;
        for (int i = 0; std::getline(text, line); ++i)
            if (i >= 2) ids.push_back(static_cast<uint32_t>(std::stoul(line.substr(line.find('\t') + 1))));
        std::sort(ids.begin(), ids.end());
        return ids;
    }
    void ExpectOneAssert() const {
        const std::string text = log.Text();
        EXPECT_NE(text.find(" DebugTools/src/memMgr/TrackedBlocks.cpp("), std::string::npos) << text;
        EXPECT_TRUE(text.ends_with("): assert failed\r\n")) << text;
        EXPECT_EQ(text.find("assert failed"), text.rfind("assert failed")) << text;
    }

    TestLog log;
    MemTracker* tracker = nullptr;
};

} // namespace tracker_test
