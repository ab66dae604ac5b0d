#include "image/output_file.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <system_error>

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

#include "core/error.h"

namespace host {

namespace fs = std::filesystem;

namespace {

int ProcessId() {
#ifdef _WIN32
    return _getpid();
#else
    return int(getpid());
#endif
}

/// A name in the folder of `place` that nobody else uses: another process has another id, another file another number.
fs::path NameBeside(const fs::path& place) {
    static std::atomic<unsigned> number{0};
    std::string name(".");
    name.append(place.filename().string()).append(".").append(std::to_string(ProcessId()));
    name.append("-").append(std::to_string(number++)).append(".part");
    return place.parent_path() / name;
}

} // namespace

OutputFile::OutputFile(const std::string& path) : name_(path), place_(path) {
    std::error_code ec;
    // A link stays a link: what it points at is replaced.
    for (int links = 0; fs::is_symlink(place_, ec) && links < 40; ++links)
        place_ = place_.parent_path() / fs::read_symlink(place_, ec);
    if (place_.filename().empty() || fs::is_directory(place_, ec))
        throw Error(name_ + ": cannot write: this is a folder, expected the name of a file");
    if (fs::exists(place_, ec) && !fs::is_regular_file(place_, ec))
        throw Error(name_ + ": cannot write: this is a device or the like, expected the name of a file");
    if (const fs::path folder = place_.parent_path(); !folder.empty() && !fs::is_directory(folder, ec))
        throw Error(name_ + ": cannot write: there is no folder '" + folder.string() + "'");
    beside_ = NameBeside(place_);
    file_ = std::fopen(beside_.string().c_str(), "wb");
    if (!file_) Fail(errno);
}

OutputFile::~OutputFile() {
    if (file_) std::fclose(file_);
    std::error_code ec;
    if (!beside_.empty()) fs::remove(beside_, ec);
}

void OutputFile::Fail(int errorNumber) const {
    throw Error(name_ + ": cannot write: " + std::generic_category().message(errorNumber));
}

void OutputFile::Write(const void* data, size_t bytes) {
    if (bytes != 0 && std::fwrite(data, 1, bytes, file_) != bytes) Fail(errno);
    position_ += bytes;
}

void OutputFile::Seek(uint64_t position) {
#ifdef _WIN32
    if (_fseeki64(file_, int64_t(position), SEEK_SET) != 0) Fail(errno);
#else
    if (fseeko(file_, off_t(position), SEEK_SET) != 0) Fail(errno);
#endif
    position_ = position;
}

void OutputFile::Commit() {
    std::FILE* const file = file_;
    file_ = nullptr;
    if (std::fclose(file) != 0) Fail(errno);
    std::error_code ec;
    fs::rename(beside_, place_, ec);
    if (ec) throw Error(name_ + ": cannot write: " + ec.message());
    beside_.clear();
}

} // namespace host
