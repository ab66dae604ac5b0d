#include "import/part_mesh.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "import/file_error.h"

namespace host {

namespace {

void AppendWords(std::vector<uint32_t>& out, const Point3& p) {
    uint32_t words[3];
    RecordWelder::PutWords(p, words);
    out.insert(out.end(), words, words + 3);
}

} // namespace

void PartMeshBuilder::CheckPart(const MeshPart& part) const {
    for (const std::vector<int>& polygon : part.polygons)
        for (const int v : polygon) {
            if (v < 0 || size_t(v) >= part.positions.size())
                FailAt(file_, 0,
                       "vertex index " + std::to_string(v) + " of " + Quoted(name_) +
                           " is out of range, expected 0 .. " + std::to_string(int64_t(part.positions.size()) - 1));
            if (!IsFinite(part.positions[size_t(v)]))
                FailAt(file_, 0, "position of " + Quoted(name_) + " is not finite, expected finite numbers");
        }
}

void PartMeshBuilder::CountSets() {
    for (const MeshPart& part : parts_) {
        CheckPart(part);
        maps_ = std::max(maps_, std::min(part.maps.size(), kMostMapSets));
        morphs_ = std::max(morphs_, part.morphs.size());
        hasNormals_ |= !part.normals.empty();
        isMoved_ |= !part.influences.empty() || !part.morphs.empty();
        hasColors_ |= !part.colors.empty();
        hasAlphas_ |= !part.alphas.empty();
    }
    if (hasColors_) channels_[MAP_VERTCOLOR];
    if (hasAlphas_) channels_[MAP_ALPHA];
    for (size_t i = 0; i < maps_; ++i) channels_[int(i) + 1];
    out_.morphs.resize(morphs_);
    vertexWelder_.emplace(4 + 3 * morphs_);
}

// Lists of influences by number, so that they are compared as one word.
int PartMeshBuilder::InfluenceId(const std::vector<ImportedInfluence>& list) {
    if (list.empty()) return 0;
    std::vector<uint32_t> words;
    for (const ImportedInfluence& i : list) {
        words.push_back(uint32_t(i.joint));
        words.push_back(std::bit_cast<uint32_t>(i.weight));
    }
    return influenceIds_.try_emplace(std::move(words), int(influenceIds_.size()) + 1).first->second;
}

void PartMeshBuilder::NumberVertices(const MeshPart& part) {
    numbers_.assign(part.positions.size(), 0);
    // Files keep the vertices of several parts in one list: only those of this part count.
    std::vector<bool> used(part.positions.size(), false);
    for (const std::vector<int>& polygon : part.polygons)
        for (const int v : polygon) used[size_t(v)] = true;
    std::vector<uint32_t> record;
    for (size_t v = 0; v < part.positions.size(); ++v) {
        if (!used[v]) continue;
        record.clear();
        AppendWords(record, part.positions[v]);
        record.push_back(part.influences.empty() ? 0 : uint32_t(InfluenceId(part.influences[v])));
        for (size_t m = 0; m < morphs_; ++m)
            AppendWords(record, m < part.morphs.size() ? FiniteOrZero(part.morphs[m][v]) : Point3());
        bool added = false;
        const int number = numbers_[v] = vertexWelder_->Number(record.data(), added);
        if (!added) continue;
        out_.mesh.verts.push_back(part.positions[v]);
        for (size_t m = 0; m < morphs_; ++m)
            out_.morphs[m].deltas.push_back(m < part.morphs.size() ? FiniteOrZero(part.morphs[m][v]) : Point3());
        if (part.influences.empty()) continue;
        for (ImportedInfluence i : part.influences[v]) {
            i.vertex = number;
            out_.influences.push_back(i);
        }
    }
}

int PartMeshBuilder::NormalId(const Point3& normal, int vertex) {
    uint32_t words[4] = {0, 0, 0, isMoved_ ? uint32_t(vertex) : 0};
    RecordWelder::PutWords(normal, words);
    bool added = false;
    const int number = normalWelder_.Number(words, added);
    if (added) specNormals_.normals.push_back(normal);
    return number;
}

int PartMeshBuilder::MaterialId(int material) {
    const auto known = std::find(out_.materials.begin(), out_.materials.end(), material);
    if (known != out_.materials.end()) return int(known - out_.materials.begin());
    out_.materials.push_back(material);
    return int(out_.materials.size()) - 1;
}

void PartMeshBuilder::AddFaces(const MeshPart& part) {
    const int material = MaterialId(part.material);
    for (const std::vector<int>& polygon : part.polygons)
        ForEachFanTriangle(int(polygon.size()), [&](int a, int b, int c, uint32_t edges) {
            AddFace(part, {polygon[size_t(a)], polygon[size_t(b)], polygon[size_t(c)]}, edges, material);
        });
}

void PartMeshBuilder::AddFace(const MeshPart& part, const std::array<int, 3>& corners, uint32_t edges, int material) {
    Face face;
    face.flags = edges;
    face.SetMatID(material);
    CornerNormals normals;
    TVFace normalFace{{-1, -1, -1}};
    for (size_t k = 0; k < 3; ++k) {
        const size_t v = size_t(corners[k]);
        face.v[k] = numbers_[v];
        if (part.normals.empty()) continue;
        normals[k] = Normalize(FiniteOrZero(part.normals[v]));
        if (!(normals[k] == Point3())) normalFace.t[k] = NormalId(normals[k], face.v[k]);
    }
    for (auto& [number, channel] : channels_) {
        TVFace map;
        for (size_t k = 0; k < 3; ++k) {
            const size_t v = size_t(corners[k]);
            Point3 value;
            if (number == MAP_VERTCOLOR) {
                value = part.colors.empty() ? Point3(1, 1, 1) : part.colors[v];
            } else if (number == MAP_ALPHA) {
                const float alpha = part.alphas.empty() ? 1.0f : part.alphas[v];
                value = {alpha, alpha, alpha};
            } else if (size_t(number) <= part.maps.size() && !part.maps[size_t(number) - 1].empty()) {
                value = part.maps[size_t(number) - 1][v];
            }
            map.t[k] = channel.values.Number(FiniteOrZero(value));
        }
        channel.faces.push_back(map);
    }
    out_.mesh.faces.push_back(face);
    normals_.push_back(normals);
    specNormals_.faces.push_back(normalFace);
}

SceneMesh PartMeshBuilder::Finish(const std::vector<std::string>& morphNames) {
    CountSets();
    for (const MeshPart& part : parts_) {
        NumberVertices(part);
        AddFaces(part);
    }
    if (hasNormals_) {
        SmoothByNormals(out_.mesh, normals_);
        out_.mesh.specNormals = std::move(specNormals_);
    }
    for (auto& [number, channel] : channels_)
        out_.mesh.maps[number] = {std::move(channel.values.points), std::move(channel.faces)};
    for (size_t m = 0; m < morphs_; ++m)
        out_.morphs[m].name =
            m < morphNames.size() && !morphNames[m].empty() ? morphNames[m] : "target_" + std::to_string(m + 1);
    return std::move(out_);
}

} // namespace host
