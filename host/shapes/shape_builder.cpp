#include "shapes/shape_builder.h"

namespace host {

Spline3D SplineFromPoints(const std::vector<Point3>& points, bool closed, int ktype) {
    Spline3D spline;
    spline.closed = closed;
    for (const Point3& p : points) spline.AddKnot(p, ktype);
    spline.ComputeBezPoints();
    return spline;
}

BezierShape ShapeFromLines(const std::vector<Point3>& points, const std::vector<std::vector<int>>& lines) {
    BezierShape shape;
    for (const std::vector<int>& line : lines) {
        std::vector<Point3> corners;
        int first = -1, last = -1;
        for (const int i : line) {
            if (i < 0 || size_t(i) >= points.size()) continue;
            if (corners.empty()) first = i;
            last = i;
            corners.push_back(points[size_t(i)]);
        }
        const bool closed = corners.size() > 2 && first == last;
        if (closed) corners.pop_back();
        if (corners.size() >= 2) shape.splines.push_back(SplineFromPoints(corners, closed));
    }
    return shape;
}

KeyedShape::KeyedShape(BezierShape rest) : rest_(std::move(rest)) {
    for (Spline3D& s : rest_.splines) s.ComputeBezPoints();
    shape = rest_;
}

bool KeyedShape::SetKnotController(KnotIndex which, Control* c) {
    if (!c || (c->SuperClassID() != CTRL_POINT3_CLASS_ID && c->SuperClassID() != CTRL_POSITION_CLASS_ID)) return false;
    Spline3D* const spline = rest_.GetSpline(which.spline);
    if (!spline || which.knot < 0 || which.knot >= spline->KnotCount()) return false;
    size_t i = 0;
    while (i < tracks_.size() && !(tracks_[i].which == which)) ++i;
    if (i == tracks_.size()) tracks_.push_back({which, nullptr});
    if (ReplaceReference(int(i), c) != REF_SUCCEED) return false;
    c->SetAutoDelete(true);
    MakeAnew();
    NotifyDependents(FOREVER, PART_GEOM, REFMSG_CHANGE);
    return true;
}

RefTargetHandle KeyedShape::GetReference(int i) {
    return i >= 0 && i < NumRefs() ? tracks_[size_t(i)].control : nullptr;
}

void KeyedShape::SetReference(int i, RefTargetHandle target) {
    if (i >= 0 && i < NumRefs()) tracks_[size_t(i)].control = static_cast<Control*>(target);
}

RefResult KeyedShape::NotifyRefChanged(const Interval&, RefTargetHandle, PartID& partID, RefMessage) {
    MakeAnew();
    partID = PART_GEOM;
    return REF_SUCCEED;
}

TSTR KeyedShape::SubAnimName(int i) {
    if (i < 0 || i >= NumRefs()) return {};
    const KnotIndex& k = tracks_[size_t(i)].which;
    return "Spline " + std::to_string(k.spline) + " Knot " + std::to_string(k.knot);
}

Interval KeyedShape::ObjectValidity(TimeValue t) {
    Interval valid = FOREVER;
    Point3 point;
    for (const Track& track : tracks_)
        if (track.control) track.control->GetValue(t, &point, valid);
    return valid;
}

Interval KeyedShape::Make(TimeValue t) {
    shape = rest_;
    Interval valid = FOREVER;
    for (const Track& track : tracks_) {
        if (!track.control) continue;
        SplineKnot& knot = shape.splines[size_t(track.which.spline)].knots[size_t(track.which.knot)];
        Point3 place;
        track.control->GetValue(t, &place, valid);
        const Point3 shift = place - knot.point;
        knot.inVec += shift;
        knot.outVec += shift;
        knot.point = place;
    }
    for (Spline3D& s : shape.splines) s.ComputeBezPoints();
    return valid;
}

RefTargetHandle KeyedShape::Clone(RemapDir& remap) {
    auto* const copy = new KeyedShape(rest_);
    for (const Track& track : tracks_)
        if (track.control) copy->SetKnotController(track.which, static_cast<Control*>(remap.CloneRef(track.control)));
    return copy;
}

} // namespace host
