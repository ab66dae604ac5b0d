#pragma once
// Sinks that keep what a rasteriser draws.

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

#include "HRB_Thick/HRB_Thick.h"

/// One drawn sample.
struct Drawn {
    int x, y;
    float z, coverage, opacity;
    Point3 color;
    Point2 velocity;
    friend bool operator==(const Drawn&, const Drawn&) = default;
};

struct KeepSink {
    static constexpr bool kWantsVelocity = true;
    std::vector<Drawn> image, shadow;
    void InsertImage(int x, int y, float z, const Point3& color, float coverage, float opacity, Point2 velocity) {
        image.push_back({x, y, z, coverage, opacity, color, velocity});
    }
    void InsertShadow(int x, int y, float z, float opacity, float coverage) {
        shadow.push_back({x, y, z, coverage, opacity, {}, {}});
    }
    float TotalCoverage() const {
        double sum = 0;
        for (const Drawn& d : image) sum += d.coverage;
        return float(sum);
    }
    /// Coverage by pixel, summed.
    std::map<std::pair<int, int>, float> ByPixel() const {
        std::map<std::pair<int, int>, float> pixels;
        for (const Drawn& d : image) pixels[{d.x, d.y}] += d.coverage;
        return pixels;
    }
};

using KeepThick = BasicThick<KeepSink>;

inline StrandVertex Vertex(float x, float y, float z, float width, float opacity = 1.0f, Point3 color = {1, 1, 1}) {
    StrandVertex v;
    v.x = x, v.y = y, v.z = z, v.width = width;
    v.opacity[0] = opacity;
    v.color[0] = color;
    return v;
}

inline ThinVertex Thin(float x, float y, float z, float width, float opacity = 1.0f, Point3 color = {1, 1, 1}) {
    return {x, y, z, width, opacity, {}, color};
}

inline RasterTarget Target(const PixelRect& rect, const LineFilter* filter, float boxSize = 1.0f) {
    static const LineFilterCone fallback(1.0f);
    return {rect, filter, boxSize, &fallback};
}

/// Draws a strand with the wide method.
template <class Thick>
void DrawStrand(Thick& thick, const std::vector<StrandVertex>& strand, PixelOperation op = PixelOperation::Image) {
    thick.Begin(strand[0]);
    for (size_t i = 1; i < strand.size(); ++i) thick.Add(strand[i], op);
    thick.End(op);
}

template <class Thick>
void DrawStrand(Thick& thick, const std::vector<ThinVertex>& strand, PixelOperation op = PixelOperation::Image) {
    thick.BeginThin(strand[0]);
    for (size_t i = 1; i < strand.size(); ++i) thick.AddThin(strand[i], op);
}
