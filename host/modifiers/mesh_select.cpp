#include "modifiers/mesh_select.h"

namespace host {

namespace {

constexpr float kMostFalloff = 1e12f;

BlockClassDesc<MeshSelect>& Desc() {
    static BlockClassDesc<MeshSelect> desc(
        "Mesh Select", "meshSelect", OSM_CLASS_ID, MESHSELECT_CLASS_ID,
        {IntParam(MeshSelect::kLevel, "level", MESH_FACE, MESH_OBJECT, MESH_FACE),
         BoolParam(MeshSelect::kSoft, "soft", false), FloatParam(MeshSelect::kFalloff, "falloff", 20, 0, kMostFalloff),
         FloatParam(MeshSelect::kPinch, "pinch", 0, -10, 10), FloatParam(MeshSelect::kBubble, "bubble", 0, -10, 10)});
    return desc;
}

/// The sets in front of those that the mesh had; a set of the same name takes its place.
void PutSets(const GenericNamedSelSetList& sets, Mesh& mesh) {
    std::vector<std::pair<std::string, BitArray>> all;
    for (int i = 0; i < sets.Count(); ++i) {
        all.emplace_back(sets.Name(i), sets[i]);
        all.back().second.SetSize(mesh.getNumFaces());
    }
    for (auto& entry : mesh.faceSets)
        if (!sets.GetSet(entry.first)) all.push_back(std::move(entry));
    mesh.faceSets = std::move(all);
}

/// The vertices that are selected at the mesh's level.
BitArray LevelVertices(const Mesh& mesh) {
    if (mesh.selLevel == MESH_VERTEX) return mesh.vertSel;
    BitArray out(mesh.getNumVerts());
    for (int f = 0; f < mesh.getNumFaces(); ++f)
        if (mesh.faceSel[f])
            for (const int v : mesh.faces[size_t(f)].v) out.Set(v);
    return out;
}

} // namespace

ClassDesc* MeshSelectDesc() {
    return &Desc();
}

void MeshSelectData::SetVertSel(const BitArray& set, IMeshSelect*, TimeValue) {
    vertSel_ = set;
    vertRule_ = false;
}

void MeshSelectData::SetFaceSel(const BitArray& set, IMeshSelect*, TimeValue) {
    faceSel_ = set;
    faceRule_ = false;
}

void MeshSelectData::SetRule(const SelectionRule& rule) {
    rule_ = rule;
    faceRule_ = vertRule_ = true;
}

void MeshSelectData::AddSetRule(const std::string& name, const SelectionRule& rule) {
    setRules_.emplace_back(name, rule);
}

void MeshSelectData::Resolve(const Mesh& mesh) {
    if (faceRule_) faceSel_ = SelectFaces(mesh, rule_);
    if (vertRule_) vertSel_ = SelectVertices(mesh, rule_);
    for (const auto& [name, rule] : setRules_) faceSets_.AppendSet(SelectFaces(mesh, rule), name);
}

MeshSelect::MeshSelect() {
    Desc().MakeAutoParamBlocks(this);
}

MeshSelectData& MeshSelect::DataIn(ModContext& mc) {
    if (!mc.localData) mc.localData = new MeshSelectData;
    return static_cast<MeshSelectData&>(*mc.localData);
}

// Weights depend on places; a plain selection does not, and lives as long as the faces.
ChannelMask MeshSelect::ChannelsUsed() {
    const bool soft = Int(kSoft, 0) || Params()->GetController(kSoft);
    return TOPO_CHANNEL | SELECT_CHANNEL | (soft ? GEOM_CHANNEL : 0);
}

void MeshSelect::ModifyObject(TimeValue t, ModContext& mc, ObjectState* os, INode*) {
    Mesh& mesh = static_cast<TriObject*>(os->obj)->mesh;
    MeshSelectData& data = DataIn(mc);
    data.Resolve(mesh);
    mesh.faceSel = data.GetFaceSel();
    mesh.faceSel.SetSize(mesh.getNumFaces());
    mesh.vertSel = data.GetVertSel();
    mesh.vertSel.SetSize(mesh.getNumVerts());
    mesh.selLevel = Int(kLevel, t);
    PutSets(data.GetNamedFaceSelList(), mesh);
    if (Int(kSoft, t) && mesh.selLevel != MESH_OBJECT) {
        const SoftSelection soft{Float(kFalloff, t), Float(kPinch, t), Float(kBubble, t)};
        mesh.vdata[VDATA_SELECT] = SoftWeights(mesh, LevelVertices(mesh), soft);
    } else {
        mesh.vdata.erase(VDATA_SELECT);
    }
}

RefTargetHandle MeshSelect::Clone(RemapDir& remap) {
    auto* const copy = new MeshSelect;
    CopyBlock(*copy, remap);
    CopySwitches(*copy);
    return copy;
}

} // namespace host
