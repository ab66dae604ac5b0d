// Imported meshes and [[node]].

#include "core/controllers.h"
#include "core/edit_tri_object.h"
#include "core/euler.h"
#include "scene/block_setter.h"
#include "scene/build_import.h"
#include "scene/key_check.h"
#include "scene/load_context.h"
#include "scene/load_modifiers.h"
#include "shapes/primitive_object.h"

namespace host {

namespace {

Node* NewMeshNode(LoadContext& context, const std::string& name, Mesh mesh) {
    auto* const object = new EditTriObject;
    object->mesh = std::move(mesh);
    return context.core.CreateNode(name, object);
}

void CheckOneMesh(const SectionReader& reader, size_t meshes) {
    if (!reader.Text("name").empty() && meshes != 1)
        reader.FailAtKey("name",
                         "the file has " + std::to_string(meshes) + " meshes, expected one where 'name' is set");
}

void ImportPlainMeshes(LoadContext& context, const SectionReader& reader, const std::string& path) {
    ImportOptions options;
    if (reader.Has("scale")) options.scale = reader.Number("scale");
    if (reader.Has("up")) options.up = reader.Choice("up") == 0 ? UpAxis::kY : UpAxis::kZ;
    if (reader.Has("animation"))
        reader.FailAtKey("animation", "files of this kind have no animations, expected a .gltf, .glb or .fbx file");
    std::vector<ImportedMesh> meshes = ImportMeshes(path, options);
    const std::string name = reader.Text("name");
    CheckOneMesh(reader, meshes.size());
    for (ImportedMesh& m : meshes) {
        LoadedMesh loaded{path, options, nullptr, CountDegenerateFaces(m.mesh)};
        const bool colored = m.mesh.maps.contains(MAP_VERTCOLOR);
        loaded.node = NewMeshNode(context, name.empty() ? m.name : name, std::move(m.mesh));
        if (colored) loaded.node->SetMtl(UnnamedMaterial(context, true));
        context.scene.meshes.push_back(loaded);
    }
}

const char* AxisText(UpAxis axis) {
    return axis == UpAxis::kY ? "y" : "z";
}

void ImportWholeScene(LoadContext& context, const SectionReader& reader, const std::string& path) {
    ImportedScene scene = ImportSceneFile(path, reader.Text("animation"));
    ImportOptions options;
    options.scale = reader.Has("scale") ? reader.Number("scale") : float(scene.meters / double(context.unit));
    options.up = !reader.Has("up") ? scene.up : reader.Choice("up") == 0 ? UpAxis::kY : UpAxis::kZ;
    PlaceScene(path, scene, options);
    const size_t before = context.scene.meshes.size();
    const std::vector<Node*> nodes = BuildImport(context, path, options, scene);
    const size_t meshes = context.scene.meshes.size() - before;
    CheckOneMesh(reader, meshes);
    if (reader.Has("name")) context.scene.meshes.back().node->SetName(reader.Text("name").c_str());
    LoadedFile file{path, {}};
    file.notes.push_back("unit " + NumberText(scene.meters) + " m, " + AxisText(scene.up) +
                         " up; brought in with scale " + NumberText(double(options.scale)) + ", " +
                         AxisText(options.up) + " up; " + std::to_string(nodes.size()) + " nodes, " +
                         std::to_string(meshes) + " with meshes");
    file.notes.insert(file.notes.end(), scene.notes.begin(), scene.notes.end());
    context.scene.files.push_back(std::move(file));
}

void ImportFile(LoadContext& context, const SectionReader& reader) {
    const std::string path = context.FindMeshFile(reader.Required("file"), reader.LineOf("file"), true);
    const size_t before = context.scene.meshes.size();
    if (IsSceneFile(path)) {
        ImportWholeScene(context, reader, path);
    } else {
        ImportPlainMeshes(context, reader, path);
    }
    if (context.scene.meshes.size() == before + 1) {
        const size_t start = path.find_last_of('/') + 1;
        context.aliases.emplace(path.substr(start, path.rfind('.') - start), context.scene.meshes.back().node);
    }
}

// A new node with a simple shape, or with nothing.
Node* MakePrimitive(LoadContext& context, const SectionReader& reader, const std::string& name) {
    enum { kPlane, kSphere, kBox, kEmpty }; // as the key's choices
    constexpr Class_ID kClasses[] = {PLANE_CLASS_ID, SPHERE_CLASS_ID, BOX_CLASS_ID};
    const int kind = reader.Choice("primitive");
    if (kind == kEmpty) return context.core.CreateNode(name);
    ReferenceTarget* const object = context.core.CreateInstance(GEOMOBJECT_CLASS_ID, kClasses[kind]);
    const BlockSetter set(object);
    const Point3 size = reader.Point("size");
    if (kind == kPlane) set("width", size.x), set("length", size.y);
    if (kind == kSphere) set("radius", reader.Number("radius"));
    if (kind == kBox) set("size", size);
    set("segments", reader.Integer("segments"));
    context.AddObject(reader, name + ".object", object);
    return context.core.CreateNode(name, static_cast<Object*>(object));
}

void SetFlags(const SectionReader& reader, Node* node) {
    node->SetWireColor(reader.ColorOf("wire_color"));
    node->SetVisibility(reader.Number("visibility"));
    node->Hide(reader.Flag("hidden"));
    node->SetFrozen(reader.Flag("frozen"));
    node->SetRenderFlags(reader.Flag("renderable"), reader.Flag("primary_visibility"), reader.Flag("cast_shadows"),
                         reader.Flag("receive_shadows"), reader.Flag("atmosphere"));
    node->SetSecondaryVisibility(reader.Flag("secondary_visibility"));
    node->SetGBufID(reader.Integer("gbuffer_id"));
    const TomlValue* const properties = reader.Raw("properties");
    if (!properties) return;
    for (const auto& [key, value] : properties->entries)
        node->SetUserPropString(key.c_str(), (value.IsNumber() ? NumberText(value.number) : value.text).c_str());
}

void SetFaceSets(const SectionReader& reader, Node* node) {
    const TomlValue* const sets = reader.Raw("face_sets");
    if (!sets) return;
    auto* const tri = dynamic_cast<TriObject*>(node->GetObjectRef());
    if (!tri || tri->ClassID() != EDITTRIOBJ_CLASS_ID)
        reader.FailAtKey("face_sets", "'face_sets' belong to an imported mesh, expected a mesh_select modifier here");
    auto& known = tri->mesh.faceSets;
    // Sets made of other sets come last.
    for (const bool ofSets : {false, true})
        for (const auto& [name, table] : sets->entries) {
            const SelectionRule rule = ReadSelection(reader.File(), table);
            if (rule.sets.empty() == ofSets) continue;
            const BitArray set = SelectFaces(tri->mesh, rule);
            std::erase_if(known, [&, n = name](const auto& entry) { return entry.first == n; });
            known.emplace_back(name, set);
        }
}

void LoadNode(LoadContext& context, const SectionReader& reader) {
    const std::string name = reader.Required("name");
    Node* node = nullptr;
    if (reader.Has("primitive")) {
        if (context.core.GetINodeByName(name.c_str()))
            reader.FailAtKey("name", "second node " + Quoted(name) + ", expected a name of its own");
        node = MakePrimitive(context, reader, name);
    } else {
        node = static_cast<Node*>(context.At(reader.LineOf("name"), [&] { return context.NodeNamed(name); }));
    }
    SetTransform(context, reader, node);
    SetFlags(reader, node);
    const std::string material = reader.Text("material");
    if (!material.empty())
        node->SetMtl(context.At(reader.LineOf("material"), [&] { return context.MaterialNamed(material); }));
    SetParent(context, reader, node);
    SetFaceSets(reader, node);
}

} // namespace

void SetTransform(LoadContext& context, const SectionReader& reader, INode* node) {
    if (!reader.Has("position") && !reader.Has("rotation") && !reader.Has("scale")) return;
    PrsControl* const tm = TransformOf(context, node);
    const Point3 position = reader.Point("position"), scale = reader.Point("scale");
    const Quat rotation = QuatFromMatrix(EulerMatrix(reader.Point("rotation")));
    if (scale.x == 0 || scale.y == 0 || scale.z == 0)
        reader.FailAtKey("scale", "'scale' has a factor 0, expected other numbers");
    tm->Position()->SetValue(0, &position);
    tm->Rotation()->SetValue(0, &rotation);
    tm->Scale()->SetValue(0, &scale);
}

void SetParent(LoadContext& context, const SectionReader& reader, Node* node) {
    const std::string name = reader.Text("parent");
    if (name.empty()) return;
    const int line = reader.LineOf("parent");
    auto* const parent = static_cast<Node*>(context.At(line, [&] { return context.NodeNamed(name); }));
    if (!parent->AttachChild(node))
        reader.FailAtKey("parent", "node " + Quoted(name) + " moves with this one, expected another parent");
}

void LoadMeshes(LoadContext& context) {
    const TomlValue* const table = context.root.Find("scene");
    const TomlValue* const list = table ? table->Find("import") : nullptr;
    if (!list) return;
    for (const TomlValue& item : list->items) {
        TomlValue entry = item;
        if (item.kind == TomlValue::kText) {
            entry = TomlValue();
            entry.line = item.line;
            entry.entries.emplace_back("file", item);
        }
        const SectionReader reader(context.scene.file, *FindSceneSection("import"), entry);
        ImportFile(context, reader);
    }
}

void LoadNodes(LoadContext& context) {
    context.ForEach("node", "node", [&](const SectionReader& reader) { LoadNode(context, reader); });
}

PrsControl* TransformOf(LoadContext& context, INode* node) {
    auto* const own = static_cast<Node*>(node);
    auto* tm = dynamic_cast<PrsControl*>(own->GetTMController());
    if (tm) return tm;
    tm = new PrsControl;
    context.core.Adopt(tm);
    const Matrix3 now = node->GetNodeTM(0);
    tm->SetValue(0, &now);
    own->SetTMController(tm);
    return tm;
}

} // namespace host
