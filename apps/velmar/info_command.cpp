// velmar info.

#include <cstdio>

#include "commands.h"
#include "core/error.h"
#include "scene/key_check.h"
#include "scene/key_report.h"
#include "sdk/inode.h"
#include "sdk/properties.h"

namespace velmar {

namespace {

// "1 face", "2 faces".
std::string Counted(int n, const char* one, const char* many) {
    return std::to_string(n) + " " + (n == 1 ? one : many);
}

// A name in quotes. Those out of files may hold what a terminal would obey.
std::string Named(const std::string& name) {
    return "'" + host::OneLine(name) + "'";
}

std::string FacesText(const Mesh& mesh) {
    std::string out =
        std::to_string(mesh.getNumVerts()) + " vertices, " + std::to_string(mesh.getNumFaces()) + " faces";
    std::string channels;
    for (const auto& [channel, map] : mesh.maps) channels += (channels.empty() ? "" : ", ") + std::to_string(channel);
    if (!channels.empty()) out += ", mapping " + channels;
    return out;
}

std::string KindOf(INode* node) {
    Object* const object = node->GetObjectRef();
    return object ? object->GetObjectName() : "no object";
}

const host::LoadedMesh* ImportOf(const Session& session, INode* node) {
    for (const host::LoadedMesh& m : session.scene.meshes)
        if (m.node == node) return &m;
    return nullptr;
}

// "frame 3 to 7", "forever" ...
std::string ValidText(Session& session, const Interval& valid) {
    if (valid == FOREVER) return "is always the same";
    const auto frame = [&](TimeValue t) {
        return host::NumberText(double(t) / double(session.core.GetTicksPerFrame()));
    };
    if (valid.Start() == valid.End()) return "changes with every frame";
    if (valid.Start() == TIME_NegInfinity) return "is the same up to frame " + frame(valid.End());
    if (valid.End() == TIME_PosInfinity) return "is the same from frame " + frame(valid.Start());
    return "is the same from frame " + frame(valid.Start()) + " to " + frame(valid.End());
}

// The stack from the top, each modifier with its class and switches.
void PrintStack(Session& session, INode* node) {
    for (int i = 0; i < node->NumModifiers(); ++i) {
        Modifier* const m = node->GetModifier(i);
        std::printf("  modifier %s: %s%s", Named(m->GetName()).c_str(), m->GetObjectName(),
                    m->IsEnabled() ? "" : ", off");
        if (m->IsEnabled() && !m->IsEnabledInRender()) std::printf(", off in pictures");
        if (m->IsEnabled() && !m->IsEnabledInViews()) std::printf(", off outside pictures");
        std::printf("\n");
    }
    if (node->NumModifiers() > 0)
        std::printf("  base: %s; the outcome %s\n", KindOf(node).c_str(),
                    ValidText(session, node->EvalWorldState(0).valid).c_str());
}

void PrintShape(INode* node, ShapeObject& object) {
    std::printf("node %s: shape, %s, %s\n", Named(node->GetName()).c_str(),
                Counted(object.shape.SplineCount(), "spline", "splines").c_str(),
                Counted(object.shape.KnotCount(), "knot", "knots").c_str());
    for (const Spline3D& s : object.shape.splines)
        std::printf("  spline: %s, %s, length %s\n", Counted(s.KnotCount(), "knot", "knots").c_str(),
                    s.closed ? "closed" : "open", host::NumberText(double(s.SplineLength())).c_str());
}

void PrintSelection(const Mesh& mesh) {
    for (const auto& [name, faces] : mesh.faceSets)
        std::printf("  face set %s: %s\n", Named(name).c_str(), Counted(faces.NumberSet(), "face", "faces").c_str());
    if (mesh.selLevel == MESH_FACE)
        std::printf("  selected: %s\n", Counted(mesh.faceSel.NumberSet(), "face", "faces").c_str());
    if (mesh.selLevel == MESH_VERTEX)
        std::printf("  selected: %s\n", Counted(mesh.vertSel.NumberSet(), "vertex", "vertices").c_str());
}

void PrintNode(Session& session, INode* node) {
    Object* const object = node->EvalWorldState(0).obj;
    if (auto* const shape = dynamic_cast<ShapeObject*>(object)) {
        PrintShape(node, *shape);
        return PrintStack(session, node);
    }
    Interval valid = FOREVER;
    bool needDelete = false;
    TriObject* const tri = GetTriObjectFromNode(node, 0, valid, needDelete);
    if (!tri) {
        std::printf("node %s: %s\n", Named(node->GetName()).c_str(), KindOf(node).c_str());
        return;
    }
    const host::LoadedMesh* const import = ImportOf(session, node);
    std::printf("node %s: mesh, %s, %d degenerate", Named(node->GetName()).c_str(), FacesText(tri->mesh).c_str(),
                host::CountDegenerateFaces(tri->mesh));
    if (import)
        std::printf(", from %s (scale %s, %s up)", import->file.c_str(),
                    host::NumberText(double(import->options.scale)).c_str(),
                    import->options.up == host::UpAxis::kY ? "y" : "z");
    std::printf("\n");
    PrintSelection(tri->mesh);
    PrintStack(session, node);
    if (needDelete) tri->DeleteThis();
}

// The emitters by name, from the object's own list.
std::string EmittersOf(const host::LoadedHair& hair) {
    for (const host::ParamPlace& p : host::ListParams(hair.object))
        if (p.def->intName == "pid_emitters") return host::ParamValueText(p, 0, 1);
    return "[]";
}

// What files with whole scenes were brought in as, and what was left out.
void PrintFile(const host::LoadedFile& file) {
    for (size_t i = 0; i < file.notes.size(); ++i)
        std::printf("%s%s%s\n", i == 0 ? "import " : "  note: ", i == 0 ? (file.path + ": ").c_str() : "",
                    host::OneLine(file.notes[i]).c_str());
}

// The box of all meshes and shapes at frame 0, in the world.
void PrintBounds(Session& session) {
    Box3 box;
    for (host::Node* const node : session.core.AllNodes()) {
        Object* const object = node->EvalWorldState(0).obj;
        if (auto* const tri = dynamic_cast<TriObject*>(object)) {
            const Matrix3 tm = node->GetObjectTM(0);
            for (const Point3& p : tri->mesh.verts) box += p * tm;
        } else if (auto* const shape = dynamic_cast<ShapeObject*>(object)) {
            box += shape->shape.GetBoundingBox() * node->GetObjectTM(0);
        }
    }
    if (box.IsEmpty()) return;
    const auto text = [](const Point3& p) {
        std::string out("[");
        for (int k = 0; k < 3; ++k) out.append(k > 0 ? ", " : "").append(host::NumberText(double(p[k])));
        return out.append("]");
    };
    std::printf("bounds: %s to %s\n", text(box.Min()).c_str(), text(box.Max()).c_str());
}

void PrintHair(Session& session, const host::LoadedHair& hair) {
    std::printf("%s %s: emitters %s", hair.isFur ? "fur" : "hair", Named(hair.name).c_str(),
                host::OneLine(EmittersOf(hair)).c_str());
    Interval valid = FOREVER;
    hair.object->Update(session.core.GetTime(), valid);
    ScriptValue counts;
    TSTR error;
    IScriptProperties* const script = GetScriptProperties(hair.object);
    if (script && script->Call("EstimateGeom", {}, counts, error) && counts.items.size() >= 4)
        std::printf(", about %d strands of %d points, as a mesh %d vertices and %d faces", counts.items[2].i,
                    counts.items[3].i, counts.items[0].i, counts.items[1].i);
    std::printf("\n");
}

// What changes finished pictures, in the order in which it runs.
void PrintEffects(host::Core& core) {
    for (Effect* const effect : core.Effects()) {
        TSTR kind;
        effect->GetClassName(kind);
        const std::string name = effect->GetName();
        std::printf("effect%s: %s%s\n", name.empty() ? "" : (" " + Named(name)).c_str(), kind.c_str(),
                    effect->Active(core.GetTime()) ? "" : ", off");
    }
    for (const host::FilterQueue::Entry& entry : core.Filters().Entries())
        std::printf("image filter: %s%s\n", entry.name.c_str(), entry.active ? "" : ", off");
}

void PrintKeys(Session& session) {
    const std::vector<host::KeyedTrack> tracks = host::ListKeyedTracks(session.core, session.scene);
    for (const host::KeyedTrack& t : tracks)
        std::fputs(host::KeyTableText(t, session.core.GetTicksPerFrame()).c_str(), stdout);
    if (tracks.empty()) std::printf("nothing changes over time\n");
}

} // namespace

int RunInfo(const InfoOptions& info) {
    const SceneOptions& options = info.open;
    Session session(options);
    if (info.keys) {
        PrintKeys(session);
        return 0;
    }
    const host::FrameSettings& render = session.scene.render;
    std::printf("scene %s: frames %d to %d at %d a second, picture %d x %d\n", options.scene.c_str(),
                session.scene.firstFrame, session.scene.lastFrame, session.core.GetFrameRate(), render.width,
                render.height);
    for (const host::LoadedFile& file : session.scene.files) PrintFile(file);
    for (host::Node* const node : session.core.AllNodes()) PrintNode(session, node);
    PrintBounds(session);
    for (const host::LoadedHair& hair : session.scene.hair) PrintHair(session, hair);
    PrintEffects(session.core);
    return 0;
}

} // namespace velmar
