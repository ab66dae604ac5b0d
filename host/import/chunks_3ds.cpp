#include "import/chunks_3ds.h"

#include <algorithm>
#include <cstdint>

namespace host {

namespace {

constexpr unsigned kMain = 0x4d4d, kEditor = 0x3d3d, kObject = 0x4000, kMesh = 0x4100, kFaces = 0x4120;

unsigned Number(std::string_view bytes, size_t count) {
    unsigned value = 0;
    for (size_t i = 0; i < count; ++i) value |= unsigned(uint8_t(bytes[i])) << (8 * i);
    return value;
}

// Calls `visit(id, data)` for every chunk in `bytes`: 16-bit id, 32-bit length with this header, data.
template <class Visit>
void ForEachChunk(std::string_view bytes, Visit&& visit) {
    while (bytes.size() >= 6) {
        const size_t length = Number(bytes.substr(2), 4);
        if (length < 6) return;
        visit(Number(bytes, 2), bytes.substr(6, length - 6));
        bytes.remove_prefix(std::min(length, bytes.size()));
    }
}

void AddObject(std::string_view data, std::vector<Object3ds>& objects) {
    const size_t end = data.find('\0');
    if (end == std::string_view::npos) return;
    ForEachChunk(data.substr(end + 1), [&](unsigned id, std::string_view mesh) {
        if (id != kMesh) return;
        Object3ds object{std::string(data.substr(0, end)), 0};
        ForEachChunk(mesh, [&](unsigned part, std::string_view faces) {
            if (part == kFaces && faces.size() >= 2) object.faces += Number(faces, 2);
        });
        objects.push_back(std::move(object));
    });
}

} // namespace

std::vector<Object3ds> ListObjects3ds(std::string_view content) {
    std::vector<Object3ds> objects;
    ForEachChunk(content, [&](unsigned mainId, std::string_view main) {
        if (mainId != kMain) return;
        ForEachChunk(main, [&](unsigned editorId, std::string_view editor) {
            if (editorId != kEditor) return;
            ForEachChunk(editor, [&](unsigned id, std::string_view data) {
                if (id == kObject) AddObject(data, objects);
            });
        });
    });
    return objects;
}

} // namespace host
