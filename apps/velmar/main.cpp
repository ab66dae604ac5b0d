// The command line.

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <new>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "commands.h"
#include "core/error.h"
#include "failure.h"
#include "interrupt.h"
#include "scene/frame_list.h"
#include "scene/scene_docs.h"

namespace velmar {

namespace {

int Fail(int status, const std::string& text) {
    std::fprintf(stderr, "velmar: error: %s\n", host::OneLine(text).c_str());
    return status;
}

class CommandLine {
public:
    CommandLine() {
        app_.require_subcommand(1);
        app_.set_version_flag("--version", "velmar " VELMAR_VERSION);
        app_.failure_message([](const CLI::App*, const CLI::Error& e) {
            return std::string("velmar: error: ").append(host::OneLine(e.what())).append("\n");
        });
        AddRender();
        AddInfo();
        AddParams();
        AddDocs();
        for (const char* const name : {"grow", "guides", "simulate", "run"}) AddLater(name);
    }

    int Run(int argc, char** argv) {
        try {
            app_.parse(argc, argv);
        } catch (const CLI::ParseError& e) {
            // Help and version are no errors; everything else is a wrong use.
            return app_.exit(e) == 0 ? kDone : kUsage;
        }
        return command_();
    }

private:
    CLI::App* Command(const char* name, const char* text) { return app_.add_subcommand(name, text); }

    static void AddOpenOptions(CLI::App* command, SceneOptions& open) {
        command->add_option("SCENE", open.scene, "scene description (.toml)")->required();
        command->add_option("--plugin", open.plugin, "plug-in library (default: velmar.dlu beside this program)");
        command->add_option("--set", open.set, "sets a parameter: OBJECT.PARAM=VALUE (repeatable)")
            ->type_size(1)
            ->allow_extra_args(false);
    }

    void AddRender() {
        CLI::App* const c = Command("render", "renders pictures");
        RenderOptions& o = render_;
        AddOpenOptions(c, o.open);
        c->add_option("-o,--output", o.output,
                      "picture, .png or .exr; %04d, a run of # (as many digits) or a single # (four digits) takes the "
                      "frame")
            ->required();
        auto* const frame = c->add_option("-f,--frame", frames_, "frame to render (default 0)");
        auto* const frames =
            c->add_option("--frames", frames_, "frames to render: A, A-B or A-BxS, separated by commas");
        frames->excludes(frame);
        c->add_option("--size", size_, "picture size, WxH");
        c->add_option("--crop", crop_, "part of the picture, X0,Y0,X1,Y1 in pixels, without column X1 and line Y1");
        c->add_option("--threads", o.threads, "threads, 0 for as many as there are processors")
            ->check(CLI::NonNegativeNumber);
        c->add_option("--stats", o.stats, "writes numbers about the render, as JSON");
        c->add_flag("--quiet", o.quiet, "no progress and no line for every frame; warnings and errors stay");
        c->add_option("--progress", progress_, "'farm' prints ALF_PROGRESS lines")->check(CLI::IsMember({"farm"}));
        c->callback([this] { FinishRender(); });
    }

    // Turns texts into values; what is wrong in them is a wrong use.
    void FinishRender() {
        RenderOptions& o = render_;
        try {
            if (!frames_.empty()) o.frames = host::ParseFrameList(frames_);
        } catch (const host::Error& e) {
            throw CLI::ValidationError(e.what());
        }
        int used = 0;
        if (!size_.empty() && (std::sscanf(size_.c_str(), "%9dx%9d%n", &o.width, &o.height, &used) != 2 ||
                               size_t(used) != size_.size() || o.width < 0 || o.height < 0))
            throw CLI::ValidationError("--size '" + size_ + "', expected WxH");
        if (!crop_.empty()) ReadCrop(o.crop);
        if (o.frames.size() > 1 && !host::HasFramePlaceholder(o.output))
            throw CLI::ValidationError("-o '" + o.output + "' has no place for the frame, expected #### or %04d in it");
        o.farm = progress_ == "farm";
        command_ = [this] { return RunRender(render_); };
    }

    void ReadCrop(host::PictureRegion& crop) const {
        int used = 0;
        if (std::sscanf(crop_.c_str(), "%9d,%9d,%9d,%9d%n", &crop.x0, &crop.y0, &crop.x1, &crop.y1, &used) != 4 ||
            size_t(used) != crop_.size() || crop.Empty())
            throw CLI::ValidationError("--crop '" + crop_ + "', expected X0,Y0,X1,Y1 with X0 < X1 and Y0 < Y1");
    }

    void AddInfo() {
        CLI::App* const c = Command("info", "lists nodes, meshes and hair objects");
        AddOpenOptions(c, info_.open);
        c->add_flag("--keys", info_.keys, "prints everything that changes over time with its keys");
        c->callback([this] { command_ = [this] { return RunInfo(info_); }; });
    }

    void AddParams() {
        CLI::App* const c = Command("params", "shows parameters");
        AddOpenOptions(c, params_.open);
        c->add_option("--object", params_.object, "object (default: all)");
        auto* const list = c->add_flag("--list", params_.list, "prints the table of parameters");
        auto* const save = c->add_option("--save", file_, "writes a parameter file (not there yet)");
        auto* const load = c->add_option("--load", file_, "reads a parameter file (not there yet)");
        c->callback([this, list, save, load] {
            if (list->count() + save->count() + load->count() != 1)
                throw CLI::ValidationError("expected one of --list, --save and --load");
            command_ = [this]() -> int {
                if (!params_.list) throw Failure(kFailedWork, "parameter files are not there yet");
                return RunParams(params_);
            };
        });
    }

    void AddDocs() {
        CLI::App* const c = Command("docs", "prints reference pages")->group("");
        auto* const scene = c->add_flag("--scene", sceneDocs_, "the scene description");
        scene->required();
        c->callback([this] {
            command_ = [] {
                std::fputs(host::SceneReference().c_str(), stdout);
                return int(kDone);
            };
        });
    }

    void AddLater(const char* name) {
        CLI::App* const c = Command(name, "(not there yet)");
        c->allow_extras();
        c->callback([this, name] {
            command_ = [name]() -> int {
                throw Failure(kFailedWork, std::string("the command '") + name + "' is not there yet");
            };
        });
    }

    CLI::App app_{"velmar: hair and fur", "velmar"};
    std::function<int()> command_;
    RenderOptions render_;
    InfoOptions info_;
    ParamsOptions params_;
    bool sceneDocs_ = false;
    std::string frames_, size_, crop_, progress_, file_;
};

int Main(int argc, char** argv) {
    try {
        CatchInterrupts();
        const int status = CommandLine().Run(argc, argv);
        if (std::fflush(stdout) != 0 || std::ferror(stdout))
            return Fail(kFailedWork, "standard output cannot be written");
        return status;
    } catch (const Failure& e) {
        return Fail(e.status, e.what());
    } catch (const host::Error& e) {
        return Fail(kBadInput, e.what());
    } catch (const std::bad_alloc&) {
        return Fail(kFailedWork, "out of memory");
    } catch (const std::exception& e) {
        return Fail(kFailedWork, e.what());
    }
}

} // namespace

} // namespace velmar

int main(int argc, char** argv) {
#if defined(__GLIBC__)
    // A picture's large arrays come and go bucket by bucket: they are given back to the system at once, not kept.
    mallopt(M_MMAP_THRESHOLD, 524288);
#endif
    return velmar::Main(argc, argv);
}
