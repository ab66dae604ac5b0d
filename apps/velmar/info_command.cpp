// velmar info.

#include <cstdio>

#include "commands.h"
#include "scene/key_check.h"
#include "scene/key_report.h"
#include "sdk/inode.h"
#include "sdk/properties.h"

namespace velmar {

namespace {

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

void PrintNode(const Session& session, INode* node) {
    Interval valid = FOREVER;
    bool needDelete = false;
    TriObject* const tri = GetTriObjectFromNode(node, 0, valid, needDelete);
    if (!tri) {
        std::printf("node '%s': %s\n", node->GetName(), KindOf(node).c_str());
        return;
    }
    const host::LoadedMesh* const import = ImportOf(session, node);
    std::printf("node '%s': mesh, %s, %d degenerate", node->GetName(), FacesText(tri->mesh).c_str(),
                host::CountDegenerateFaces(tri->mesh));
    if (import)
        std::printf(", from %s (scale %s, %s up)", import->file.c_str(),
                    host::NumberText(double(import->options.scale)).c_str(),
                    import->options.up == host::UpAxis::kY ? "y" : "z");
    std::printf("\n");
    for (const auto& [name, faces] : tri->mesh.faceSets)
        std::printf("  face set '%s': %d faces\n", name.c_str(), faces.NumberSet());
    if (needDelete) tri->DeleteThis();
}

// The emitters by name, from the object's own list.
std::string EmittersOf(const host::LoadedHair& hair) {
    for (const host::ParamPlace& p : host::ListParams(hair.object))
        if (p.def->intName == "pid_emitters") return host::ParamValueText(p, 0, 1);
    return "[]";
}

void PrintHair(Session& session, const host::LoadedHair& hair) {
    std::printf("%s '%s': emitters %s", hair.isFur ? "fur" : "hair", hair.name.c_str(), EmittersOf(hair).c_str());
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
    for (host::Node* const node : session.core.AllNodes()) PrintNode(session, node);
    for (const host::LoadedHair& hair : session.scene.hair) PrintHair(session, hair);
    return 0;
}

} // namespace velmar
