// .ply files.

#include <array>
#include <cmath>

#include "import/mesh_build.h"
#include "import/mesh_import.h"
#include "import/ply_values.h"
#include "import/text_scan.h"

namespace host {

namespace {

// Whole-number colours go up to the largest value of their type, others are fractions.
double ColorScale(PlyType type) {
    switch (type) {
    case PlyType::kUint8:
        return 255.0;
    case PlyType::kUint16:
        return 65535.0;
    default:
        return 1.0;
    }
}

// Coordinates and colours that are not finite count as 0.
float FiniteOrZero(double v) {
    return FitsFloat(v) ? float(v) : 0.0f;
}

class PlyBuilder {
public:
    PlyBuilder(const std::string& file, const std::string& content)
        : header_(ReadPlyHeader(file, content)), values_(file, content, header_), file_(file) {}

    std::vector<ImportedMesh> Build() {
        PlyRow row;
        for (const PlyElement& element : header_.elements) {
            values_.BeginElement(element);
            if (element.name == "vertex") {
                ReadVertices(element, row);
            } else if (element.name == "face") {
                ReadFaces(element, row);
            } else {
                for (size_t i = 0; i < element.count && !element.properties.empty(); ++i) values_.Next(row);
            }
        }
        if (mesh_.faces.empty()) FailAt(file_, 0, "has no faces, expected at least one");
        FinishMaps();
        std::vector<ImportedMesh> out(1);
        out[0].name = FileStem(file_);
        out[0].mesh = std::move(mesh_);
        return out;
    }

private:
    // Places of the properties of a vertex; -1 where there is none.
    struct VertexPlaces {
        std::array<int, 3> position, color;
        std::array<int, 2> map;
    };

    VertexPlaces FindPlaces(const PlyElement& element) const {
        VertexPlaces p;
        p.position = {element.Find("x"), element.Find("y"), element.Find("z")};
        p.color = {element.FindAny({"red", "diffuse_red", "r"}), element.FindAny({"green", "diffuse_green", "g"}),
                   element.FindAny({"blue", "diffuse_blue", "b"})};
        p.map = {element.FindAny({"u", "s", "texture_u", "texture_s"}),
                 element.FindAny({"v", "t", "texture_v", "texture_t"})};
        for (const int at : p.position)
            if (at < 0 || element.properties[size_t(at)].isList)
                FailAt(file_, 0, "vertices have no position, expected the properties x, y and z");
        return p;
    }

    static bool HasSingleValues(const PlyElement& element, std::initializer_list<int> places) {
        for (const int at : places)
            if (at < 0 || element.properties[size_t(at)].isList) return false;
        return true;
    }

    void ReadVertices(const PlyElement& element, PlyRow& row) {
        const VertexPlaces at = FindPlaces(element);
        hasColor_ = HasSingleValues(element, {at.color[0], at.color[1], at.color[2]});
        hasMap_ = HasSingleValues(element, {at.map[0], at.map[1]});
        mesh_.verts.clear();
        mesh_.verts.reserve(element.count);
        for (size_t i = 0; i < element.count; ++i) {
            values_.Next(row);
            Point3 p, color;
            for (int k = 0; k < 3; ++k) {
                const double value = row.values[size_t(at.position[size_t(k)])];
                if (!FitsFloat(value)) values_.FailRow("has a position that is not finite, expected finite numbers");
                p[k] = float(value);
                if (!hasColor_) continue;
                const size_t place = size_t(at.color[size_t(k)]);
                color[k] = FiniteOrZero(row.values[place] / ColorScale(element.properties[place].type));
            }
            mesh_.verts.push_back(p);
            if (hasColor_) colors_.push_back(color);
            if (hasMap_)
                map_.push_back(
                    {FiniteOrZero(row.values[size_t(at.map[0])]), FiniteOrZero(row.values[size_t(at.map[1])]), 0});
        }
    }

    void ReadFaces(const PlyElement& element, PlyRow& row) {
        const int list = element.FindAny({"vertex_indices", "vertex_index"});
        if (list < 0 || !element.properties[size_t(list)].isList)
            FailAt(file_, 0, "faces have no corners, expected the list property vertex_indices");
        const int mapList = element.Find("texcoord");
        for (size_t i = 0; i < element.count; ++i) {
            values_.Next(row);
            const std::vector<double>& corners = row.lists[size_t(list)];
            if (corners.size() < 3)
                values_.FailRow("has " + std::to_string(corners.size()) + " corners, expected 3 or more");
            for (const double v : corners) CheckIndex(v);
            const std::vector<double>* const map = mapList < 0 ? nullptr : &row.lists[size_t(mapList)];
            AddFan(corners, map && map->size() == 2 * corners.size() ? map : nullptr);
        }
    }

    void CheckIndex(double v) {
        const double count = double(mesh_.verts.size());
        if (v >= 0 && v < count && v == std::floor(v)) return;
        char text[40];
        std::snprintf(text, sizeof text, "%.15g", v);
        values_.FailRow(std::string("has vertex index ") + text + ", which is out of range, expected 0 .. " +
                        std::to_string(int64_t(mesh_.verts.size()) - 1));
    }

    void AddFan(const std::vector<double>& corners, const std::vector<double>* map) {
        const int firstMap = int(faceMap_.size());
        hasFaceMap_ |= map != nullptr;
        if (map)
            for (size_t k = 0; k < corners.size(); ++k)
                faceMap_.push_back({FiniteOrZero((*map)[2 * k]), FiniteOrZero((*map)[2 * k + 1]), 0});
        ForEachFanTriangle(int(corners.size()), [&](int a, int b, int c, uint32_t edges) {
            Face face;
            const int at[3] = {a, b, c};
            TVFace mapFace{{-1, -1, -1}};
            for (int k = 0; k < 3; ++k) {
                face.v[k] = int(corners[size_t(at[k])]);
                if (map) mapFace.t[k] = firstMap + at[k];
            }
            face.flags = edges;
            face.smGroup = 1;
            mesh_.faces.push_back(face);
            mapFaces_.push_back(mapFace);
        });
    }

    void FinishMaps() {
        if (hasColor_) AddVertexMap(MAP_VERTCOLOR, std::move(colors_));
        if (hasMap_) {
            AddVertexMap(1, std::move(map_));
        } else if (hasFaceMap_) {
            faceMap_.push_back({});
            for (TVFace& f : mapFaces_)
                for (int& t : f.t)
                    if (t < 0) t = int(faceMap_.size()) - 1;
            mesh_.maps[1] = {std::move(faceMap_), std::move(mapFaces_)};
        }
    }
    void AddVertexMap(int channel, std::vector<Point3> values) {
        MeshMap& map = mesh_.maps[channel];
        map.tv = std::move(values);
        for (const Face& f : mesh_.faces) map.tf.push_back({{f.v[0], f.v[1], f.v[2]}});
    }

    const PlyHeader header_;
    PlyValues values_;
    const std::string& file_;
    Mesh mesh_;
    std::vector<Point3> colors_, map_, faceMap_;
    std::vector<TVFace> mapFaces_;
    bool hasColor_ = false, hasMap_ = false, hasFaceMap_ = false;
};

} // namespace

std::vector<ImportedMesh> ImportPly(const std::string& file, const std::string& content) {
    return PlyBuilder(file, content).Build();
}

} // namespace host
