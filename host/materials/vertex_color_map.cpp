#include "materials/vertex_color_map.h"

#include "core/block_class.h"
#include "sdk/mesh.h"

namespace host {

namespace {

BlockClassDesc<VertexColorMap>& Desc() {
    static BlockClassDesc<VertexColorMap> desc(
        "Vertex Color", "vertexColorMap", TEXMAP_CLASS_ID, VERTEX_COLOR_CLASS_ID, [] {
            std::vector<ParamDef> params = MapOutput::Params();
            params.push_back(IntParam(kVertexColorChannel, "channel", 0, MAP_ALPHA, MAX_MESHMAPS - 1));
            params.push_back(IntParam(kVertexColorPart, "part", kVertexAll, kVertexAll, kVertexBlue));
            return params;
        }());
    return desc;
}

} // namespace

ClassDesc* VertexColorMapDesc() {
    return &Desc();
}

VertexColorMap::VertexColorMap() {
    Desc().MakeAutoParamBlocks(this);
    Refresh();
}

void VertexColorMap::Refresh() {
    if (!Params()) return;
    output_.Read(*Params(), Time());
    channel_ = Params()->GetInt(kVertexColorChannel, Time());
    part_ = Params()->GetInt(kVertexColorPart, Time());
}

AColor VertexColorMap::EvalColor(ShadeContext& sc) {
    const Point3 c = sc.UVW(channel_);
    if (part_ == kVertexAll) return output_.Apply({c.x, c.y, c.z});
    const float grey = c[part_ - kVertexRed];
    return output_.Apply({grey, grey, grey});
}

RefTargetHandle VertexColorMap::Clone(RemapDir& remap) {
    return Copied(new VertexColorMap, remap);
}

} // namespace host
