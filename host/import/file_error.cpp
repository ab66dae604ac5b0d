#include "import/file_error.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

namespace host {

namespace {

struct Closer {
    void operator()(std::FILE* f) const { std::fclose(f); }
};

} // namespace

std::string PlaceText(const std::string& file, int line) {
    return line > 0 ? file + ":" + std::to_string(line) + ": " : file + ": ";
}

std::string Quoted(std::string_view text) {
    std::string out("'");
    out.append(text.substr(0, 60)).append(text.size() > 60 ? "...'" : "'");
    return out;
}

std::string FirstLine(const std::string& text) {
    return text.substr(0, std::min<size_t>(text.find('\n'), 200));
}

void FailAt(const std::string& file, int line, const std::string& text) {
    throw Error(PlaceText(file, line) + text);
}

std::string ReadWholeFile(const std::string& path, size_t mostBytes) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) FailAt(path, 0, "no such file");
    if (!std::filesystem::is_regular_file(status)) FailAt(path, 0, "not a file");
    const std::unique_ptr<std::FILE, Closer> file(std::fopen(path.c_str(), "rb"));
    if (!file) FailAt(path, 0, std::string("cannot be read (") + std::strerror(errno) + ")");
    const auto size = std::filesystem::file_size(path, error);
    if (error) FailAt(path, 0, "cannot be read (" + error.message() + ")");
    if (size > mostBytes)
        FailAt(path, 0, "has " + std::to_string(size) + " bytes, expected at most " + std::to_string(mostBytes));
    std::string bytes(size_t(size), '\0');
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    if (std::ferror(file.get())) FailAt(path, 0, std::string("cannot be read (") + std::strerror(errno) + ")");
    return bytes;
}

} // namespace host
