#pragma once
// Control strands as hair: render passes that do not shade middle strands draw them too.

#include <vector>

#include "Base/CreateHair/RenderHandoff.h"
#include "Base/CreateHair/StrandContext.h"

/// The existing control strands of a run in vertex order. Their draws go on from the generator state that the control
/// mesh's update left, as one thread that takes them in order would make them: four a strand, orientation and colour
/// (hue, saturation, value).
class VertexStrandList {
public:
    static constexpr uint64_t kDrawsPerStrand = 4;

    explicit VertexStrandList(const GenerationRun& run);
    int Count() const { return int(vertices_.size()); }
    int UnitCount(int strandsPerUnit) const { return (Count() + strandsPerUnit - 1) / strandsPerUnit; }
    int Vertex(int i) const { return vertices_[size_t(i)]; }
    /// Shapes control strand `i` of the list in `c`.
    void Make(StrandContext& c, int i) const;
    template <class Consumer>
    void BuildUnit(StrandContext& c, int unit, int strandsPerUnit, Consumer& consumer) const {
        for (int i = unit * strandsPerUnit; i < (unit + 1) * strandsPerUnit && i < Count(); ++i) {
            if (consumer.Aborted()) return;
            Make(c, i);
            ++c.strandsMade;
            consumer.OnStrand(c);
        }
    }

private:
    const GenerationRun& run_;
    std::vector<int> vertices_;
    std::vector<EmitterFace> faces_; ///< by list index: a record of the lowest face at the vertex
};

/// Shades the control strands first, first + step ... at their knots into `out`, which is sized for all vertices.
/// A knot whose tangent is degenerate is black and opaque.
void ShadeKnots(const VertexStrandList& list, int first, int step, StrandContext& c, StrandShading& shading,
                KnotColors& out);
