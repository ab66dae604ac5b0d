#pragma once
// Pictures that came inside other files.

#include <memory>
#include <string>

namespace host {

/// Keeps the bytes of a .png, .jpg ... file under a path that LoadImage and bitmap maps then know, "FILE#NAME". The
/// last bytes kept under a path count. Any thread.
void KeepEmbeddedImage(const std::string& path, std::string bytes);

/// The bytes kept under a path; null when there are none.
std::shared_ptr<const std::string> FindEmbeddedImage(const std::string& path);

/// A file with these bytes, deleted at the end: decoders read files. Throws std::system_error when it cannot be
/// written.
class EmbeddedImageFile {
public:
    explicit EmbeddedImageFile(const std::string& bytes);
    ~EmbeddedImageFile();
    EmbeddedImageFile(const EmbeddedImageFile&) = delete;
    EmbeddedImageFile& operator=(const EmbeddedImageFile&) = delete;
    const std::string& Path() const { return path_; }

private:
    [[noreturn]] void Fail(int errorNumber) const;
    std::string path_;
};

} // namespace host
