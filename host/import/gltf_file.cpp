// From a .gltf or .glb file to the library's model.

#include <cmath>
#include <cstring>

#include "import/file_error.h"
#include "import/gltf_parts.h"
#include "import/near_file.h"

namespace host {

namespace {

constexpr int kMostJsonDepth = 64;

bool IsBinary(const std::string& content) {
    return content.starts_with("glTF");
}

// The library walks nested values by recursion: how deep they may go is checked before.
void CheckDepth(const std::string& file, std::string_view json) {
    int depth = 0;
    bool inText = false;
    for (size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (inText) {
            if (c == '\\') ++i;
            inText = c != '"';
            continue;
        }
        inText = c == '"';
        depth += c == '{' || c == '[' ? 1 : c == '}' || c == ']' ? -1 : 0;
        if (depth > kMostJsonDepth)
            FailAt(file, 0, "is nested too deeply, expected at most " + std::to_string(kMostJsonDepth) + " levels");
    }
}

std::string_view JsonOf(const std::string& file, const std::string& content) {
    if (!IsBinary(content)) return content;
    uint32_t header[5] = {};
    if (content.size() < sizeof header) FailAt(file, 0, "ends too early, expected a .glb file's header");
    std::memcpy(header, content.data(), sizeof header);
    if (header[1] != 2) FailAt(file, 0, "is glTF version " + std::to_string(header[1]) + ", expected version 2");
    if (header[2] > content.size())
        FailAt(file, 0,
               "ends too early, expected " + std::to_string(header[2]) + " bytes, it has " +
                   std::to_string(content.size()));
    return std::string_view(content).substr(sizeof header, header[3]);
}

// Files that buffers name: beside the file only.
tinygltf::FsCallbacks FilesBeside(const std::string* file) {
    tinygltf::FsCallbacks calls{};
    // intended: the library puts a folder before the name; it is told none.
    calls.FileExists = [](const std::string& name, void* data) {
        return !FileBeside(*static_cast<const std::string*>(data), name, false).empty();
    };
    calls.ExpandFilePath = [](const std::string& name, void*) { return name; };
    calls.ReadWholeFile = [](std::vector<unsigned char>* out, std::string* error, const std::string& name, void* data) {
        try {
            const std::string bytes =
                ReadWholeFile(FileBeside(*static_cast<const std::string*>(data), name, false), size_t(2) << 30);
            out->assign(bytes.begin(), bytes.end());
            return true;
        } catch (const std::exception& e) {
            if (error) *error = e.what();
            return false;
        }
    };
    calls.WriteWholeFile = [](std::string*, const std::string&, const std::vector<unsigned char>&, void*) {
        return false;
    };
    calls.user_data = const_cast<std::string*>(file);
    return calls;
}

// Pictures stay as they are. The library does not check that those in buffers lie within: they are read afterwards.
bool KeepImage(tinygltf::Image* image, int, std::string*, std::string*, int, int, const unsigned char* bytes, int size,
               void*) {
    if (image->bufferView < 0) image->image.assign(bytes, bytes + size);
    return true;
}

void CheckVersion(const GltfFile& gltf) {
    const std::string& version = gltf.model.asset.version;
    if (!version.starts_with("2.")) FailAt(gltf.file, 0, "is glTF version " + Quoted(version) + ", expected version 2");
    for (const std::string& name : gltf.model.extensionsRequired)
        if (name != "KHR_lights_punctual" && name != "KHR_texture_transform" && name != "KHR_mesh_quantization" &&
            !name.starts_with("KHR_materials_"))
            FailAt(gltf.file, 0,
                   "needs the extension " + Quoted(name) + ", which cannot be read, expected a file without it");
    if (gltf.model.nodes.size() > kMostSceneNodes)
        FailAt(gltf.file, 0,
               "has " + std::to_string(gltf.model.nodes.size()) + " nodes, expected at most " +
                   std::to_string(kMostSceneNodes));
}

} // namespace

void LoadGltf(GltfFile& gltf, const std::string& content) {
    CheckDepth(gltf.file, JsonOf(gltf.file, content));
    if (content.size() > size_t(2) << 30) FailAt(gltf.file, 0, "is too large, expected at most 2 GiB");
    tinygltf::TinyGLTF loader;
    loader.SetFsCallbacks(FilesBeside(&gltf.file));
    loader.SetImageLoader(KeepImage, nullptr);
    std::string error, warning;
    bool loaded = false;
    try {
        loaded = IsBinary(content) ? loader.LoadBinaryFromMemory(&gltf.model, &error, &warning,
                                                                 reinterpret_cast<const unsigned char*>(content.data()),
                                                                 unsigned(content.size()), "")
                                   : loader.LoadASCIIFromString(&gltf.model, &error, &warning, content.data(),
                                                                unsigned(content.size()), "");
    } catch (const std::exception& e) {
        error = e.what();
    }
    if (!loaded) FailAt(gltf.file, 0, "cannot be read as glTF" + (error.empty() ? "" : " (" + FirstLine(error) + ")"));
    CheckVersion(gltf);
}

float GltfFloat(double v, float otherwise) {
    return std::isfinite(v) && std::isfinite(float(v)) ? float(v) : otherwise;
}

Quat GltfQuat(float x, float y, float z, float w) {
    return {-x, -y, -z, w};
}

double GltfNumber(const tinygltf::Value& object, const char* key, double otherwise) {
    if (!object.IsObject() || !object.Has(key) || !object.Get(key).IsNumber()) return otherwise;
    return object.Get(key).GetNumberAsDouble();
}

} // namespace host
