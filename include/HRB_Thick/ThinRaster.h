#pragma once
// The thin method: an exact walk through the pixel grid. Every crossed pixel gets the strand's area inside it.
//
// Every crossing is computed from the segment's start, never from the crossing before, and the way from the start to
// the bucket is jumped: so a pixel gets the same sample whatever the bucket is, at a cost that does not depend on what
// lies outside it.

#include <algorithm>

#include "HRB_Thick/StrandVertex.h"

namespace RasterDetail {

/// The walk of one segment through the cells of the grid.
class ThinWalk {
public:
    ThinWalk(const ThinVertex& a, const ThinVertex& b) : ax_(a.x), ay_(a.y) {
        x = int(std::floor(a.x)), y = int(std::floor(a.y));
        // A segment inside one column (or row) never crosses to another.
        if (x != int(std::floor(b.x))) dx_ = b.x - a.x;
        if (y != int(std::floor(b.y))) dy_ = b.y - a.y;
        sx_ = (dx_ > 0.0f) - (dx_ < 0.0f);
        sy_ = (dy_ > 0.0f) - (dy_ < 0.0f);
        StartAxis(sx_, a.x, x, nextX_);
        StartAxis(sy_, a.y, y, nextY_);
    }

    int x, y;         ///< the cell
    float tEnter = 0; ///< where the segment enters it, 0..1

    /// Jumps to where the walk reaches the bucket's columns and rows. False when it never does.
    bool Enter(const PixelRect& r) {
        if ((sx_ == 0 && (x < r.x0 || x >= r.x1)) || (sy_ == 0 && (y < r.y0 || y >= r.y1))) return false;
        if (const int n = StepsTo(x, sx_, r.x0, r.x1)) JumpX(n);
        if (tEnter >= 1.0f) return false;
        if (const int n = StepsTo(y, sy_, r.y0, r.y1)) JumpY(n);
        tX_ = CrossX(nextX_);
        tY_ = CrossY(nextY_);
        return tEnter < 1.0f;
    }
    /// Where the segment leaves the cell, at most 1.
    float Exit() const { return std::min(1.0f, std::min(tX_, tY_)); }
    /// True when the walk has left the bucket for good.
    bool HasLeft(const PixelRect& r) const {
        return (sx_ < 0 && x < r.x0) || (sy_ < 0 && y < r.y0) || (sx_ > 0 && x >= r.x1) || (sy_ > 0 && y >= r.y1);
    }
    /// On to the next cell; a crossing of a corner goes in y first.
    void Step() {
        if (tY_ <= tX_) {
            tEnter = tY_;
            y += sy_;
            nextY_ += sy_;
            tY_ = CrossY(nextY_);
        } else {
            tEnter = tX_;
            x += sx_;
            nextX_ += sx_;
            tX_ = CrossX(nextX_);
        }
    }

private:
    /// intended: a start exactly on a grid line belongs to the cell below it unless the walk goes upward.
    static void StartAxis(int step, float start, int& cell, int& next) {
        if (step > 0) {
            next = cell + 1;
            return;
        }
        if (start == float(cell)) --cell;
        next = cell;
    }
    float CrossX(int boundary) const { return sx_ ? (float(boundary) - ax_) / dx_ : 2.0f; }
    float CrossY(int boundary) const { return sy_ ? (float(boundary) - ay_) / dy_ : 2.0f; }
    /// Steps from `cell` to the first one within lo..hi - 1; 0 when it is inside or the walk does not lead there.
    static int StepsTo(int cell, int step, int lo, int hi) {
        if (step > 0 && cell < lo) return lo - cell;
        if (step < 0 && cell >= hi) return cell - (hi - 1);
        return 0;
    }
    void JumpX(int steps) {
        x += steps * sx_;
        nextX_ += steps * sx_;
        tEnter = CrossX(nextX_ - sx_);
        if (sy_ == 0 || tEnter >= 1.0f) return;
        // All crossings in y that come before this one, or at the same time.
        const int first = nextY_;
        GuessY(first);
        while (CrossY(nextY_) <= tEnter) StepY(1);
        while (nextY_ != first && CrossY(nextY_ - sy_) > tEnter) StepY(-1);
    }
    void JumpY(int steps) {
        y += steps * sy_;
        nextY_ += steps * sy_;
        tEnter = CrossY(nextY_ - sy_);
        if (sx_ == 0 || tEnter >= 1.0f) return;
        // All crossings in x that come before this one; at a corner x comes after y.
        const int first = nextX_;
        GuessX(first);
        while (CrossX(nextX_) < tEnter) StepX(1);
        while (nextX_ != first && CrossX(nextX_ - sx_) >= tEnter) StepX(-1);
    }
    void StepX(int n) { x += n * sx_, nextX_ += n * sx_; }
    void StepY(int n) { y += n * sy_, nextY_ += n * sy_; }
    void GuessX(int first) {
        const int n = (int(std::floor(ax_ + tEnter * dx_)) - first) * sx_;
        if (n > 0) StepX(n);
    }
    void GuessY(int first) {
        const int n = (int(std::floor(ay_ + tEnter * dy_)) - first) * sy_;
        if (n > 0) StepY(n);
    }

    float ax_, ay_;
    float dx_ = 0, dy_ = 0;
    int sx_, sy_;
    int nextX_, nextY_;     ///< grid lines crossed next
    float tX_ = 2, tY_ = 2; ///< and where; 2 never
};

template <PixelOperation Op, class Sink>
inline void EmitThin(const ThinVertex& a, const ThinVertex& b, const ThinWalk& walk, float tExit, float length,
                     Sink& sink) {
    const float t = (walk.tEnter + tExit) / 2.0f;
    const float z = Mix(a.z, b.z, t), opacity = Mix(a.opacity, b.opacity, t);
    const float w = std::min(1.0f, Mix(a.width, b.width, t));
    const float coverage = std::min(1.0f, (tExit - walk.tEnter) * length * w);
    if constexpr (Op == PixelOperation::Shadow) {
        sink.InsertShadow(walk.x, walk.y, z, opacity, coverage);
    } else {
        Point2 velocity;
        if constexpr (Sink::kWantsVelocity) velocity = Mix(a.velocity, b.velocity, t);
        sink.InsertImage(walk.x, walk.y, z, Mix(a.color, b.color, t), coverage, opacity, velocity);
    }
}

/// True when the segment's bounding box comes within a pixel of the bucket; a start on a grid line may shift its cell.
inline bool ThinTouches(const ThinVertex& a, const ThinVertex& b, const PixelRect& r) {
    return std::max(a.x, b.x) >= float(r.x0 - 1) && std::min(a.x, b.x) <= float(r.x1 + 1) &&
           std::max(a.y, b.y) >= float(r.y0 - 1) && std::min(a.y, b.y) <= float(r.y1 + 1);
}

/// Draws the segment from `a` to `b` into the bucket.
template <PixelOperation Op, class Sink>
inline void DrawThin(const PixelRect& bucket, const ThinVertex& a, const ThinVertex& b, Sink& sink) {
    if (!ThinTouches(a, b, bucket) || !IsDrawable(a) || !IsDrawable(b)) return;
    const float dx = b.x - a.x, dy = b.y - a.y;
    const float length = std::sqrt(dx * dx + dy * dy);
    ThinWalk walk(a, b);
    if (!walk.Enter(bucket)) return;
    while (walk.tEnter < 1.0f) {
        const float tExit = walk.Exit();
        if (bucket.Contains(walk.x, walk.y))
            EmitThin<Op>(a, b, walk, tExit, length, sink);
        else if (walk.HasLeft(bucket))
            return;
        walk.Step();
    }
}

} // namespace RasterDetail
