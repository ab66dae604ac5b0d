#include "import/imported_scene.h"

#include <algorithm>
#include <cmath>

#include "core/controllers.h"
#include "core/nearest_name.h"
#include "import/file_error.h"
#include "import/near_file.h"

namespace host {

namespace {

// Signed permutations are the only turns that occur: +-1 in every row.
Point3 PermutedScale(const Point3& scale, const Matrix3& turn) {
    Point3 out;
    for (int i = 0; i < 3; ++i) {
        const Point3& row = turn.GetRow(i);
        int largest = 0;
        for (int k = 1; k < 3; ++k)
            if (std::fabs(row[k]) > std::fabs(row[largest])) largest = k;
        out[largest] = scale[i];
    }
    return out;
}

Quat Conjugate(const Quat& q) {
    return {-q.x, -q.y, -q.z, q.w};
}

// The change of a node's own space: what a point of the file's is in the scene's, as turn and uniform scale.
struct SpaceChange {
    Matrix3 turn;
    float scale = 1;
    Quat Rotation() const { return QuatFromMatrix(turn); }
    Matrix3 Matrix() const { return turn * ScaleMatrix({scale, scale, scale}); }
};

// Turns a camera's or light's look to -Z and its up to +Y.
Matrix3 FrameTurn(const ImportedNode& node) {
    const Point3 back = Normalize(-node.look), right = Normalize(CrossProd(node.up, back));
    if (back == Point3() || right == Point3()) return Matrix3();
    return Inverse(Matrix3(right, CrossProd(back, right), back, Point3()));
}

// Puts nodes into another space: local' = inverse(own) * local * parent's.
class NodePlacer {
public:
    NodePlacer(const SpaceChange& own, const SpaceChange& parent)
        : own_(own), ownBack_(Conjugate(own.Rotation())), parent_(parent.Matrix()), parentTurn_(parent.Rotation()) {}

    void Place(ImportedNode& node) const {
        if (node.matrix) node.matrix = Inverse(own_.Matrix()) * *node.matrix * parent_;
        node.position = node.position * parent_;
        node.rotation = Turned(node.rotation);
        node.scale = PermutedScale(node.scale, own_.turn);
        for (auto& key : node.positions.keys)
            for (Point3* const p : {&key.value, &key.in, &key.out}) *p = VectorTransform(*p, parent_);
        for (auto& key : node.rotations.keys)
            for (Quat* const q : {&key.value, &key.in, &key.out}) *q = Turned(*q);
        for (auto& key : node.scales.keys)
            for (Point3* const p : {&key.value, &key.in, &key.out}) *p = PermutedScale(*p, own_.turn);
    }

private:
    Quat Turned(const Quat& q) const { return ownBack_ * q * parentTurn_; }
    SpaceChange own_;
    Quat ownBack_;
    Matrix3 parent_;
    Quat parentTurn_;
};

void CheckPoints(const std::string& file, const std::vector<Point3>& points, const std::string& what) {
    if (!std::all_of(points.begin(), points.end(), IsFinite))
        FailAt(file, 0, "positions of " + what + " are too far away, expected finite ones after scaling");
}

void PlaceMesh(const std::string& file, SceneMesh& mesh, const SpaceChange& change, size_t number) {
    const Matrix3 m = change.Matrix();
    for (Point3& p : mesh.mesh.verts) p = p * m;
    CheckPoints(file, mesh.mesh.verts, "mesh " + std::to_string(number));
    for (Point3& n : mesh.mesh.specNormals.normals) n = n * change.turn;
    for (ImportedMorph& morph : mesh.morphs) {
        for (Point3& d : morph.deltas) d = VectorTransform(d, m);
        CheckPoints(file, morph.deltas, "a morph target of mesh " + std::to_string(number));
    }
    mesh.mesh.InvalidateGeomCache();
    if (!mesh.shape) return;
    for (Spline3D& spline : mesh.shape->splines)
        for (SplineKnot& k : spline.knots) {
            for (Point3* const p : {&k.point, &k.inVec, &k.outVec}) *p = *p * m;
            CheckPoints(file, {k.point}, "lines");
        }
}

} // namespace

void ImportedScene::Note(const std::string& text) {
    constexpr size_t kMostNotes = 20;
    if (notes.size() < kMostNotes && std::find(notes.begin(), notes.end(), text) == notes.end()) notes.push_back(text);
}

Matrix3 ImportMatrix(const ImportOptions& options) {
    const Matrix3 turn = options.up == UpAxis::kY ? Matrix3({1, 0, 0}, {0, 0, 1}, {0, -1, 0}, {0, 0, 0}) : Matrix3();
    return turn * ScaleMatrix({options.scale, options.scale, options.scale});
}

void PlaceScene(const std::string& file, ImportedScene& scene, const ImportOptions& options) {
    const SpaceChange whole{ImportMatrix({1, options.up}), options.scale};
    std::vector<SpaceChange> changes;
    for (ImportedNode& node : scene.nodes) {
        SpaceChange own = whole;
        if (node.camera >= 0 || node.light >= 0) own.turn = FrameTurn(node);
        NodePlacer(own, node.parent < 0 ? whole : changes[size_t(node.parent)]).Place(node);
        CheckPoints(file, {LocalMatrix(node).GetTrans()}, "node " + Quoted(node.name));
        changes.push_back(own);
    }
    for (size_t i = 0; i < scene.meshes.size(); ++i) PlaceMesh(file, scene.meshes[i], whole, i + 1);
    for (ImportedSkin& skin : scene.skins)
        for (size_t i = 0; i < skin.joints.size(); ++i)
            skin.inverseBinds[i] =
                Inverse(whole.Matrix()) * skin.inverseBinds[i] * changes[size_t(skin.joints[i])].Matrix();
    for (ImportedCamera& camera : scene.cameras)
        for (float* const length : {&camera.halfWidth, &camera.nearClip, &camera.farClip}) *length *= options.scale;
    for (ImportedLight& light : scene.lights) light.decayStart *= options.scale;
}

void CheckSceneContent(const std::string& file, const ImportedScene& scene) {
    for (const ImportedNode& node : scene.nodes) {
        if (node.camera >= 0 || node.light >= 0) return;
        if (node.mesh < 0) continue;
        const SceneMesh& mesh = scene.meshes[size_t(node.mesh)];
        if (mesh.shape || !mesh.mesh.faces.empty()) return;
    }
    FailAt(file, 0, "has no faces and no lines, expected at least one");
}

void CheckAnimationName(const std::string& file, const std::string& name, const std::vector<std::string>& names) {
    if (name.empty() || std::find(names.begin(), names.end(), name) != names.end()) return;
    const std::string near = NearestNames(name.substr(0, 100), names);
    FailAt(file, 0, "has no animation " + Quoted(name) + ", expected " + (near.empty() ? "none" : "one like " + near));
}

Matrix3 LocalMatrix(const ImportedNode& node) {
    if (node.matrix) return *node.matrix;
    return ScaleMatrix(node.scale) * node.rotation.ToMatrix() * TransMatrix(node.position);
}

bool IsSceneFile(const std::string& path) {
    const std::string ext = LowerExtension(path);
    return ext == ".gltf" || ext == ".glb" || ext == ".fbx";
}

ImportedScene ImportSceneFile(const std::string& path, const std::string& animation) {
    const std::string content = ReadWholeFile(path, size_t(2) << 30);
    return LowerExtension(path) == ".fbx" ? ImportFbx(path, content, animation) : ImportGltf(path, content, animation);
}

} // namespace host
