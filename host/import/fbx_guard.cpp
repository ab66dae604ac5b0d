#include "import/fbx_guard.h"

#include <assimp/scene.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <map>
#include <set>
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

void CheckTree(const std::string& file, const Links& links) {
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

void SkipSpaceAndComments(std::string_view& text) {
    while (!text.empty() && (std::isspace(static_cast<unsigned char>(text[0])) || text[0] == ';'))
        text.remove_prefix(text[0] == ';' ? std::min(text.find('\n'), text.size()) : 1);
}

// The quoted text that comes next, without its quotes; false when none does.
bool TakeQuoted(std::string_view& text, std::string_view& value) {
    SkipSpaceAndComments(text);
    const size_t end = text.starts_with('"') ? text.find('"', 1) : std::string_view::npos;
    if (end == std::string_view::npos) return false;
    value = text.substr(1, end - 1);
    text.remove_prefix(end + 1);
    return true;
}

bool IsBase64(std::string_view text) {
    const bool whole = text.size() % 4 == 0;
    for (int i = 0; i < 2 && whole && text.ends_with('='); ++i) text.remove_suffix(1);
    return std::all_of(text.begin(), text.end(),
                       [](unsigned char c) { return (c < 128 && std::isalnum(c)) || c == '+' || c == '/'; });
}

bool TakeMark(std::string_view& text, char mark) {
    SkipSpaceAndComments(text);
    if (!text.starts_with(mark)) return false;
    text.remove_prefix(1);
    return true;
}

// Content: "...", "..." wherever it stands. When the first value has no quotes, Assimp takes none of them.
void CheckPictures(const std::string& file, std::string_view text) {
    const std::string_view key = "Content";
    for (size_t at; (at = text.find(key)) != std::string_view::npos;) {
        text.remove_prefix(at + key.size());
        std::string_view rest = text, value;
        if (!TakeMark(rest, ':') || !TakeQuoted(rest, value)) continue;
        bool good = IsBase64(value);
        while (good && TakeMark(rest, ',')) good = TakeQuoted(rest, value) && IsBase64(value);
        if (!good) FailAt(file, 0, "has a picture that is not base64, expected one that is");
    }
}

} // namespace

void CheckFbx(const std::string& file, std::string_view content) {
    const bool binary = content.starts_with("Kaydara FBX Binary");
    CheckTree(file, binary ? BinaryLinks(content) : TextLinks(content));
    if (!binary) CheckPictures(file, content);
}

std::string DropTwinBones(aiScene& scene) {
    std::set<const aiBone*> seen;
    std::string twin;
    for (unsigned m = 0; m < scene.mNumMeshes; ++m) {
        aiMesh& mesh = *scene.mMeshes[m];
        unsigned kept = 0;
        for (unsigned b = 0; b < mesh.mNumBones; ++b) {
            aiBone* const bone = mesh.mBones[b];
            if (seen.insert(bone).second) {
                mesh.mBones[kept++] = bone;
            } else {
                twin = bone->mName.C_Str();
            }
        }
        mesh.mNumBones = kept;
    }
    return twin;
}

} // namespace host
