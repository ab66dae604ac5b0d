// Imported meshes and [[node]].

#include <cmath>
#include <numbers>

#include "core/controllers.h"
#include "scene/key_check.h"
#include "scene/load_context.h"
#include "scene/primitives.h"

namespace host {

namespace {

Node* NewMeshNode(LoadContext& context, const std::string& name, Mesh mesh) {
    auto* const object = new TriObject;
    object->mesh = std::move(mesh);
    return context.core.CreateNode(name, object);
}

void ImportFile(LoadContext& context, const SectionReader& reader) {
    ImportOptions options;
    options.scale = reader.Number("scale");
    options.up = reader.Choice("up") == 0 ? UpAxis::kY : UpAxis::kZ;
    const std::string named = reader.Required("file"), path = context.FindFile(named, reader.LineOf("file"));
    std::vector<ImportedMesh> meshes = ImportMeshes(path, options);
    const std::string name = reader.Text("name");
    if (!name.empty() && meshes.size() > 1)
        reader.FailAtKey("name",
                         "the file has " + std::to_string(meshes.size()) + " meshes, expected one where 'name' is set");
    for (ImportedMesh& m : meshes) {
        LoadedMesh loaded{path, options, nullptr, CountDegenerateFaces(m.mesh)};
        loaded.node = NewMeshNode(context, name.empty() ? m.name : name, std::move(m.mesh));
        context.scene.meshes.push_back(loaded);
    }
    if (meshes.size() == 1) {
        const size_t start = path.find_last_of('/') + 1;
        context.aliases.emplace(path.substr(start, path.rfind('.') - start), context.scene.meshes.back().node);
    }
}

Mesh MakePrimitive(const SectionReader& reader) {
    const Point3 size = reader.Point("size");
    const int segments = reader.Integer("segments");
    switch (reader.Choice("primitive")) {
    case 0:
        return MakePlane(size.x, size.y, segments);
    case 1:
        return MakeSphere(reader.Number("radius"), segments);
    default:
        return MakeBox(size, segments);
    }
}

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

void SetParent(LoadContext& context, const SectionReader& reader, Node* node) {
    const std::string name = reader.Text("parent");
    if (name.empty()) return;
    const int line = reader.LineOf("parent");
    auto* const parent = static_cast<Node*>(context.At(line, [&] { return context.NodeNamed(name); }));
    if (!parent->AttachChild(node))
        reader.FailAtKey("parent", "node " + Quoted(name) + " moves with this one, expected another parent");
}

void LoadNode(LoadContext& context, const SectionReader& reader) {
    const std::string name = reader.Required("name");
    Node* node = nullptr;
    if (reader.Has("primitive")) {
        if (context.core.GetINodeByName(name.c_str()))
            reader.FailAtKey("name", "second node " + Quoted(name) + ", expected a name of its own");
        node = NewMeshNode(context, name, MakePrimitive(reader));
    } else {
        node = static_cast<Node*>(context.At(reader.LineOf("name"), [&] { return context.NodeNamed(name); }));
    }
    SetTransform(context, reader, node);
    SetFlags(reader, node);
    const std::string material = reader.Text("material");
    if (!material.empty())
        node->SetMtl(context.At(reader.LineOf("material"), [&] { return context.MaterialNamed(material); }));
    SetParent(context, reader, node);
}

} // namespace

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

Matrix3 EulerMatrix(const Point3& degrees) {
    Matrix3 tm;
    for (int axis = 0; axis < 3; ++axis) {
        const double angle = double(degrees[axis]) * std::numbers::pi / 180.0;
        const float c = float(std::cos(angle)), s = float(std::sin(angle));
        const int a = (axis + 1) % 3, b = (axis + 2) % 3;
        Point3 rows[3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
        rows[a][a] = c, rows[a][b] = s;
        rows[b][a] = -s, rows[b][b] = c;
        tm = tm * Matrix3(rows[0], rows[1], rows[2], {0, 0, 0});
    }
    return tm;
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
