#pragma once
// What is checked of the animation curves of .fbx files.

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// Collects the keys of one curve after the other. Where an angle changes by 180 degrees or more from key to key,
/// Assimp puts keys in between, less than 180 apart, at whole ticks: without end when there are too few ticks, and many
/// for large changes. Which curves are angles is not known here; other ones do not change that fast.
class FbxCurves {
public:
    explicit FbxCurves(const std::string& file) : file_(file) {}
    /// A new curve begins.
    void Begin();
    void AddTime(int64_t ticks) { times_.push_back(ticks); }
    void AddValue(double value) { values_.push_back(value); }
    /// Throws Error when the last curve, or all of them together, would keep Assimp busy for too long.
    void Finish();

private:
    const std::string& file_;
    std::vector<int64_t> times_;
    std::vector<double> values_;
    double between_ = 0; ///< keys that Assimp adds in all curves
};

} // namespace host
