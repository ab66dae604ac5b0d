// Nodes and objects of imported scenes.

#include "scene/build_import.h"

#include <cmath>
#include <numbers>
#include <set>

#include "core/camera.h"
#include "core/edit_tri_object.h"
#include "core/light.h"
#include "materials/multi_mtl.h"
#include "modifiers/morph.h"
#include "modifiers/skin.h"

namespace host {

namespace {

// A direct light of a file has no edge: its cylinder is as wide as anything.
constexpr float kEverywhere = 1e9f;

class ImportBuilder {
public:
    ImportBuilder(LoadContext& context, const std::string& path, const ImportOptions& options, ImportedScene& scene)
        : context_(context), path_(path), options_(options), scene_(scene), materials_(), objects_(scene.meshes.size()),
          meshMaterials_(scene.meshes.size()) {
        for (Node* const node : context.core.AllNodes()) names_.insert(node->GetName());
    }

    std::vector<Node*> Build() {
        materials_ = BuildImportMaterials(context_, path_, scene_);
        for (ImportedNode& from : scene_.nodes) {
            Node* const parent = from.parent < 0 ? nullptr : nodes_[size_t(from.parent)];
            from.name = FreeName(from.name);
            Node* const node = context_.core.CreateNode(from.name, ObjectOf(from), parent);
            SetImportedPlace(context_, node, from);
            nodes_.push_back(node);
        }
        // Skins name nodes that come later.
        for (size_t i = 0; i < scene_.nodes.size(); ++i)
            if (scene_.nodes[i].mesh >= 0) FinishMeshNode(nodes_[i], scene_.nodes[i]);
        return std::move(nodes_);
    }

private:
    std::string FreeName(const std::string& name) {
        if (names_.insert(name).second) return name;
        for (int& i = lastNumber_[name];;) {
            const std::string next = name + "_" + std::to_string(++i + 1);
            if (names_.insert(next).second) return next;
        }
    }

    Object* ObjectOf(const ImportedNode& from) {
        if (from.camera >= 0) return MakeCamera(from);
        if (from.light >= 0) return MakeLight(from);
        if (from.mesh < 0) return nullptr;
        const SceneMesh& mesh = scene_.meshes[size_t(from.mesh)];
        return mesh.mesh.faces.empty() && mesh.shape ? MakeShape(*mesh.shape) : MeshObject(size_t(from.mesh));
    }
    Object* MakeShape(const BezierShape& shape) {
        auto* const object = context_.core.Adopt(new ShapeObject);
        object->shape = shape;
        return object;
    }
    // Nodes with the same mesh share the object.
    Object* MeshObject(size_t i) {
        if (!objects_[i]) {
            objects_[i] = context_.core.Adopt(new EditTriObject);
            vertices_[i] = scene_.meshes[i].mesh.getNumVerts();
            objects_[i]->mesh = std::move(scene_.meshes[i].mesh);
        }
        return objects_[i];
    }

    Object* MakeCamera(const ImportedNode& node) {
        const ImportedCamera& from = scene_.cameras[size_t(node.camera)];
        auto* const camera = context_.core.Adopt(new TargetCamera);
        IParamBlock2* const block = camera->Params();
        const FrameSettings& render = context_.scene.render;
        if (from.ortho) {
            // At 90 degrees the view is as wide as twice the distance of the target.
            block->SetValue(kCamOrtho, 0, 1);
            block->SetValue(kCamFov, 0, float(std::numbers::pi / 2));
            block->SetValue(kCamTargetDist, 0, from.halfWidth);
        } else {
            const float aspect = from.aspect > 0 ? from.aspect
                                                 : render.pixelAspect * float(std::max(render.width, 1)) /
                                                       float(std::max(render.height, 1));
            const float wide = 2 * std::atan(std::tan(from.fovY / 2) * aspect);
            block->SetValue(kCamFov, 0, std::clamp(from.fovX > 0 ? from.fovX : wide, 0.001f, 3.1f));
        }
        if (from.nearClip > 0 || from.farClip > from.nearClip) {
            block->SetValue(kCamManualClip, 0, 1);
            block->SetValue(kCamHither, 0, from.nearClip);
            block->SetValue(kCamYon, 0, from.farClip > from.nearClip ? from.farClip : kEverywhere);
        }
        context_.scene.objects.emplace(node.name, camera);
        return camera;
    }

    Object* MakeLight(const ImportedNode& node) {
        const ImportedLight& from = scene_.lights[size_t(node.light)];
        auto* const light = context_.core.Adopt(new Light(from.type));
        IParamBlock2* const block = light->Params();
        block->SetValue(kLightColor, 0, from.color);
        block->SetValue(kLightMultiplier, 0, from.multiplier);
        if (from.type == SPOT_LGT || from.type == DIRECT_LGT) {
            block->SetValue(kLightHotspot, 0, from.type == SPOT_LGT ? from.hotspot : kEverywhere);
            block->SetValue(kLightFalloff, 0, from.type == SPOT_LGT ? from.falloff : kEverywhere);
        }
        block->SetValue(kLightDecay, 0, int(from.decay));
        block->SetValue(kLightDecayStart, 0, from.decayStart);
        context_.scene.objects.emplace(node.name, light);
        return light;
    }

    void FinishMeshNode(Node* node, const ImportedNode& from) {
        SceneMesh& mesh = scene_.meshes[size_t(from.mesh)];
        if (!objects_[size_t(from.mesh)]) return;
        context_.scene.meshes.push_back({path_, options_, node, 0});
        node->SetMtl(MaterialOf(size_t(from.mesh)));
        AddMorphs(node, from, mesh);
        AddSkin(node, from, mesh);
        if (mesh.shape) context_.core.CreateNode(FreeName(from.name + ".lines"), MakeShape(*mesh.shape), node);
    }

    Mtl* MaterialOf(size_t mesh) {
        const std::vector<int>& ids = scene_.meshes[mesh].materials;
        const bool colored = objects_[mesh]->mesh.maps.contains(MAP_VERTCOLOR);
        const auto known = [&](int i) { return i < 0 ? UnnamedMaterial(context_, colored) : materials_[size_t(i)]; };
        if (std::all_of(ids.begin(), ids.end(), [](int i) { return i < 0; }))
            return colored ? UnnamedMaterial(context_, true) : nullptr; // else the node's own colour
        if (ids.size() == 1) return known(ids[0]);
        MultiMtl*& multi = meshMaterials_[mesh];
        if (multi) return multi;
        multi = static_cast<MultiMtl*>(context_.core.CreateInstance(MATERIAL_CLASS_ID, MULTI_CLASS_ID));
        for (size_t i = 0; i < ids.size(); ++i) multi->SetSubMtl(int(i), known(ids[i]));
        return multi;
    }

    void AddModifier(Node* node, Modifier* m, const char* name) {
        context_.core.Adopt(m);
        m->SetName(name);
        if (!node->AddModifier(m)) {
            scene_.Note("the " + std::string(name) + " of " + Quoted(node->GetName()) + " depends on itself: left out");
            return;
        }
        context_.scene.objects.emplace(std::string(node->GetName()) + "." + name, m);
    }

    void AddMorphs(Node* node, const ImportedNode& from, const SceneMesh& mesh) {
        if (mesh.morphs.empty()) return;
        std::vector<MorphTarget> targets;
        for (size_t i = 0; i < mesh.morphs.size(); ++i) {
            const ImportedMorph& morph = mesh.morphs[i];
            const float weight = i < from.weights.size() ? from.weights[i] : morph.weight;
            targets.push_back({morph.name, {}, morph.deltas, weight});
        }
        auto* const m = new MorphModifier(std::move(targets));
        for (size_t i = 0; i < from.weightTracks.size() && i < mesh.morphs.size(); ++i)
            if (!from.weightTracks[i].IsEmpty())
                m->SetWeightController(int(i), MakeWeightControl(context_, from.weightTracks[i]));
        AddModifier(node, m, "morph");
    }

    void AddSkin(Node* node, const ImportedNode& from, const SceneMesh& mesh) {
        if (from.skin < 0 || mesh.influences.empty()) return;
        const ImportedSkin& skin = scene_.skins[size_t(from.skin)];
        SkinData data;
        for (size_t i = 0; i < skin.joints.size(); ++i)
            data.bones.push_back({nodes_[size_t(skin.joints[i])], skin.inverseBinds[i]});
        std::vector<SkinInfluence> influences;
        for (const ImportedInfluence& i : mesh.influences) influences.push_back({i.vertex, i.joint, i.weight});
        data.weights = SkinWeights(vertices_[size_t(from.mesh)], int(data.bones.size()), influences);
        AddModifier(node, new SkinModifier(std::move(data)), "skin");
    }

    LoadContext& context_;
    const std::string& path_;
    const ImportOptions& options_;
    ImportedScene& scene_;
    std::vector<Mtl*> materials_;
    std::vector<EditTriObject*> objects_; ///< by mesh
    std::vector<MultiMtl*> meshMaterials_;
    std::map<size_t, int> vertices_; ///< by mesh
    std::vector<Node*> nodes_;
    std::set<std::string> names_;
    std::map<std::string, int> lastNumber_;
};

} // namespace

std::vector<Node*> BuildImport(LoadContext& context, const std::string& path, const ImportOptions& options,
                               ImportedScene& scene) {
    return ImportBuilder(context, path, options, scene).Build();
}

} // namespace host
