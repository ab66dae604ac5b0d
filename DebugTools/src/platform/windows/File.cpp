// File operations on Windows.
#include "DebugTools/platform/File.h"

#include "Win32.h"

#include <algorithm>
#include <atomic>

namespace diag {

namespace {

// One call takes at most a 32-bit count.
constexpr size_t kLargestPiece = size_t(1) << 30;

bool WriteAll(HANDLE file, const char* data, size_t size) {
    while (size > 0) {
        DWORD written = 0;
        if (!WriteFile(file, data, static_cast<DWORD>(std::min(size, kLargestPiece)), &written, nullptr) ||
            written == 0)
            return false;
        data += written;
        size -= written;
    }
    return true;
}

HANDLE OpenToWrite(const char* path, DWORD creation) {
    return CreateFileA(path, GENERIC_WRITE, FILE_SHARE_READ, nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr);
}

} // namespace

bool FileExists(const std::string& path) {
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool FileCreate(const std::string& path) {
    const HANDLE file = OpenToWrite(path.c_str(), CREATE_ALWAYS);
    return file != INVALID_HANDLE_VALUE && CloseHandle(file);
}

bool FileCopy(const std::string& from, const std::string& to) {
    return CopyFileA(from.c_str(), to.c_str(), FALSE) != 0;
}

bool FileDelete(const std::string& path) {
    return DeleteFileA(path.c_str()) != 0;
}

bool FileRead(const std::string& path, std::string& data) {
    data.clear();
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    char piece[16384];
    DWORD got = 0;
    bool good;
    while ((good = ReadFile(file, piece, sizeof piece, &got, nullptr) != 0) && got > 0) data.append(piece, got);
    CloseHandle(file);
    if (!good) data.clear();
    return good;
}

bool FileWriteAtomic(const std::string& path, std::string_view data, FileSync sync) {
    static std::atomic<unsigned> counter{0};
    const std::string beside =
        path + "." + std::to_string(GetCurrentProcessId()) + "." + std::to_string(counter++) + ".tmp";
    const HANDLE file = OpenToWrite(beside.c_str(), CREATE_NEW);
    if (file == INVALID_HANDLE_VALUE) return false;
    bool good = WriteAll(file, data.data(), data.size());
    if (good && sync == FileSync::kYes) good = FlushFileBuffers(file) != 0;
    if (!CloseHandle(file)) good = false;
    const DWORD flags = MOVEFILE_REPLACE_EXISTING | (sync == FileSync::kYes ? MOVEFILE_WRITE_THROUGH : 0);
    if (good) good = MoveFileExA(beside.c_str(), path.c_str(), flags) != 0;
    if (!good) DeleteFileA(beside.c_str());
    return good;
}

OutputFile* OutputFile::Open(const char* path, bool truncate) {
    const HANDLE file = OpenToWrite(path, truncate ? CREATE_ALWAYS : OPEN_ALWAYS);
    if (file == INVALID_HANDLE_VALUE) return nullptr;
    if (!truncate) SetFilePointer(file, 0, nullptr, FILE_END);
    return new OutputFile(file);
}

OutputFile::~OutputFile() {
    CloseHandle(handle_);
}
bool OutputFile::Write(const char* data, size_t size) {
    return WriteAll(handle_, data, size);
}
bool OutputFile::Flush() {
    return FlushFileBuffers(handle_) != 0;
}

} // namespace diag
