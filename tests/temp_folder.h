#pragma once
// Folders for the files of a test.

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace test {

/// A new folder below the system's temporary one, deleted with this.
class TempFolder {
public:
    TempFolder() : path_((std::filesystem::temp_directory_path() / "velmar_test_XXXXXX").string()) {
        if (!mkdtemp(path_.data())) throw std::runtime_error("no temporary folder can be made: " + path_);
    }
    ~TempFolder() { std::filesystem::remove_all(path_); }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    /// Writes a file, whose name may have folders in front, and returns its path.
    std::string Write(const std::string& name, const std::string& content) const {
        const std::string path = path_ + "/" + name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }
    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

} // namespace test
