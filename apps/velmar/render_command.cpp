// velmar render.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>

#include "commands.h"
#include "core/notify_scope.h"
#include "failure.h"
#include "image/output_file.h"
#include "image/write_picture.h"
#include "interrupt.h"
#include "progress.h"
#include "render/process_usage.h"
#include "scene/frame_list.h"
#include "sdk/properties.h"

namespace velmar {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int64_t kFarthestTime = 2'000'000'000; // ticks

// Failures from here on are failed work, not bad input.
template <class F>
void Work(F&& f) {
    try {
        f();
    } catch (const host::Error& e) {
        throw Failure(kFailedWork, e.what());
    }
}

class RenderRun {
public:
    RenderRun(const RenderOptions& options, Session& session)
        : options_(options), session_(session), settings_(session.scene.render),
          progress_(MakeProgress(options.farm, options.quiet, [&session] { return Strands(session); })) {
        if (options.width >= 0) settings_.width = options.width, settings_.height = options.height;
        if (options.threads >= 0) settings_.threads = options.threads;
        if (!options.crop.Empty()) settings_.crop = options.crop;
        host::CheckFrameSettings(session.core, settings_);
        for (const int frame : options.frames)
            if (std::abs(int64_t(frame) * session.core.GetTicksPerFrame()) > kFarthestTime)
                throw host::Error("frame " + std::to_string(frame) + " is too far away, expected a smaller number");
        session.core.Log()->SetSink([this](int type, const std::string& line) { Log(type, line); });
    }
    ~RenderRun() { session_.core.Log()->SetSink(nullptr); }
    RenderRun(const RenderRun&) = delete;
    RenderRun& operator=(const RenderRun&) = delete;

    int Run() {
        const auto start = Clock::now();
        const host::NotifyScope job(session_.core, NOTIFY_PRE_RENDER, NOTIFY_POST_RENDER);
        for (size_t i = 0; i < options_.frames.size(); ++i)
            if (!RenderOne(int(i))) return kInterrupted;
        wallSeconds_ = std::chrono::duration<double>(Clock::now() - start).count();
        if (!options_.stats.empty()) Work([&] { WriteStats(); });
        return kDone;
    }

private:
    static long Strands(const Session& session) { return session.RendererNumber("statsNumRendStrands"); }

    // Any thread. A quiet run keeps warnings and errors.
    void Log(int type, const std::string& line) const {
        if (options_.quiet && type == SYSLOG_INFO) return;
        if (progress_) return progress_->Log(line);
        std::fprintf(stderr, "%s\n", line.c_str());
    }

    void TellFrame(int index, int frame) {
        if (!progress_) return;
        progress_->SetTask("frame " + std::to_string(frame), int(options_.frames.size()));
        progress_->SetTaskProgress(index);
    }

    // False when the user asked to stop.
    bool RenderOne(int index) {
        host::Core& core = session_.core;
        const int frame = options_.frames[size_t(index)];
        const std::string file = host::FrameFileName(options_.output, frame);
        settings_.time = frame * core.GetTicksPerFrame();
        core.SetTime(settings_.time);
        TellFrame(index, frame);
        SetPhase(Phase::kRendering);
        host::FrameStats stats;
        picture_.framesPerSecond = core.GetFrameRate();
        const auto result = host::RenderFrame(core, settings_, progress_.get(), picture_, stats);
        if (result == host::FrameResult::kAborted || Interrupted()) return false;
        SetPhase(Phase::kWriting);
        Work([&] { host::WritePicture(picture_, file, stats.threads); });
        AddUp(stats);
        if (progress_) progress_->Saved(file);
        return !Interrupted() || index + 1 == int(options_.frames.size());
    }

    // The hair renderer counts anew for every frame.
    void AddUp(const host::FrameStats& stats) {
        cpuSeconds_ += stats.cpuSeconds;
        effectSeconds_ += stats.effectSeconds;
        cameraSamples_ += stats.cameraSamples;
        segments_ += stats.atmosphereSegments;
        threads_ = stats.threads;
        strands_ += Strands(session_);
        hairMs_ += session_.RendererNumber("statsHairTime");
        shadowMs_ += session_.RendererNumber("statsShadowTime");
        hairBytes_ = std::max(hairBytes_, session_.RendererNumber("statsHairMem"));
        ScriptValue value;
        TSTR error;
        IScriptProperties* const script = GetScriptProperties(session_.Renderer());
        if (script && script->GetProperty("fragments", value, error)) fragments_ = fragments_.value_or(0) + value.i;
    }

    void WriteStats() {
        const nlohmann::ordered_json stats = {
            {"strands", strands_},
            {"fragments", fragments_ ? nlohmann::json(*fragments_) : nlohmann::json(nullptr)},
            {"wall_s", wallSeconds_},
            {"hair_s", double(hairMs_) / 1000.0},
            {"shadow_s", double(shadowMs_) / 1000.0},
            {"effects_s", effectSeconds_},
            {"cpu_s", cpuSeconds_},
            {"peak_rss_bytes", host::ProcessPeakRssBytes()},
            {"hair_bytes", hairBytes_},
            {"camera_samples", cameraSamples_},
            {"atmosphere_segments", segments_},
            {"frames", options_.frames.size()},
            {"width", settings_.width},
            {"height", settings_.height},
            {"threads", threads_},
            {"version", VELMAR_VERSION},
        };
        const std::string text = stats.dump(2) + "\n";
        host::OutputFile file(options_.stats);
        file.Write(text.data(), text.size());
        file.Commit();
    }

    const RenderOptions& options_;
    Session& session_;
    host::FrameSettings settings_;
    std::unique_ptr<FrameProgress> progress_;
    host::Picture picture_;
    double wallSeconds_ = 0, cpuSeconds_ = 0, effectSeconds_ = 0;
    uint64_t cameraSamples_ = 0, segments_ = 0;
    int64_t strands_ = 0, hairMs_ = 0, shadowMs_ = 0;
    std::optional<int64_t> fragments_; ///< none when the renderer does not count them
    int hairBytes_ = 0, threads_ = 0;
};

} // namespace

int RunRender(const RenderOptions& options) {
    // What cannot be written is better known before the work than after it.
    host::CheckPictureOutput(host::FrameFileName(options.output, options.frames[0]));
    if (!options.stats.empty()) host::OutputFile probe(options.stats);
    Session session(options.open);
    return RenderRun(options, session).Run();
}

} // namespace velmar
