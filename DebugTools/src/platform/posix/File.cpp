// File operations on POSIX systems.
#include "DebugTools/platform/File.h"

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace diag {

namespace {

bool WriteAll(int file, const char* data, size_t size) {
    while (size > 0) {
        const ssize_t written = write(file, data, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        data += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

// A rename is safe against a loss of power only when the folder that holds the name has reached the device too.
void SyncFolderOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (file < 0) return;
    fsync(file);
    close(file);
}

std::string WithoutLinks(const std::string& path) {
    char* full = realpath(path.c_str(), nullptr);
    std::string result = full ? full : path;
    std::free(full);
    return result;
}

int HandleToFile(void* handle) {
    return static_cast<int>(reinterpret_cast<intptr_t>(handle));
}

} // namespace

bool FileExists(const std::string& path) {
    struct stat facts;
    return stat(path.c_str(), &facts) == 0 && !S_ISDIR(facts.st_mode);
}

bool FileCreate(const std::string& path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    return file >= 0 && close(file) == 0;
}

bool FileCopy(const std::string& from, const std::string& to) {
    const int source = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (source < 0) return false;
    struct stat sourceFacts, targetFacts;
    // A device may have no end. Opening the target empties it, so a file must not be copied onto itself.
    const bool isFile = fstat(source, &sourceFacts) == 0 && S_ISREG(sourceFacts.st_mode);
    const bool isTarget = stat(to.c_str(), &targetFacts) == 0 && sourceFacts.st_dev == targetFacts.st_dev &&
                          sourceFacts.st_ino == targetFacts.st_ino;
    if (!isFile || isTarget) {
        close(source);
        return false;
    }
    const int target = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    bool good = target >= 0;
    char piece[16384];
    while (good) {
        const ssize_t got = read(source, piece, sizeof piece);
        if (got < 0 && errno == EINTR) continue;
        if (got == 0) break;
        good = got > 0 && WriteAll(target, piece, static_cast<size_t>(got));
    }
    close(source);
    if (target >= 0 && close(target) != 0) good = false;
    return good;
}

bool FileDelete(const std::string& path) {
    return unlink(path.c_str()) == 0;
}

bool FileRead(const std::string& path, std::string& data) {
    data.clear();
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return false;
    char piece[16384];
    bool good = true;
    for (;;) {
        const ssize_t got = read(file, piece, sizeof piece);
        if (got < 0 && errno == EINTR) continue;
        good = got >= 0;
        if (got <= 0) break;
        data.append(piece, static_cast<size_t>(got));
    }
    close(file);
    if (!good) data.clear();
    return good;
}

bool FileWriteAtomic(const std::string& path, std::string_view data, FileSync sync) {
    static std::atomic<unsigned> counter{0};
    const std::string target = WithoutLinks(path);
    const std::string beside = target + "." + std::to_string(getpid()) + "." + std::to_string(counter++) + ".tmp";
    const int file = open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
    if (file < 0) return false;
    struct stat facts;
    bool good = WriteAll(file, data.data(), data.size());
    if (good && stat(target.c_str(), &facts) == 0) good = fchmod(file, facts.st_mode & 07777) == 0;
    if (good && sync == FileSync::kYes) good = fsync(file) == 0;
    if (close(file) != 0) good = false;
    if (good) good = rename(beside.c_str(), target.c_str()) == 0;
    if (!good) unlink(beside.c_str());
    if (good && sync == FileSync::kYes) SyncFolderOf(target);
    return good;
}

OutputFile* OutputFile::Open(const char* path, bool truncate) {
    const int file = open(path, O_WRONLY | O_CREAT | O_CLOEXEC | (truncate ? O_TRUNC : 0), 0666);
    if (file < 0) return nullptr;
    if (!truncate) lseek(file, 0, SEEK_END);
    // Also a log opens its file here, when memory may be what it has to tell about.
    auto* output = new (std::nothrow) OutputFile(reinterpret_cast<void*>(static_cast<intptr_t>(file)));
    if (!output) close(file);
    return output;
}

OutputFile::~OutputFile() {
    close(HandleToFile(handle_));
}
bool OutputFile::Write(const char* data, size_t size) {
    return WriteAll(HandleToFile(handle_), data, size);
}
bool OutputFile::Flush() {
    return fsync(HandleToFile(handle_)) == 0;
}

} // namespace diag
