#include "image/embedded_image.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <string_view>
#include <system_error>

#include <unistd.h>

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
std::string_view ExtensionOf(const std::string& bytes) {
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
    const std::string_view extension = ExtensionOf(bytes);
    path_ = (std::filesystem::temp_directory_path() / "velmar_image_XXXXXX").string().append(extension);
    const int file = mkstemps(path_.data(), int(extension.size()));
    if (file < 0) Fail(errno);
    std::FILE* const f = fdopen(file, "wb");
    int wrong = f ? 0 : errno;
    if (!f) close(file);
    if (f && std::fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size()) wrong = errno;
    if (f && std::fclose(f) != 0 && wrong == 0) wrong = errno;
    if (wrong == 0) return;
    std::remove(path_.c_str());
    Fail(wrong);
}

void EmbeddedImageFile::Fail(int errorNumber) const {
    throw std::system_error(errorNumber, std::generic_category(), "temporary file " + path_);
}

EmbeddedImageFile::~EmbeddedImageFile() {
    std::remove(path_.c_str());
}

} // namespace host
