#pragma once
// Files that appear whole or not at all.

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

namespace host {

/// A file written beside its place; Commit renames it there. Without Commit nothing stays. Every failure throws Error
/// with one line that names the file.
class OutputFile {
public:
    /// Opens the file beside `path`. Refuses a place that holds something other than a file.
    explicit OutputFile(const std::string& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Write(const void* data, size_t bytes);
    uint64_t Tell() const { return position_; }
    /// Continues at `position`, which may lie beyond the end.
    void Seek(uint64_t position);
    /// Closes the file and puts it in its place.
    void Commit();

private:
    [[noreturn]] void Fail(int errorNumber) const;

    std::string name_; ///< as the user gave it
    std::filesystem::path place_, beside_;
    std::FILE* file_ = nullptr;
    uint64_t position_ = 0;
};

} // namespace host
