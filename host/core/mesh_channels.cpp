// Triangle meshes: channels and selections.

#include <algorithm>

#include "sdk/channels.h"
#include "sdk/mesh.h"

namespace {

/// Replaces the entries of `to` whose keys pass `of` by those of `from`; equal keys keep their memory.
template <class Map, class Of>
void CopyEntries(Map& to, const Map& from, Of&& of) {
    std::erase_if(to, [&](const auto& entry) { return of(entry.first) && !from.contains(entry.first); });
    for (const auto& [key, value] : from)
        if (of(key)) to[key] = value;
}

} // namespace

void Mesh::CopyChannels(const Mesh& from, uint64_t mask) {
    if (mask & TOPO_CHANNEL) {
        faces = from.faces;
        corners_ = from.corners_;
    }
    if (mask & GEOM_CHANNEL) {
        if (verts.size() != from.verts.size()) corners_ = from.corners_;
        verts = from.verts;
        specNormals = from.specNormals;
    }
    if (mask & TEXMAP_CHANNEL) {
        CopyEntries(maps, from.maps, [](int channel) { return channel > 0; });
        CopyEntries(vdata, from.vdata, [](int channel) { return channel != VDATA_SELECT; });
    }
    if (mask & VERTCOLOR_CHANNEL) CopyEntries(maps, from.maps, [](int channel) { return channel <= 0; });
    if (mask & SELECT_CHANNEL) {
        faceSel = from.faceSel;
        vertSel = from.vertSel;
        faceSets = from.faceSets;
        CopyEntries(vdata, from.vdata, [](int channel) { return channel == VDATA_SELECT; });
    }
    if (mask & SUBSEL_TYPE_CHANNEL) selLevel = from.selLevel;
    if (mask & (TOPO_CHANNEL | GEOM_CHANNEL)) VerticesMoved();
}

float Mesh::VertexSelection(int v) const {
    if (selLevel == MESH_OBJECT) return 1.0f;
    if (selLevel == MESH_VERTEX && vertSel[v]) return 1.0f;
    if (selLevel == MESH_FACE)
        for (const int at : CornersOfVertex(v))
            if (faceSel[at / 3]) return 1.0f;
    const std::vector<float>* const soft = vertexFloat(VDATA_SELECT);
    return soft ? std::clamp((*soft)[size_t(v)], 0.0f, 1.0f) : 0.0f;
}
