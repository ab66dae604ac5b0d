#include "modifiers/mesh_select.h"

#include <utility>

#include "sdk/hold.h"

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

/// The state before the first change in a hold.
class MeshSelectData::StateRestore : public ExchangeRestore {
public:
    explicit StateRestore(const std::shared_ptr<Kept>& kept) : kept_(kept), saved_(kept->now) {}
    TSTR Description() override { return "Selection"; }

private:
    void Exchange() override {
        std::swap(kept_->now, saved_);
        if (const auto owner = kept_->owner.lock()) (*owner)->LocalDataChanged();
    }
    std::shared_ptr<Kept> kept_;
    State saved_;
};

std::shared_ptr<MeshSelectData::Kept> MeshSelectData::MakeKept(const State& from) {
    // Others change the lists of sets directly.
    const auto itself = std::make_shared<std::weak_ptr<Kept>>();
    const auto kept = std::make_shared<Kept>([itself] {
        if (const auto changing = itself->lock()) HoldState(changing);
    });
    *itself = kept;
    kept->now = from;
    return kept;
}

void MeshSelectData::HoldState(const std::shared_ptr<Kept>& kept) {
    if (HoldOnce(kept->held)) theHold.Put(new StateRestore(kept));
}

MeshSelectData::State& MeshSelectData::Change() {
    HoldState(kept_);
    return kept_->now;
}

void MeshSelectData::SetVertSel(const BitArray& set, IMeshSelect*, TimeValue) {
    State& s = Change();
    s.vertSel = set;
    s.vertRule = false;
}

void MeshSelectData::SetFaceSel(const BitArray& set, IMeshSelect*, TimeValue) {
    State& s = Change();
    s.faceSel = set;
    s.faceRule = false;
}

void MeshSelectData::SetRule(const SelectionRule& rule) {
    State& s = Change();
    s.rule = rule;
    s.faceRule = s.vertRule = true;
}

void MeshSelectData::AddSetRule(const std::string& name, const SelectionRule& rule) {
    Change().setRules.emplace_back(name, rule);
}

void MeshSelectData::Resolve(const Mesh& mesh, const std::shared_ptr<MeshSelect*>& owner) {
    kept_->owner = owner;
    State& s = kept_->now; // results are no edits
    if (s.faceRule) s.faceSel = SelectFaces(mesh, s.rule);
    if (s.vertRule) s.vertSel = SelectVertices(mesh, s.rule);
    for (const auto& [name, rule] : s.setRules) s.faceSets.AppendSet(SelectFaces(mesh, rule), name);
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
    data.Resolve(mesh, self_);
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

} // namespace host
