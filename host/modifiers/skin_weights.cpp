// Skinning: weights and the blend itself.

#include <algorithm>
#include <cmath>

#include "core/parallel.h"
#include "modifiers/skin.h"

namespace host {

namespace {

/// Four floats that the compiler keeps in one register.
using Float4 = float __attribute__((vector_size(16)));

/// A matrix whose rows are registers.
struct WideMatrix {
    Float4 row[4];
};

WideMatrix Wide(const Matrix3& m) {
    WideMatrix w;
    for (int i = 0; i < 4; ++i) w.row[i] = Float4{m.GetRow(i).x, m.GetRow(i).y, m.GetRow(i).z, 0.0f};
    return w;
}

constexpr size_t kLeastVerts = 16384; ///< below twice that many a second thread costs more than it saves

} // namespace

SkinWeights::SkinWeights(int vertices, int bones, const std::vector<SkinInfluence>& influences) {
    const auto counts = [&](const SkinInfluence& i) {
        return i.vertex >= 0 && i.vertex < vertices && i.bone >= 0 && i.bone < bones && i.weight > 0.0f &&
               std::isfinite(i.weight);
    };
    first_.assign(size_t(std::max(vertices, 0)) + 1, 0);
    std::vector<double> sums(first_.size(), 0);
    for (const SkinInfluence& i : influences) {
        if (!counts(i)) continue;
        ++first_[size_t(i.vertex) + 1];
        sums[size_t(i.vertex)] += double(i.weight);
    }
    for (size_t v = 1; v < first_.size(); ++v) first_[v] += first_[v - 1];
    bones_.resize(size_t(first_.back()));
    weights_.resize(bones_.size());
    std::vector<int> fill(first_.begin(), first_.end());
    for (const SkinInfluence& i : influences) {
        if (!counts(i)) continue;
        const size_t at = size_t(fill[size_t(i.vertex)]++);
        bones_[at] = i.bone;
        weights_[at] = float(double(i.weight) / sums[size_t(i.vertex)]);
    }
}

int SkinWeights::MostOfAVertex() const {
    int most = 0;
    for (int v = 0; v < NumVerts(); ++v) most = std::max(most, Count(v));
    return most;
}

Matrix3 SkinWeights::Blend(const std::vector<Matrix3>& bones, int vertex) const {
    if (Count(vertex) == 0) return Matrix3();
    Point3 rows[4];
    for (int i = 0; i < Count(vertex); ++i)
        for (int r = 0; r < 4; ++r) rows[r] += bones[size_t(Bone(vertex, i))].GetRow(r) * Weight(vertex, i);
    return {rows[0], rows[1], rows[2], rows[3]};
}

void SkinWeights::Transform(const std::vector<Matrix3>& bones, std::vector<Point3>& points, int threads) const {
    std::vector<WideMatrix> wide;
    wide.reserve(bones.size());
    for (const Matrix3& m : bones) wide.push_back(Wide(m));
    ParallelRanges(std::min(points.size(), first_.size() - 1), kLeastVerts, threads, [&](size_t begin, size_t end) {
        for (size_t v = begin; v < end; ++v) {
            const int first = first_[v], last = first_[v + 1];
            if (first == last) continue;
            const Point3 p = points[v];
            Float4 sum{};
            for (int i = first; i < last; ++i) {
                const WideMatrix& m = wide[size_t(bones_[size_t(i)])];
                sum += (m.row[0] * p.x + m.row[1] * p.y + m.row[2] * p.z + m.row[3]) * weights_[size_t(i)];
            }
            points[v] = {sum[0], sum[1], sum[2]};
        }
    });
}

} // namespace host
