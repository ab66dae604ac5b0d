#include "image/embedded_image.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>

#include <unistd.h>

#include "core/error.h"

namespace host {

namespace {

struct Store {
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<const std::string>> images;
};

Store& TheStore() {
    static Store store;
    return store;
}

// What decoders want to see at the end of a name.
const char* ExtensionOf(const std::string& bytes) {
    if (bytes.starts_with("\x89PNG")) return ".png";
    if (bytes.starts_with("\xff\xd8")) return ".jpg";
    if (bytes.starts_with("BM")) return ".bmp";
    if (bytes.starts_with("GIF8")) return ".gif";
    if (bytes.starts_with("II*") || bytes.starts_with("MM")) return ".tif";
    return ".tga";
}

} // namespace

void KeepEmbeddedImage(const std::string& path, std::string bytes) {
    Store& store = TheStore();
    const std::lock_guard<std::mutex> lock(store.mutex);
    store.images[path] = std::make_shared<const std::string>(std::move(bytes));
}

std::shared_ptr<const std::string> FindEmbeddedImage(const std::string& path) {
    Store& store = TheStore();
    const std::lock_guard<std::mutex> lock(store.mutex);
    const auto at = store.images.find(path);
    return at == store.images.end() ? nullptr : at->second;
}

EmbeddedImageFile::EmbeddedImageFile(const std::string& bytes) {
    const char* const extension = ExtensionOf(bytes);
    path_ = (std::filesystem::temp_directory_path() / "velmar_image_XXXXXX").string() + extension;
    const int file = mkstemps(path_.data(), int(std::string(extension).size()));
    std::FILE* const f = file < 0 ? nullptr : fdopen(file, "wb");
    if (!f) throw Error("cannot write the temporary file " + path_);
    const bool whole = std::fwrite(bytes.data(), 1, bytes.size(), f) == bytes.size();
    if (std::fclose(f) == 0 && whole) return;
    std::remove(path_.c_str());
    throw Error("cannot write the temporary file " + path_);
}

EmbeddedImageFile::~EmbeddedImageFile() {
    std::remove(path_.c_str());
}

} // namespace host
