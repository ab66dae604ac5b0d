// .obj files. tinyobjloader reads the numbers; the outline, scanned before, keeps it from bad input.

#include <tiny_obj_loader.h>

#include <sstream>

#include "import/mesh_build.h"
#include "import/mesh_import.h"
#include "import/obj_outline.h"

namespace host {

namespace {

using Indices = std::vector<tinyobj::index_t>;

std::vector<Point3> Points(const std::vector<float>& numbers) {
    std::vector<Point3> points(numbers.size() / 3);
    for (size_t i = 0; i < points.size(); ++i) points[i] = {numbers[3 * i], numbers[3 * i + 1], numbers[3 * i + 2]};
    return points;
}

// Bit of a smoothing group number: numbers beyond 32 begin again.
uint32_t GroupBit(unsigned int group) {
    return group == 0 ? 0 : 1u << ((group - 1) % 32);
}

// All faces of the file as one mesh.
class ObjBuilder {
public:
    ObjBuilder(const std::string& file, const ObjOutline& outline, const tinyobj::attrib_t& attrib)
        : file_(file), outline_(outline), attrib_(attrib) {
        mesh_.verts = Points(attrib.vertices);
        hasNormals_ = !attrib.normals.empty();
    }

    Mesh Build(const Indices& indices, const std::vector<unsigned int>& smoothing) {
        size_t corner = 0;
        for (size_t i = 0; i < outline_.polygons.size(); ++i) {
            AddPolygon(outline_.polygons[i], &indices[corner], GroupBit(smoothing[i]));
            corner += size_t(outline_.polygons[i].corners);
        }
        if (hasMapping_) AddMapping();
        if (outline_.hasColors) AddColors();
        if (!outline_.hasSmoothing) SmoothWithoutGroups();
        return std::move(mesh_);
    }
    /// Outline polygon of every face.
    const std::vector<int>& Polygons() const { return polygons_; }

private:
    void AddPolygon(const ObjPolygon& polygon, const tinyobj::index_t* corners, uint32_t group) {
        const int number = polygons_.empty() ? 0 : polygons_.back() + 1;
        ForEachFanTriangle(polygon.corners, [&](int a, int b, int c, uint32_t edges) {
            Face face;
            TVFace map;
            CornerNormals normals;
            const int at[3] = {a, b, c};
            for (int k = 0; k < 3; ++k) {
                const tinyobj::index_t& index = corners[at[k]];
                if (!HasIndex(index)) FailAt(file_, 0, "cannot be read as a mesh");
                face.v[k] = index.vertex_index;
                map.t[k] = index.texcoord_index;
                hasMapping_ |= index.texcoord_index >= 0;
                if (index.normal_index >= 0) {
                    const float* const n = &attrib_.normals[3 * size_t(index.normal_index)];
                    normals[size_t(k)] = {n[0], n[1], n[2]};
                } else {
                    hasNormals_ = false;
                }
            }
            face.flags = edges;
            face.SetMatID(polygon.material);
            face.smGroup = group;
            mesh_.faces.push_back(face);
            mapFaces_.push_back(map);
            normals_.push_back(normals);
            polygons_.push_back(number);
        });
    }

    // The outline has checked what the file says; this is about how it was read.
    bool HasIndex(const tinyobj::index_t& index) const {
        const auto below = [](int i, size_t values, size_t each) { return i < 0 || size_t(i) < values / each; };
        return index.vertex_index >= 0 && below(index.vertex_index, attrib_.vertices.size(), 3) &&
               below(index.texcoord_index, attrib_.texcoords.size(), 2) &&
               below(index.normal_index, attrib_.normals.size(), 3);
    }

    // Corners without a mapping vertex share one at the origin, behind the file's own.
    void AddMapping() {
        MeshMap& map = mesh_.maps[1];
        const size_t count = attrib_.texcoords.size() / 2;
        map.tv.reserve(count + 1);
        for (size_t i = 0; i < count; ++i)
            map.tv.push_back({attrib_.texcoords[2 * i], attrib_.texcoords[2 * i + 1], 0});
        map.tf = std::move(mapFaces_);
        for (TVFace& face : map.tf)
            for (int& t : face.t)
                if (t < 0) {
                    if (map.tv.size() == count) map.tv.push_back({});
                    t = int(count);
                }
    }

    void AddColors() {
        MeshMap& map = mesh_.maps[MAP_VERTCOLOR];
        map.tv = Points(attrib_.colors);
        map.tv.resize(mesh_.verts.size(), {1, 1, 1});
        for (const Face& f : mesh_.faces) map.tf.push_back({{f.v[0], f.v[1], f.v[2]}});
    }

    void SmoothWithoutGroups() {
        if (hasNormals_) return SmoothByNormals(mesh_, normals_);
        for (Face& f : mesh_.faces) f.smGroup = 1;
    }

    const std::string& file_;
    const ObjOutline& outline_;
    const tinyobj::attrib_t& attrib_;
    Mesh mesh_;
    std::vector<TVFace> mapFaces_;
    std::vector<CornerNormals> normals_;
    std::vector<int> polygons_;
    bool hasMapping_ = false, hasNormals_ = false;
};

void AddFaceSets(Mesh& mesh, const ObjOutline& outline, const std::vector<int>& polygons) {
    for (const std::string& name : outline.groups) mesh.faceSets.emplace_back(name, BitArray(mesh.getNumFaces()));
    for (size_t f = 0; f < polygons.size(); ++f) {
        const int group = outline.polygons[size_t(polygons[f])].group;
        if (group >= 0) mesh.faceSets[size_t(group)].second.Set(int(f));
    }
}

std::vector<ImportedMesh> SplitByObject(const std::string& file, const ObjOutline& outline, Mesh mesh,
                                        const std::vector<int>& polygons) {
    std::vector<std::vector<int>> faces(outline.objects.size());
    for (size_t f = 0; f < polygons.size(); ++f)
        faces[size_t(outline.polygons[size_t(polygons[f])].object)].push_back(int(f));
    std::vector<ImportedMesh> out;
    for (size_t i = 0; i < faces.size(); ++i) {
        if (faces[i].empty()) continue;
        ImportedMesh m;
        m.name = outline.objects[i].empty() ? FileStem(file) : outline.objects[i];
        m.materials = outline.materials;
        // The vertices of a single object stay as they are, used or not.
        m.mesh = faces[i].size() == polygons.size() ? std::move(mesh) : ExtractFaces(mesh, faces[i]);
        out.push_back(std::move(m));
    }
    return out;
}

} // namespace

std::vector<ImportedMesh> ImportObj(const std::string& file, const std::string& content) {
    const ObjOutline outline = ScanObj(file, content);
    tinyobj::attrib_t attrib;
    std::vector<tinyobj::shape_t> shapes;
    std::vector<tinyobj::material_t> materials;
    std::string warning, error;
    std::istringstream stream(outline.geometry);
    const bool read = tinyobj::LoadObj(&attrib, &shapes, &materials, &warning, &error, &stream, nullptr, false);
    if (!read || shapes.size() != 1 || shapes[0].mesh.num_face_vertices.size() != outline.polygons.size())
        FailAt(file, 0,
               "cannot be read as a mesh" + (error.empty() ? "" : " (" + error.substr(0, error.find('\n')) + ")"));
    for (size_t i = 0; i < outline.polygons.size(); ++i)
        if (shapes[0].mesh.num_face_vertices[i] != outline.polygons[i].corners)
            FailAt(file, 0, "cannot be read as a mesh");
    ObjBuilder builder(file, outline, attrib);
    Mesh mesh = builder.Build(shapes[0].mesh.indices, shapes[0].mesh.smoothing_group_ids);
    AddFaceSets(mesh, outline, builder.Polygons());
    return SplitByObject(file, outline, std::move(mesh), builder.Polygons());
}

} // namespace host
