// Meshes and lines of glTF files.

#include <algorithm>

#include "import/file_error.h"
#include "import/gltf_parts.h"
#include "import/part_mesh.h"
#include "shapes/shape_builder.h"

namespace host {

namespace {

using Attributes = std::map<std::string, int>;

// One primitive of a mesh on its way into a part.
class PrimitiveReader {
public:
    PrimitiveReader(GltfFile& gltf, const tinygltf::Primitive& primitive, std::string what)
        : gltf_(gltf), primitive_(primitive), what_(std::move(what)) {
        const int accessor = Find("POSITION");
        if (accessor < 0) FailAt(gltf_.file, 0, what_ + " has no positions, expected the attribute POSITION");
        part_.positions = GltfPoints(gltf_, accessor, what_ + " POSITION");
        if (part_.positions.size() > size_t(kMostSceneElements))
            FailAt(gltf_.file, 0, what_ + " has too many vertices");
        ReadOrder();
    }

    bool IsLines() const { return Mode() >= TINYGLTF_MODE_LINE && Mode() <= TINYGLTF_MODE_LINE_STRIP; }
    bool IsFaces() const { return Mode() >= TINYGLTF_MODE_TRIANGLES && Mode() <= TINYGLTF_MODE_TRIANGLE_FAN; }

    MeshPart Part(size_t morphs) {
        if (primitive_.material >= 0 && size_t(primitive_.material) < gltf_.scene.materials.size())
            part_.material = primitive_.material;
        if (const int a = Find("NORMAL"); a >= 0) part_.normals = PointsOf(a, "NORMAL");
        ReadMaps();
        ReadColors();
        ReadInfluences();
        for (size_t m = 0; m < morphs; ++m) ReadMorph(m);
        AddFaces();
        return std::move(part_);
    }

    // Polylines of vertices; those that close repeat their first one.
    std::vector<std::vector<int>> Lines() const {
        std::vector<std::vector<int>> lines;
        if (Mode() == TINYGLTF_MODE_LINE) {
            for (size_t i = 0; i + 1 < order_.size(); i += 2) lines.push_back({order_[i], order_[i + 1]});
        } else if (order_.size() >= 2) {
            lines.push_back(order_);
            if (Mode() == TINYGLTF_MODE_LINE_LOOP) lines.back().push_back(order_.front());
        }
        return lines;
    }
    const std::vector<Point3>& Positions() const { return part_.positions; }

private:
    int Mode() const { return primitive_.mode < 0 ? TINYGLTF_MODE_TRIANGLES : primitive_.mode; }
    int Find(const std::string& name) const { return FindIn(primitive_.attributes, name); }
    static int FindIn(const Attributes& attributes, const std::string& name) {
        const auto at = attributes.find(name);
        return at == attributes.end() ? -1 : at->second;
    }
    size_t Count() const { return part_.positions.size(); }

    template <class T>
    std::vector<T> Counted(std::vector<T> values, size_t each, const char* name) const {
        if (values.size() != Count() * each)
            FailAt(gltf_.file, 0,
                   what_ + " has " + std::to_string(values.size() / each) + " values of " + name + " for " +
                       std::to_string(Count()) + " vertices, expected one each");
        return values;
    }
    std::vector<Point3> PointsOf(int accessor, const char* name) {
        return Counted(GltfPoints(gltf_, accessor, what_ + " " + name), 1, name);
    }

    // The vertices in the order of the faces or lines.
    void ReadOrder() {
        if (primitive_.indices < 0) {
            order_.resize(Count());
            for (size_t i = 0; i < Count(); ++i) order_[i] = int(i);
            return;
        }
        for (const uint32_t i : GltfIndices(gltf_, primitive_.indices, 1, what_ + " indices")) {
            if (i >= Count())
                FailAt(gltf_.file, 0,
                       what_ + " has vertex index " + std::to_string(i) + ", which is out of range, expected 0 .. " +
                           std::to_string(int64_t(Count()) - 1));
            order_.push_back(int(i));
        }
    }

    // intended: texture coordinates of the file go down from the upper edge; mapping channels go up.
    void ReadMaps() {
        for (size_t set = 0; set < kMostMapSets; ++set) {
            const int accessor = Find("TEXCOORD_" + std::to_string(set));
            if (accessor < 0) continue;
            const std::vector<float> uv = Counted(GltfFloats(gltf_, accessor, 2, what_ + " TEXCOORD"), 2, "TEXCOORD");
            part_.maps.resize(set + 1);
            for (size_t v = 0; v < Count(); ++v) part_.maps[set].push_back({uv[2 * v], 1.0f - uv[2 * v + 1], 0});
        }
        if (Find("TEXCOORD_" + std::to_string(kMostMapSets)) >= 0)
            gltf_.scene.Note("more than 8 sets of texture coordinates: the others are left out");
    }

    void ReadColors() {
        const int accessor = Find("COLOR_0"), components = GltfComponents(gltf_, accessor);
        if (accessor < 0) return;
        if (components != 3 && components != 4)
            FailAt(gltf_.file, 0, what_ + " has colours of another kind, expected 3 or 4 numbers each");
        const std::vector<float> c =
            Counted(GltfFloats(gltf_, accessor, components, what_ + " COLOR_0"), size_t(components), "COLOR_0");
        for (size_t v = 0; v < Count(); ++v) {
            const float* const p = &c[v * size_t(components)];
            part_.colors.push_back({p[0], p[1], p[2]});
            if (components == 4) part_.alphas.push_back(p[3]);
        }
    }

    void ReadInfluences() {
        for (int set = 0; set < 4; ++set) {
            const int joints = Find("JOINTS_" + std::to_string(set)), weights = Find("WEIGHTS_" + std::to_string(set));
            if (joints < 0 || weights < 0) return;
            const auto j = Counted(GltfIndices(gltf_, joints, 4, what_ + " JOINTS"), 4, "JOINTS");
            const auto w = Counted(GltfFloats(gltf_, weights, 4, what_ + " WEIGHTS"), 4, "WEIGHTS");
            part_.influences.resize(Count());
            for (size_t i = 0; i < w.size(); ++i)
                if (w[i] > 0 && j[i] < kMostSceneNodes) part_.influences[i / 4].push_back({0, int(j[i]), w[i]});
        }
    }

    void ReadMorph(size_t m) {
        std::vector<Point3>& deltas = part_.morphs.emplace_back(Count());
        if (m >= primitive_.targets.size()) return;
        if (const int accessor = FindIn(primitive_.targets[m], "POSITION"); accessor >= 0)
            deltas = PointsOf(accessor, "POSITION of a morph target");
    }

    void AddFaces() {
        const auto add = [&](size_t a, size_t b, size_t c) {
            part_.polygons.push_back({order_[a], order_[b], order_[c]});
        };
        const size_t n = order_.size();
        if (Mode() == TINYGLTF_MODE_TRIANGLES)
            for (size_t i = 0; i + 2 < n; i += 3) add(i, i + 1, i + 2);
        if (Mode() == TINYGLTF_MODE_TRIANGLE_STRIP)
            for (size_t i = 0; i + 2 < n; ++i) i % 2 ? add(i + 1, i, i + 2) : add(i, i + 1, i + 2);
        if (Mode() == TINYGLTF_MODE_TRIANGLE_FAN)
            for (size_t i = 1; i + 1 < n; ++i) add(0, i, i + 1);
    }

    GltfFile& gltf_;
    const tinygltf::Primitive& primitive_;
    std::string what_;
    MeshPart part_;
    std::vector<int> order_;
};

size_t CountMorphs(const GltfFile& gltf, const tinygltf::Mesh& mesh) {
    size_t morphs = 0;
    for (const tinygltf::Primitive& p : mesh.primitives) morphs = std::max(morphs, p.targets.size());
    if (morphs > 10'000)
        FailAt(gltf.file, 0, "has " + std::to_string(morphs) + " morph targets in a mesh, expected at most 10000");
    return morphs;
}

std::vector<std::string> MorphNames(const tinygltf::Mesh& mesh) {
    std::vector<std::string> names;
    if (!mesh.extras.Has("targetNames")) return names;
    const tinygltf::Value& list = mesh.extras.Get("targetNames");
    for (size_t i = 0; i < list.ArrayLen(); ++i)
        names.push_back(list.Get(int(i)).IsString() ? list.Get(int(i)).Get<std::string>() : std::string());
    return names;
}

void AddLines(SceneMesh& mesh, const PrimitiveReader& reader, const std::string& file) {
    for (const Point3& p : reader.Positions())
        if (!IsFinite(p)) FailAt(file, 0, "a position of a line is not finite, expected finite numbers");
    BezierShape shape = ShapeFromLines(reader.Positions(), reader.Lines());
    if (shape.splines.empty()) return;
    if (!mesh.shape) mesh.shape.emplace();
    for (Spline3D& spline : shape.splines) mesh.shape->splines.push_back(std::move(spline));
}

SceneMesh ReadMesh(GltfFile& gltf, size_t number) {
    const tinygltf::Mesh& mesh = gltf.model.meshes[number];
    const size_t morphs = CountMorphs(gltf, mesh);
    gltf.morphs.push_back(morphs);
    const std::string what = "mesh " + (mesh.name.empty() ? std::to_string(number) : Quoted(mesh.name));
    PartMeshBuilder builder(gltf.file, mesh.name);
    SceneMesh lines;
    for (const tinygltf::Primitive& primitive : mesh.primitives) {
        PrimitiveReader reader(gltf, primitive, what);
        if (reader.IsFaces()) {
            builder.Add(reader.Part(morphs));
        } else if (reader.IsLines()) {
            AddLines(lines, reader, gltf.file);
        } else {
            gltf.scene.Note("points of " + what + " are left out");
        }
    }
    SceneMesh out = builder.Finish(MorphNames(mesh));
    out.shape = std::move(lines.shape);
    for (size_t m = 0; m < out.morphs.size() && m < mesh.weights.size(); ++m)
        out.morphs[m].weight = GltfFloat(mesh.weights[m]);
    return out;
}

} // namespace

void ReadGltfMeshes(GltfFile& gltf) {
    for (size_t i = 0; i < gltf.model.meshes.size(); ++i) gltf.scene.meshes.push_back(ReadMesh(gltf, i));
}

} // namespace host
