#include "import/fbx_guard.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <map>
#include <vector>

#include "import/file_error.h"

namespace host {

namespace {

constexpr size_t kMostLevels = 1000;

using Links = std::vector<std::pair<int64_t, int64_t>>; ///< what hangs below what

void SkipSpace(std::string_view& text) {
    while (!text.empty() && (std::isspace(static_cast<unsigned char>(text[0])) || text[0] == ','))
        text.remove_prefix(1);
}

bool TakeNumber(std::string_view& text, int64_t& value) {
    SkipSpace(text);
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) return false;
    text.remove_prefix(size_t(stop - text.data()));
    return true;
}

// "OO",CHILD,PARENT wherever it stands.
Links TextLinks(std::string_view text) {
    Links links;
    for (size_t at; (at = text.find("\"OO\"")) != std::string_view::npos;) {
        text.remove_prefix(at + 4);
        std::string_view rest = text;
        int64_t child = 0, parent = 0;
        if (TakeNumber(rest, child) && TakeNumber(rest, parent)) links.push_back({child, parent});
    }
    return links;
}

template <class T>
T Number(std::string_view bytes) {
    T v{};
    if (bytes.size() >= sizeof v) std::memcpy(&v, bytes.data(), sizeof v);
    return v;
}

// The values S"OO" L L, as they stand in a binary file.
Links BinaryLinks(std::string_view bytes) {
    const std::string_view mark("S\2\0\0\0OOL", 8);
    Links links;
    for (size_t at; (at = bytes.find(mark)) != std::string_view::npos;) {
        bytes.remove_prefix(at + mark.size());
        if (bytes.size() < 17 || bytes[8] != 'L') continue;
        links.push_back({Number<int64_t>(bytes), Number<int64_t>(bytes.substr(9))});
    }
    return links;
}

} // namespace

void CheckFbxTree(const std::string& file, std::string_view content) {
    const Links links = content.starts_with("Kaydara FBX Binary") ? BinaryLinks(content) : TextLinks(content);
    // Objects are taken away once nothing that is left hangs above them; a circle stays.
    std::map<int64_t, size_t> above, levels;
    std::map<int64_t, std::vector<int64_t>> below;
    for (const auto& [child, parent] : links) {
        ++above[child];
        above.try_emplace(parent, 0);
        below[parent].push_back(child);
    }
    std::vector<int64_t> open;
    for (const auto& [id, count] : above)
        if (count == 0) open.push_back(id);
    size_t taken = 0;
    for (; !open.empty(); ++taken) {
        const int64_t id = open.back();
        open.pop_back();
        for (const int64_t child : below[id]) {
            levels[child] = std::max(levels[child], levels[id] + 1);
            if (levels[child] > kMostLevels)
                FailAt(file, 0, "has objects more than " + std::to_string(kMostLevels) + " levels deep");
            if (--above[child] == 0) open.push_back(child);
        }
    }
    if (taken < above.size()) FailAt(file, 0, "has an object that hangs below itself, expected a tree");
}

} // namespace host
