// Nodes, cameras, lights and animations of .fbx files.

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

#include "core/controllers.h"
#include "import/fbx_parts.h"
#include "import/file_error.h"

namespace host {

namespace {

float FiniteOr(double v, float otherwise) {
    return std::isfinite(float(v)) ? float(v) : otherwise;
}

// A direction that is not along `look`, for things that do not say what is up.
Point3 SomeUp(const Point3& look, const Point3& up) {
    if (!(Length(CrossProd(look, up)) < 1e-4f)) return up;
    return std::fabs(look.y) < 0.9f * Length(look) ? Point3(0, 1, 0) : Point3(0, 0, 1);
}

class NodeReader {
public:
    explicit NodeReader(FbxFile& fbx) : fbx_(fbx) {}

    void Read() {
        const aiNode& root = *fbx_.from.mRootNode;
        // The file has no such node: it only holds the others together.
        const bool artificial = root.mNumMeshes == 0 && FbxMatrix(root.mTransformation) == Matrix3();
        if (artificial) {
            for (unsigned i = 0; i < root.mNumChildren; ++i) Add(*root.mChildren[i], -1, 1);
        } else {
            Add(root, -1, 1);
        }
        AddMeshes();
        AddCameras();
        AddLights();
    }

private:
    void Add(const aiNode& from, int parent, size_t depth) {
        if (depth > kMostSceneDepth || from_.size() >= kMostSceneNodes)
            FailAt(fbx_.file, 0,
                   "has too many nodes, expected at most " + std::to_string(kMostSceneNodes) + " and " +
                       std::to_string(kMostSceneDepth) + " levels");
        ImportedNode node;
        node.name = from.mName.length > 0 ? from.mName.C_Str() : "node_" + std::to_string(from_.size() + 1);
        node.parent = parent;
        node.matrix = FbxMatrix(from.mTransformation);
        for (int r = 0; r < 4; ++r)
            if (!IsFinite(node.matrix->GetRow(r)))
                FailAt(fbx_.file, 0, "node " + Quoted(node.name) + " has a place that is not finite");
        const int at = int(from_.size());
        from_.push_back(&from);
        fbx_.nodeOf.try_emplace(from.mName.C_Str(), at);
        fbx_.scene.nodes.push_back(std::move(node));
        for (unsigned i = 0; i < from.mNumChildren; ++i) Add(*from.mChildren[i], at, depth + 1);
    }

    // After all nodes: skins name them.
    void AddMeshes() {
        for (size_t i = 0; i < from_.size(); ++i)
            if (from_[i]->mNumMeshes > 0) {
                int skin = -1;
                const int mesh = ReadFbxMesh(fbx_, *from_[i], skin);
                if (fbx_.scene.meshes[size_t(mesh)].mesh.faces.empty()) continue;
                fbx_.scene.nodes[i].mesh = mesh;
                fbx_.scene.nodes[i].skin = skin;
            }
    }

    // The node for a camera or light: the one of its name, or a new one below where that has other things.
    ImportedNode* NodeFor(const aiString& name, const char* kind, const aiVector3D& look, const aiVector3D& up,
                          const aiVector3D& position) {
        const auto at = fbx_.nodeOf.find(name.C_Str());
        if (at == fbx_.nodeOf.end()) return nullptr;
        ImportedNode* node = &fbx_.scene.nodes[size_t(at->second)];
        const Point3 place = FbxPoint(position);
        if (node->mesh >= 0 || node->camera >= 0 || node->light >= 0 || !(place == Point3())) {
            ImportedNode child;
            child.name = node->name + "." + kind;
            child.parent = at->second;
            if (IsFinite(place)) child.position = place;
            fbx_.scene.nodes.push_back(std::move(child));
            node = &fbx_.scene.nodes.back();
        }
        const Point3 l = FbxPoint(look), u = FbxPoint(up);
        node->look = IsFinite(l) && !(l == Point3()) ? l : Point3(0, 0, -1);
        node->up = SomeUp(node->look, IsFinite(u) ? u : Point3(0, 1, 0));
        return node;
    }

    void AddCameras() {
        for (unsigned i = 0; i < fbx_.from.mNumCameras; ++i) {
            const aiCamera& from = *fbx_.from.mCameras[i];
            ImportedNode* const node = NodeFor(from.mName, "camera", from.mLookAt, from.mUp, from.mPosition);
            if (!node) continue;
            ImportedCamera camera;
            camera.ortho = from.mOrthographicWidth > 0;
            camera.halfWidth = FiniteOr(double(from.mOrthographicWidth), 1);
            camera.fovX = std::clamp(FiniteOr(double(from.mHorizontalFOV), 0.8f), 0.001f, 3.1f);
            camera.nearClip = std::max(FiniteOr(double(from.mClipPlaneNear), 0), 0.0f);
            camera.farClip = std::max(FiniteOr(double(from.mClipPlaneFar), 0), 0.0f);
            node->camera = int(fbx_.scene.cameras.size());
            fbx_.scene.cameras.push_back(camera);
        }
    }

    // The reader halves lights at the file's decay start, where hosts begin to.
    static void ReadDecay(const aiLight& from, ImportedLight& light) {
        if (light.type == DIRECT_LGT) return;
        const float linear = from.mAttenuationLinear, square = from.mAttenuationQuadratic;
        const float start = square > 0 ? std::sqrt(2 / square) : 2 / linear;
        if (!(start > 0) || !std::isfinite(start)) return;
        light.decay = square > 0 ? DECAY_INVERSE_SQUARE : DECAY_INVERSE;
        light.decayStart = start;
    }

    void AddLights() {
        for (unsigned i = 0; i < fbx_.from.mNumLights; ++i) {
            const aiLight& from = *fbx_.from.mLights[i];
            ImportedNode* const node = NodeFor(from.mName, "light", from.mDirection, from.mUp, from.mPosition);
            if (!node) continue;
            ImportedLight light;
            light.type = from.mType == aiLightSource_DIRECTIONAL ? DIRECT_LGT
                         : from.mType == aiLightSource_SPOT      ? SPOT_LGT
                                                                 : OMNI_LGT;
            const aiColor3D& c = from.mColorDiffuse;
            light.color = {FiniteOr(double(c.r), 1), FiniteOr(double(c.g), 1), FiniteOr(double(c.b), 1)};
            constexpr float kDegrees = float(180.0 / std::numbers::pi);
            light.hotspot = std::clamp(FiniteOr(double(from.mAngleInnerCone), 0.7f) * kDegrees, 0.0f, 179.0f);
            light.falloff = std::clamp(FiniteOr(double(from.mAngleOuterCone), 0.8f) * kDegrees, 0.5f, 179.5f);
            ReadDecay(from, light);
            node->light = int(fbx_.scene.lights.size());
            fbx_.scene.lights.push_back(light);
        }
    }

    FbxFile& fbx_;
    std::vector<const aiNode*> from_; ///< of every node of the scene
};

template <class T, class Keys, class Make>
Track<T> ReadTrack(const FbxFile& fbx, const Keys* keys, unsigned count, double ticks, Make&& make) {
    Track<T> track;
    for (unsigned i = 0; i < count; ++i) {
        TrackKey<T> key;
        key.time = keys[i].mTime / ticks;
        if (!(std::fabs(key.time) < kLatestKey)) FailAt(fbx.file, 0, "has keys that are too far away in time");
        key.value = make(keys[i].mValue);
        if (track.keys.empty() || key.time > track.keys.back().time) track.keys.push_back(key);
    }
    return track;
}

void ReadChannel(FbxFile& fbx, const aiNodeAnim& channel, double ticks, std::set<int>& taken) {
    const auto at = fbx.nodeOf.find(channel.mNodeName.C_Str());
    if (at == fbx.nodeOf.end() || !taken.insert(at->second).second) return;
    ImportedNode& node = fbx.scene.nodes[size_t(at->second)];
    const auto point = [&](const aiVector3D& v) {
        if (!IsFinite(FbxPoint(v))) FailAt(fbx.file, 0, "has keys that are not finite");
        return FbxPoint(v);
    };
    const auto quat = [&](const aiQuaternion& q) {
        if (!IsFinite(Point3(q.x, q.y, q.z)) || !std::isfinite(q.w))
            FailAt(fbx.file, 0, "has keys that are not finite");
        return Normalize(Quat(-q.x, -q.y, -q.z, q.w));
    };
    node.positions = ReadTrack<Point3>(fbx, channel.mPositionKeys, channel.mNumPositionKeys, ticks, point);
    node.rotations = ReadTrack<Quat>(fbx, channel.mRotationKeys, channel.mNumRotationKeys, ticks, quat);
    node.scales = ReadTrack<Point3>(fbx, channel.mScalingKeys, channel.mNumScalingKeys, ticks, point);
}

void CheckName(const FbxFile& fbx, const std::string& name) {
    std::vector<std::string> names;
    for (unsigned i = 0; i < fbx.from.mNumAnimations; ++i) names.emplace_back(fbx.from.mAnimations[i]->mName.C_Str());
    CheckAnimationName(fbx.file, name, names);
}

} // namespace

void ReadFbxNodes(FbxFile& fbx) {
    NodeReader(fbx).Read();
}

void ReadFbxAnimations(FbxFile& fbx, const std::string& name) {
    CheckName(fbx, name);
    std::set<int> taken;
    for (unsigned i = 0; i < fbx.from.mNumAnimations; ++i) {
        const aiAnimation& animation = *fbx.from.mAnimations[i];
        if (!name.empty() && name != animation.mName.C_Str()) continue;
        const double ticks = animation.mTicksPerSecond > 0 ? animation.mTicksPerSecond : 25;
        for (unsigned c = 0; c < animation.mNumChannels; ++c) ReadChannel(fbx, *animation.mChannels[c], ticks, taken);
    }
}

} // namespace host
