// Animations of glTF files.

#include <algorithm>
#include <cmath>
#include <set>

#include "import/file_error.h"
#include "import/gltf_parts.h"

namespace host {

namespace {

class ChannelReader {
public:
    ChannelReader(GltfFile& gltf, const tinygltf::Animation& animation, size_t number)
        : gltf_(gltf), animation_(animation), what_("animation " + std::to_string(number)) {}

    void Read(const tinygltf::AnimationChannel& channel, std::set<std::pair<int, std::string>>& taken) {
        if (channel.target_node < 0 || size_t(channel.target_node) >= gltf_.nodeOf.size()) return;
        const int at = gltf_.nodeOf[size_t(channel.target_node)];
        if (at < 0 || !taken.insert({at, channel.target_path}).second) return;
        if (channel.sampler < 0 || size_t(channel.sampler) >= animation_.samplers.size())
            FailAt(gltf_.file, 0, what_ + " names a sampler that is not there");
        ImportedNode& node = gltf_.scene.nodes[size_t(at)];
        Begin(animation_.samplers[size_t(channel.sampler)]);
        if (channel.target_path == "translation") {
            node.positions = Points();
        } else if (channel.target_path == "scale") {
            node.scales = Points();
        } else if (channel.target_path == "rotation") {
            node.rotations = Rotations();
        } else if (channel.target_path == "weights") {
            ReadWeights(node);
        }
    }

private:
    void Begin(const tinygltf::AnimationSampler& sampler) {
        sampler_ = &sampler;
        kind_ = sampler.interpolation == "STEP"          ? TrackKind::kStep
                : sampler.interpolation == "CUBICSPLINE" ? TrackKind::kCubic
                                                         : TrackKind::kLinear;
        times_ = GltfFloats(gltf_, sampler.input, 1, what_ + " times");
        for (size_t i = 0; i < times_.size(); ++i)
            if (!(std::fabs(double(times_[i])) < kLatestKey) || (i > 0 && times_[i] < times_[i - 1]))
                FailAt(gltf_.file, 0, what_ + " has times that do not ascend or are too far away");
    }

    // Values of all keys: one each, or three with the tangents around it.
    std::vector<float> Values(int components, size_t each) {
        std::vector<float> values = GltfFloats(gltf_, sampler_->output, components, what_ + " values");
        const size_t perKey = size_t(components) * each * (kind_ == TrackKind::kCubic ? 3 : 1);
        if (values.size() < times_.size() * perKey)
            FailAt(gltf_.file, 0, what_ + " has fewer values than times, expected one each");
        if (!std::all_of(values.begin(), values.end(), [](float v) { return std::isfinite(v); }))
            FailAt(gltf_.file, 0, what_ + " has values that are not finite");
        return values;
    }

    // Makes a track of values with `width` numbers; of several series side by side the one at `series`.
    template <class T, class Make>
    Track<T> MakeTrack(const std::vector<float>& values, size_t width, size_t each, size_t series, Make&& make) {
        Track<T> track;
        track.kind = kind_;
        for (size_t i = 0; i < times_.size(); ++i) {
            TrackKey<T> key;
            key.time = double(times_[i]);
            const auto at = [&](size_t part, size_t parts) {
                return make(&values[((i * parts + part) * each + series) * width]);
            };
            if (kind_ == TrackKind::kCubic) {
                key.in = at(0, 3);
                key.value = at(1, 3);
                key.out = at(2, 3);
            } else {
                key.value = at(0, 1);
            }
            track.keys.push_back(key);
        }
        return track;
    }

    Track<Point3> Points() {
        return MakeTrack<Point3>(Values(3, 1), 3, 1, 0, [](const float* v) { return Point3(v[0], v[1], v[2]); });
    }
    Track<Quat> Rotations() {
        return MakeTrack<Quat>(Values(4, 1), 4, 1, 0, [](const float* v) { return GltfQuat(v[0], v[1], v[2], v[3]); });
    }
    void ReadWeights(ImportedNode& node) {
        const size_t morphs = node.mesh < 0 ? 0 : gltf_.morphs[size_t(node.mesh)];
        if (morphs == 0) return;
        const std::vector<float> values = Values(1, morphs);
        for (size_t m = 0; m < morphs; ++m)
            node.weightTracks.push_back(MakeTrack<float>(values, 1, morphs, m, [](const float* v) { return *v; }));
    }

    GltfFile& gltf_;
    const tinygltf::Animation& animation_;
    std::string what_;
    const tinygltf::AnimationSampler* sampler_ = nullptr;
    TrackKind kind_ = TrackKind::kLinear;
    std::vector<float> times_;
};

void CheckName(const GltfFile& gltf, const std::string& name) {
    std::vector<std::string> names;
    for (const tinygltf::Animation& a : gltf.model.animations) names.push_back(a.name);
    CheckAnimationName(gltf.file, name, names);
}

} // namespace

void ReadGltfAnimations(GltfFile& gltf, const std::string& name) {
    CheckName(gltf, name);
    std::set<std::pair<int, std::string>> taken;
    for (size_t i = 0; i < gltf.model.animations.size(); ++i) {
        const tinygltf::Animation& animation = gltf.model.animations[i];
        if (!name.empty() && animation.name != name) continue;
        ChannelReader reader(gltf, animation, i);
        for (const tinygltf::AnimationChannel& channel : animation.channels) reader.Read(channel, taken);
    }
}

} // namespace host
