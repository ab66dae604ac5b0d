#pragma once
// Values of the along-length curves and Bezier weights that depend on the run only.

#include <vector>

#include "Base/CreateHair/StrandContext.h"

/// Tables of one thread. Those of curves are filled on demand; they hold exactly what the curve would answer.
struct StrandContext::Tables {
    explicit Tables(const GenerationRun& run);

    /// Fade of control points k = 0..3n of a strand with `n` segments along the clumping curve; null without a curve.
    const float* ClumpFade(int n);
    /// Curl radius factor and turns factor by point for `count` points (u = i / (count - 1)); null when the curve is
    /// missing or the strand is too fine to tabulate.
    const float* CurlRadius(int count) { return CurveTable(curlRadius, pid_curve_curlRadius, count); }
    const float* CurlTurns(int count) { return CurveTable(curlTurns, pid_curve_curlTurns, count); }

    /// Bezier weights of the inner points j = 1..steps-1 of a full segment, one array a weight, padded to vectors.
    std::vector<float> weight[4], derivative[3];

private:
    // Strands with more points than this evaluate their curves point by point.
    static constexpr int kMaxTabulated = 512;
    struct PerCount {
        std::vector<std::vector<float>> byCount;
    };
    const float* CurveTable(PerCount& table, int pid, int count);

    const GenerationRun& run_;
    PerCount clumpFade, curlRadius, curlTurns;
};
