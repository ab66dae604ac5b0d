// Nodes, skins, cameras and lights of glTF files.

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

#include "import/file_error.h"
#include "import/gltf_parts.h"

namespace host {

namespace {

constexpr float kDegrees = float(180.0 / std::numbers::pi);
// Metres: nearer to a point of light its strength no longer grows.
constexpr float kNearestLight = 0.01f;

// The node's number of an index into a list; -1 when there is none.
template <class List>
int KnownIndex(GltfFile& gltf, int index, const List& list, const char* what) {
    if (index < 0) return -1;
    if (size_t(index) < list.size()) return index;
    FailAt(gltf.file, 0,
           std::string("a node names ") + what + " " + std::to_string(index) + ", expected 0 .. " +
               std::to_string(int64_t(list.size()) - 1));
}

Point3 PointIn(const std::vector<double>& v, Point3 otherwise) {
    return v.size() == 3 ? Point3(GltfFloat(v[0]), GltfFloat(v[1]), GltfFloat(v[2])) : otherwise;
}

int LightOf(GltfFile& gltf, const tinygltf::Node& node) {
    const auto at = node.extensions.find("KHR_lights_punctual");
    if (at == node.extensions.end()) return -1;
    const double light = GltfNumber(at->second, "light", -1);
    return light >= 0 && light < double(gltf.scene.lights.size()) ? int(light) : -1;
}

void SetPlace(const tinygltf::Node& from, ImportedNode& node) {
    if (from.matrix.size() == 16) {
        // The file has columns for column vectors: the rows that are wanted.
        const auto row = [&](size_t i) {
            return Point3(GltfFloat(from.matrix[4 * i]), GltfFloat(from.matrix[4 * i + 1]),
                          GltfFloat(from.matrix[4 * i + 2]));
        };
        node.matrix = Matrix3(row(0), row(1), row(2), row(3));
        return;
    }
    node.position = PointIn(from.translation, {});
    node.scale = PointIn(from.scale, {1, 1, 1});
    if (from.rotation.size() == 4)
        node.rotation = Normalize(GltfQuat(GltfFloat(from.rotation[0]), GltfFloat(from.rotation[1]),
                                           GltfFloat(from.rotation[2]), GltfFloat(from.rotation[3])));
}

class NodeReader {
public:
    explicit NodeReader(GltfFile& gltf) : gltf_(gltf) { gltf.nodeOf.assign(gltf.model.nodes.size(), -1); }

    void Read() {
        for (const int root : Roots()) Add(root, -1, 1);
    }

private:
    // The nodes of the scene to be shown; without any scene all that are nobody's children.
    std::vector<int> Roots() const {
        const tinygltf::Model& model = gltf_.model;
        if (!model.scenes.empty()) {
            const int scene = model.defaultScene < 0 ? 0 : model.defaultScene;
            if (size_t(scene) >= model.scenes.size())
                FailAt(gltf_.file, 0, "shows scene " + std::to_string(scene) + ", which is not there");
            return model.scenes[size_t(scene)].nodes;
        }
        std::set<int> children;
        for (const tinygltf::Node& node : model.nodes) children.insert(node.children.begin(), node.children.end());
        std::vector<int> roots;
        for (int i = 0; i < int(model.nodes.size()); ++i)
            if (!children.contains(i)) roots.push_back(i);
        return roots;
    }

    void Add(int number, int parent, size_t depth) {
        if (number < 0 || size_t(number) >= gltf_.model.nodes.size())
            FailAt(gltf_.file, 0, "names node " + std::to_string(number) + ", which is not there");
        if (gltf_.nodeOf[size_t(number)] >= 0)
            FailAt(gltf_.file, 0,
                   "node " + std::to_string(number) + " hangs below two nodes or below itself, expected a tree");
        if (depth > kMostSceneDepth)
            FailAt(gltf_.file, 0, "has nodes more than " + std::to_string(kMostSceneDepth) + " levels deep");
        const tinygltf::Node& from = gltf_.model.nodes[size_t(number)];
        ImportedNode node;
        node.name = from.name.empty() ? NameFor(from, number) : from.name;
        node.parent = parent;
        SetPlace(from, node);
        node.mesh = KnownIndex(gltf_, from.mesh, gltf_.scene.meshes, "mesh");
        node.skin = KnownIndex(gltf_, from.skin, gltf_.model.skins, "skin");
        for (const double w : from.weights) node.weights.push_back(GltfFloat(w));
        const int at = gltf_.nodeOf[size_t(number)] = int(gltf_.scene.nodes.size());
        const int camera = KnownIndex(gltf_, from.camera, gltf_.scene.cameras, "camera"), light = LightOf(gltf_, from);
        gltf_.scene.nodes.push_back(std::move(node));
        AddView(at, camera, &ImportedNode::camera, "camera");
        AddView(at, light, &ImportedNode::light, "light");
        for (const int child : from.children) Add(child, at, depth + 1);
    }

    // A camera or light turns its node; where other things hang on the node, it gets one of its own below.
    void AddView(int at, int view, int ImportedNode::*member, const char* kind) {
        if (view < 0) return;
        ImportedNode& node = gltf_.scene.nodes[size_t(at)];
        if (node.mesh < 0 && node.camera < 0 && node.light < 0) {
            node.*member = view;
            return;
        }
        ImportedNode child;
        child.name = node.name + "." + kind;
        child.parent = at;
        child.*member = view;
        gltf_.scene.nodes.push_back(std::move(child));
    }

    std::string NameFor(const tinygltf::Node& node, int number) const {
        if (node.mesh >= 0 && size_t(node.mesh) < gltf_.model.meshes.size() &&
            !gltf_.model.meshes[size_t(node.mesh)].name.empty())
            return gltf_.model.meshes[size_t(node.mesh)].name;
        return "node_" + std::to_string(number);
    }

    GltfFile& gltf_;
};

ImportedCamera ReadCamera(const tinygltf::Camera& from) {
    ImportedCamera camera;
    camera.ortho = from.type == "orthographic";
    if (camera.ortho) {
        camera.halfWidth = std::fabs(GltfFloat(from.orthographic.xmag, 1));
        camera.nearClip = GltfFloat(from.orthographic.znear);
        camera.farClip = GltfFloat(from.orthographic.zfar);
    } else {
        camera.fovY = std::clamp(GltfFloat(from.perspective.yfov, 0.8f), 0.001f, 3.1f);
        camera.aspect = GltfFloat(from.perspective.aspectRatio);
        camera.nearClip = GltfFloat(from.perspective.znear);
        camera.farClip = GltfFloat(from.perspective.zfar);
    }
    return camera;
}

// Photometric units: a direct light of pi lux, or another one of pi candela a metre away, shows a white surface as
// white.
ImportedLight ReadLight(const tinygltf::Light& from) {
    ImportedLight light;
    if (from.color.size() >= 3)
        light.color = {GltfFloat(from.color[0]), GltfFloat(from.color[1]), GltfFloat(from.color[2])};
    const float intensity = std::max(GltfFloat(from.intensity, 1), 0.0f);
    light.type = from.type == "directional" ? DIRECT_LGT : from.type == "spot" ? SPOT_LGT : OMNI_LGT;
    light.multiplier = intensity / float(std::numbers::pi);
    if (light.type != DIRECT_LGT) {
        light.decay = DECAY_INVERSE_SQUARE;
        light.decayStart = kNearestLight;
        light.multiplier /= kNearestLight * kNearestLight;
    }
    light.hotspot = std::clamp(2 * kDegrees * GltfFloat(from.spot.innerConeAngle), 0.0f, 179.0f);
    light.falloff = std::clamp(2 * kDegrees * GltfFloat(from.spot.outerConeAngle), 0.5f, 179.5f);
    return light;
}

} // namespace

void ReadGltfViews(GltfFile& gltf) {
    for (const tinygltf::Camera& camera : gltf.model.cameras) gltf.scene.cameras.push_back(ReadCamera(camera));
    for (const tinygltf::Light& light : gltf.model.lights) gltf.scene.lights.push_back(ReadLight(light));
}

void ReadGltfNodes(GltfFile& gltf) {
    NodeReader(gltf).Read();
}

void ReadGltfSkins(GltfFile& gltf) {
    for (size_t i = 0; i < gltf.model.skins.size(); ++i) {
        const tinygltf::Skin& from = gltf.model.skins[i];
        const std::string what = "skin " + std::to_string(i);
        ImportedSkin skin;
        std::vector<float> binds;
        if (from.inverseBindMatrices >= 0) {
            binds = GltfFloats(gltf, from.inverseBindMatrices, 16, what + " inverseBindMatrices");
            if (binds.size() < from.joints.size() * 16)
                FailAt(gltf.file, 0, what + " has fewer matrices than joints, expected one each");
        }
        for (size_t j = 0; j < from.joints.size(); ++j) {
            const int joint = from.joints[j];
            if (joint < 0 || size_t(joint) >= gltf.nodeOf.size() || gltf.nodeOf[size_t(joint)] < 0)
                FailAt(gltf.file, 0, what + " names node " + std::to_string(joint) + ", which is not in the scene");
            skin.joints.push_back(gltf.nodeOf[size_t(joint)]);
            Matrix3 bind;
            if (!binds.empty())
                for (int r = 0; r < 4; ++r) {
                    const float* const m = &binds[j * 16 + size_t(r) * 4];
                    bind.SetRow(r, {m[0], m[1], m[2]});
                }
            skin.inverseBinds.push_back(bind);
        }
        gltf.scene.skins.push_back(std::move(skin));
    }
}

} // namespace host
