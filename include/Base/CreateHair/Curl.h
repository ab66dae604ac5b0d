#pragma once
// Curliness: the strand's points wind around it.

#include "Base/CreateHair/StrandContext.h"

/// Moving frame along a strand's points: for each point its unit tangent and the frame vector U.
class StrandFrame {
public:
    /// Frame at point 0 from the cross-section orientation; tangents are those of the strand.
    StrandFrame(const PaddedPoints& tangents, int points, const Point3& orientation);
    /// Unit tangent and frame vector of the point; points must be asked in order, each once.
    void Next(Point3& tangent, Point3& u);

private:
    const PaddedPoints& tangents_;
    int index_ = 0;
    Point3 side_, u_;
};

/// Curls the strand when curliness is on and recomputes its tangents. One draw, made whether it is on or not.
void ApplyCurl(StrandContext& c);
