#pragma once
// Shapes from plain data: point lists, knots, keyed knots.

#include <vector>

#include "sdk/control.h"
#include "shapes/made_object.h"

namespace host {

/// An open or closed spline through points; Bezier knots have their handles on the points.
Spline3D SplineFromPoints(const std::vector<Point3>& points, bool closed, int ktype = KTYPE_CORNER);

/// A spline of a shape for every polyline (indices into `points`; those out of range are left out). A polyline that
/// ends where it began is closed; those of less than two points are left out.
BezierShape ShapeFromLines(const std::vector<Point3>& points, const std::vector<std::vector<int>>& lines);

/// Which knot of a shape.
struct KnotIndex {
    int spline = 0, knot = 0;
    auto operator<=>(const KnotIndex&) const = default;
};

/// A shape whose knots may follow controllers. `shape` is rebuilt at every evaluation; the handles of Bezier knots move
/// along with their knots, those of others are placed anew.
class KeyedShape : public MadeObject<ShapeObject> {
public:
    explicit KeyedShape(BezierShape rest = {});
    ~KeyedShape() override { DeleteAllRefs(); }
    Interval ObjectValidity(TimeValue t) override;
    Interval ChannelValidity(TimeValue t, int channel) override {
        return channel == GEOM_CHAN_NUM ? ObjectValidity(t) : FOREVER;
    }
    RefTargetHandle Clone(RemapDir& remap) override;

    /// A point or position controller for a knot, shared (SetAutoDelete). False for another kind or an unknown knot.
    bool SetKnotController(KnotIndex which, Control* c);
    int NumKeyedKnots() const { return int(tracks_.size()); }
    const BezierShape& Rest() const { return rest_; }

    int NumRefs() override { return NumKeyedKnots(); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override;
    int NumSubs() override { return NumRefs(); }
    Animatable* SubAnim(int i) override { return GetReference(i); }
    TSTR SubAnimName(int i) override;

private:
    struct Track {
        KnotIndex which;
        Control* control = nullptr;
    };
    Interval Make(TimeValue t) override;

    BezierShape rest_;
    std::vector<Track> tracks_;
};

} // namespace host
