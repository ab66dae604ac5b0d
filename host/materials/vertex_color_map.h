#pragma once
// The vertex colour map.

#include "materials/block_owner.h"
#include "materials/map_output.h"
#include "sdk/mtl.h"

namespace host {

// Parameters of the vertex colour map, beside MapOutputParam.
enum VertexColorParam : ParamID {
    kVertexColorChannel, ///< mapping channel, -2..99: -2 alpha, -1 illumination, 0 the vertex colours
    kVertexColorPart,    ///< VertexColorPart
};

enum VertexColorPart { kVertexAll, kVertexRed, kVertexGreen, kVertexBlue };

/// A mapping channel's coordinates as colours: all three, or one of them as grey. Black where the mesh does not have
/// the channel.
class VertexColorMap : public BlockOwner<Texmap, 0> {
public:
    VertexColorMap();
    ~VertexColorMap() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return VERTEX_COLOR_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Vertex Color"; }
    AColor EvalColor(ShadeContext& sc) override;
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    void Refresh() override;
    int channel_ = 0, part_ = kVertexAll;
    MapOutput output_;
};

ClassDesc* VertexColorMapDesc();

} // namespace host
