// Skinned vertices a second, for 4 and 8 bones a vertex, and a whole evaluation of a skinned node.

#include <benchmark/benchmark.h>

#include <cmath>

#include "core/controllers.h"
#include "core/core.h"
#include "core/euler.h"
#include "modifiers/skin.h"
#include "shapes/primitives.h"

namespace {

constexpr int kBones = 64;

// Weights of a strip whose vertices follow the `most` bones that are nearest along it.
host::SkinWeights Weights(const Mesh& mesh, int most) {
    std::vector<host::SkinInfluence> influences;
    for (int v = 0; v < mesh.getNumVerts(); ++v) {
        const float at = (mesh.verts[size_t(v)].x + 0.5f) * float(kBones - most);
        for (int i = 0; i < most; ++i) influences.push_back({v, int(at) + i, 1.0f / (1.0f + float(i))});
    }
    return host::SkinWeights(mesh.getNumVerts(), kBones, influences);
}

void Blend(benchmark::State& state) {
    Mesh mesh = host::MakePlane(1, 1, 500);
    const host::SkinWeights weights = Weights(mesh, int(state.range(0)));
    std::vector<Matrix3> bones;
    for (int i = 0; i < kBones; ++i) bones.push_back(host::EulerMatrix({0, float(i) * 0.01f, 0}));
    for (auto _ : state) {
        weights.Transform(bones, mesh.verts, int(state.range(1)));
        benchmark::DoNotOptimize(mesh.verts.data());
    }
    state.SetItemsProcessed(state.iterations() * mesh.getNumVerts());
}
BENCHMARK(Blend)
    ->ArgNames({"bones", "threads"})
    ->ArgsProduct({{1, 4, 8}, {1, 2}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

// Every frame of a skinned node: the bones move, the vertices are copied from below and blended.
void Evaluate(benchmark::State& state) {
    host::Core core;
    auto* const tri = new TriObject;
    tri->mesh = host::MakePlane(1, 1, 500);
    host::Node* const node = core.CreateNode("skinned", tri);
    host::SkinData data;
    for (int i = 0; i < kBones; ++i) {
        host::Node* const bone = core.CreateNode("bone");
        auto* const tm = core.Adopt(new host::PrsControl);
        static_cast<host::PositionControl*>(tm->Position())->SetKey(0, {0, 0, 0});
        static_cast<host::PositionControl*>(tm->Position())->SetKey(1000000, {0, 0, float(i)});
        bone->SetTMController(tm);
        data.bones.push_back({bone, Matrix3()});
    }
    data.weights = Weights(tri->mesh, int(state.range(0)));
    node->AddModifier(core.Adopt(new host::SkinModifier(std::move(data))));
    TimeValue t = 0;
    for (auto _ : state) benchmark::DoNotOptimize(node->EvalWorldState(++t).obj);
    state.SetItemsProcessed(state.iterations() * tri->mesh.getNumVerts());
}
BENCHMARK(Evaluate)->ArgName("bones")->Arg(4)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
