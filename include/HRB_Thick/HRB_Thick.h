#pragma once
// The strand rasteriser: polylines of projected vertices become pixel samples.

#include "Base/HUtil/ThreadVector.h"
#include "HRB_Thick/ThinRaster.h"
#include "HRB_Thick/WideRaster.h"
#include "HRendBuf/SampleRuns.h"

/// Draws strands into `Sink`, which has InsertImage(x, y, z, color, coverage, opacity, velocity), InsertShadow(x, y, z,
/// opacity, coverage) and the constant kWantsVelocity; and, if it likes, InsertLanes, which takes image samples of four
/// pixels at a time (see SampleWriter). One instance belongs to one thread.
///
/// A strand is Begin, any number of Add, End. A segment is drawn when the vertex behind it is known, because both its
/// ends are cut by a line: perpendicular to the segment at the strand's root and tip, which fade over the filter's
/// radius; through the joint and perpendicular to the chord of both neighbours elsewhere, where segments meet hard.
template <class Sink>
class BasicThick {
public:
    BasicThick(int threadIndex, Sink& sink) : threadIndex_(threadIndex), sink_(sink) {}
    int ThreadIndex() const { return threadIndex_; }

    /// Bucket and filter for what follows; not inside a strand.
    void SetTarget(const RasterTarget& target) { target_ = target; }
    const RasterTarget& Target() const { return target_; }
    /// Samples a vertex holds across the strand (1 .. kMaxWidthSamples), and whether they are averaged over a pixel.
    /// Not inside a strand.
    void SetWidthSamples(int samples, bool filtered) { sampler_.samples = samples, sampler_.filtered = filtered; }

    /// Starts a strand of the wide method. A segment that was left pending is finished as the strand's last one, in the
    /// image pass whatever the pass is: call End before.
    void Begin(const StrandVertex& v);
    /// Adds a vertex; draws the segment before it. Always true.
    bool Add(const StrandVertex& v, PixelOperation op);
    /// Ends the strand: draws its last segment.
    void End(PixelOperation op);
    /// True when a segment waits for the vertex behind it.
    bool Pending() const { return pending_; }

    /// Starts a strand of the thin method.
    void BeginThin(const ThinVertex& v) { thin_ = v; }
    /// Draws the segment from the previous vertex to `v`.
    void AddThin(const ThinVertex& v, PixelOperation op) {
        if (op == PixelOperation::Image)
            RasterDetail::DrawThin<PixelOperation::Image>(target_.bucket, thin_, v, sink_);
        else
            RasterDetail::DrawThin<PixelOperation::Shadow>(target_.bucket, thin_, v, sink_);
        thin_ = v;
    }

private:
    StrandVertex& Previous() { return vertices_[1 - current_]; }
    StrandVertex& Current() { return vertices_[current_]; }
    void Copy(StrandVertex& to, const StrandVertex& from) const;
    void SetEndLine();
    EdgeLine JointLine(const StrandVertex& next, EdgeLine& nextStart);
    void DrawSegment(PixelOperation op);

    int threadIndex_;
    Sink& sink_;
    RasterTarget target_;
    RasterDetail::WidthSampler sampler_;
    StrandVertex vertices_[2];
    int current_ = 1;
    bool pending_ = false;
    bool first_ = true, last_ = false;
    ThinVertex thin_;
};

template <class Sink>
void BasicThick<Sink>::Copy(StrandVertex& to, const StrandVertex& from) const {
    to.x = from.x, to.y = from.y, to.z = from.z, to.width = from.width, to.velocity = from.velocity;
    std::copy_n(from.opacity, sampler_.samples, to.opacity);
    std::copy_n(from.color, sampler_.samples, to.color);
}

template <class Sink>
void BasicThick<Sink>::Begin(const StrandVertex& v) {
    End(PixelOperation::Image); // intended: whatever the pass is
    first_ = true;
    Copy(Previous(), v);
}

template <class Sink>
bool BasicThick<Sink>::Add(const StrandVertex& v, PixelOperation op) {
    if (!pending_) {
        Copy(Current(), v);
        const StrandVertex &a = Previous(), &b = Current();
        Previous().line = EdgeLine::Through({a.x, a.y}, {b.x - a.x, b.y - a.y});
        pending_ = true;
        return true;
    }
    EdgeLine nextStart;
    Current().line = JointLine(v, nextStart);
    DrawSegment(op);
    first_ = last_ = false;
    Current().line = nextStart;
    current_ = 1 - current_;
    Copy(Current(), v);
    return true;
}

template <class Sink>
void BasicThick<Sink>::End(PixelOperation op) {
    if (!pending_) return;
    last_ = true;
    SetEndLine();
    DrawSegment(op);
    pending_ = false;
    first_ = true;
    last_ = false;
}

template <class Sink>
void BasicThick<Sink>::SetEndLine() {
    const StrandVertex &a = Previous(), &b = Current();
    Current().line = EdgeLine::Through({b.x, b.y}, {a.x - b.x, a.y - b.y});
}

/// The line between the pending segment AB and the next one BC, facing AB; `nextStart` is the same line facing BC. A
/// line has the segment it cuts on its positive side, also where the strand turns back by more than a right angle.
template <class Sink>
EdgeLine BasicThick<Sink>::JointLine(const StrandVertex& next, EdgeLine& nextStart) {
    const Point2 a{Previous().x, Previous().y}, b{Current().x, Current().y}, c{next.x, next.y};
    const Point2 chord = c - a;
    if (Length(chord) < 0.001f) {
        const EdgeLine side = EdgeLine::Through(b, {-(c.y - b.y), c.x - b.x});
        nextStart = -side;
        return side;
    }
    const EdgeLine forward = EdgeLine::Through(b, chord);
    nextStart = forward.Distance(c.x, c.y) < 0.0f ? -forward : forward;
    return forward.Distance(a.x, a.y) > 0.0f ? forward : -forward;
}

template <class Sink>
void BasicThick<Sink>::DrawSegment(PixelOperation op) {
    RasterDetail::WideSegment segment{Previous(), Current(), Previous().line, Current().line, first_, last_};
    if (op == PixelOperation::Image)
        RasterDetail::DrawWide<PixelOperation::Image>(segment, target_, sampler_, sink_);
    else
        RasterDetail::DrawWide<PixelOperation::Shadow>(segment, target_, sampler_, sink_);
}

extern template class BasicThick<SampleWriter>;

/// The renderer's rasteriser: it draws into its thread's sample runs.
class alignas(kThreadAlignment) HRB_Thick final : public BasicThick<SampleWriter> {
public:
    using BasicThick::BasicThick;
};
