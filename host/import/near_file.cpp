#include "import/near_file.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace host {

namespace {

namespace fs = std::filesystem;

int HexDigit(char c) {
    return c >= '0' && c <= '9'   ? c - '0'
           : c >= 'a' && c <= 'f' ? c - 'a' + 10
           : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                  : -1;
}

std::string Decoded(const std::string& uri) {
    std::string out;
    for (size_t i = 0; i < uri.size(); ++i) {
        const int high = i + 2 < uri.size() ? HexDigit(uri[i + 1]) : -1, low = high < 0 ? -1 : HexDigit(uri[i + 2]);
        if (uri[i] == '%' && low >= 0) {
            out.push_back(char(high * 16 + low));
            i += 2;
        } else {
            out.push_back(uri[i]);
        }
    }
    return out;
}

} // namespace

std::string FileBeside(const std::string& file, const std::string& name, bool uri) {
    const std::string plain = uri ? Decoded(name) : name;
    const fs::path relative(plain);
    if (plain.empty() || plain.size() > 4096 || plain.find('\0') != std::string::npos || relative.is_absolute())
        return {};
    std::error_code error;
    const fs::path folder = fs::path(file).has_parent_path() ? fs::path(file).parent_path() : fs::path(".");
    const fs::path whole = fs::canonical(folder / relative, error);
    if (error || !fs::is_regular_file(whole, error)) return {};
    const fs::path own = fs::canonical(folder, error);
    if (error) return {};
    const fs::path within = whole.lexically_relative(own);
    return within.empty() || *within.begin() == ".." ? std::string() : (folder / relative).string();
}

std::string LowerExtension(const std::string& path) {
    std::string ext = std::filesystem::path(path).extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return ext;
}

} // namespace host
