// How long a scene with one large mesh takes to load, and to prepare for a picture.
//
// usage: load_bench write FILE.obj|FILE.ply     writes a wavy square of a million triangles, smooth, with mapping
// (.obj)
//        load_bench load FILE                   prints one JSON object, medians of three

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "render/frame.h"
#include "scene/loader.h"

namespace {

using namespace host;
using Clock = std::chrono::steady_clock;

constexpr int kSide = 708; // squares a side: 2 x 708^2 triangles

float Height(int x, int y) {
    return 0.05f * std::sin(float(x) * 0.05f) * std::cos(float(y) * 0.04f);
}

void WriteObj(std::FILE* f) {
    for (int y = 0; y <= kSide; ++y)
        for (int x = 0; x <= kSide; ++x)
            std::fprintf(f, "v %.6f %.6f %.6f\n", double(x) / kSide - 0.5, double(y) / kSide - 0.5,
                         double(Height(x, y)));
    for (int y = 0; y <= kSide; ++y)
        for (int x = 0; x <= kSide; ++x) std::fprintf(f, "vt %.6f %.6f\n", double(x) / kSide, double(y) / kSide);
    std::fprintf(f, "s 1\n");
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            const int a = y * (kSide + 1) + x + 1, b = a + 1, c = b + kSide + 1, d = c - 1;
            std::fprintf(f, "f %d/%d %d/%d %d/%d\nf %d/%d %d/%d %d/%d\n", a, a, b, b, c, c, a, a, c, c, d, d);
        }
}

void WritePly(std::FILE* f) {
    std::fprintf(f,
                 "ply\nformat binary_little_endian 1.0\nelement vertex %d\nproperty float x\nproperty float y\n"
                 "property float z\nelement face %d\nproperty list uchar int vertex_indices\nend_header\n",
                 (kSide + 1) * (kSide + 1), 2 * kSide * kSide);
    for (int y = 0; y <= kSide; ++y)
        for (int x = 0; x <= kSide; ++x) {
            const float p[] = {float(x) / kSide - 0.5f, float(y) / kSide - 0.5f, Height(x, y)};
            std::fwrite(p, sizeof p, 1, f);
        }
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            const int a = y * (kSide + 1) + x, b = a + 1, c = b + kSide + 1, d = c - 1;
            for (const auto& corners : {std::vector<int>{a, b, c}, std::vector<int>{a, c, d}}) {
                std::fputc(3, f);
                std::fwrite(corners.data(), sizeof(int), 3, f);
            }
        }
}

int Write(const std::string& path) {
    std::FILE* const f = std::fopen(path.c_str(), "wb");
    if (!f) return 1;
    path.ends_with(".ply") ? WritePly(f) : WriteObj(f);
    return std::fclose(f) == 0 ? 0 : 1;
}

double SecondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

int Load(const std::string& path) {
    const std::string toml = path + ".toml";
    std::ofstream(toml) << "[scene]\nimport = ['" << path << "']\n[render]\nwidth = 320\nheight = 180\n"
                        << "[[camera]]\nname = 'cam'\nposition = [0.0, -1.0, 0.6]\ntarget = [0.0, 0.0, 0.0]\n"
                        << "[[light]]\nname = 'key'\nposition = [1.0, -1.0, 2.0]\nshadows = true\n";
    std::vector<double> load, picture;
    int faces = 0;
    for (int i = 0; i < 3; ++i) {
        Core core;
        core.SetQuietMode(true);
        core.Log()->SetSink([](int, const std::string&) {});
        const Core::Scope current(core);
        RegisterRenderClasses(core);
        const auto start = Clock::now();
        const LoadedScene scene = LoadScene(core, toml);
        load.push_back(SecondsSince(start));
        Picture out;
        FrameStats stats;
        RenderFrame(core, scene.render, nullptr, out, stats);
        picture.push_back(stats.wallSeconds);
        faces = static_cast<TriObject*>(scene.meshes.at(0).node->EvalWorldState(0).obj)->mesh.getNumFaces();
    }
    std::sort(load.begin(), load.end());
    std::sort(picture.begin(), picture.end());
    std::printf("{\"faces\": %d, \"load_s\": %.3f, \"load_faces_per_s\": %.0f, \"picture_s\": %.3f, \"bytes\": %ju}\n",
                faces, load[1], faces / load[1], picture[1], std::uintmax_t(std::filesystem::file_size(path)));
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc == 3 && std::strcmp(argv[1], "write") == 0) return Write(argv[2]);
        if (argc == 3 && std::strcmp(argv[1], "load") == 0) return Load(argv[2]);
    } catch (const host::Error& e) {
        std::fprintf(stderr, "load_bench: %s\n", e.what());
        return 1;
    }
    std::fprintf(stderr, "usage: load_bench write FILE.obj|FILE.ply, load_bench load FILE\n");
    return 1;
}
