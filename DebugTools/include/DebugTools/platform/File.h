// File operations. Paths are the operating system's; every operation reports failure by its result and throws nothing.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace diag {

bool FileExists(const std::string& path);
/// Creates an empty file, or empties an existing one.
bool FileCreate(const std::string& path);
/// Copies a file, overwriting the target. False for what is no plain file, such as a device.
bool FileCopy(const std::string& from, const std::string& to);
bool FileDelete(const std::string& path);
/// Reads a whole file. False, with `data` empty, when it cannot be read.
bool FileRead(const std::string& path, std::string& data);

/// Whether an atomic write waits until the data is safe against a loss of power.
enum class FileSync { kNo, kYes };
/// Writes a file beside the target and renames it: readers see the old content or the new one, never a part. On failure
/// the old content stays and nothing is left beside it. A symbolic link keeps pointing at its file, a file keeps its
/// mode.
bool FileWriteAtomic(const std::string& path, std::string_view data, FileSync sync = FileSync::kYes);

/// A file open for writing only, which others may read meanwhile. Unbuffered.
class OutputFile {
public:
    /// Creates the file when missing; empties it when `truncate`, otherwise goes on at its end. Null on failure.
    static OutputFile* Open(const char* path, bool truncate);
    /// Closes the file.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// True when all bytes went out.
    bool Write(const char* data, size_t size);
    /// Hands the operating system's buffers to the device.
    bool Flush();

private:
    explicit OutputFile(void* handle) : handle_(handle) {}
    void* handle_;
};

} // namespace diag
