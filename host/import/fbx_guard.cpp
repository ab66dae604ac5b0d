#include "import/fbx_guard.h"

#include <algorithm>
#include <map>

#include "import/file_error.h"

namespace host {

namespace {

constexpr size_t kMostLevels = 1000;

void CheckTree(const std::string& file, const FbxLinks& links) {
    // Objects are taken away once nothing that is left hangs above them; a circle stays.
    std::map<uint64_t, size_t> above, levels;
    std::map<uint64_t, std::vector<uint64_t>> below;
    for (const auto& [child, parent] : links) {
        ++above[child];
        above.try_emplace(parent, 0);
        below[parent].push_back(child);
    }
    std::vector<uint64_t> open;
    for (const auto& [id, count] : above)
        if (count == 0) open.push_back(id);
    size_t taken = 0;
    for (; !open.empty(); ++taken) {
        const uint64_t id = open.back();
        open.pop_back();
        for (const uint64_t child : below[id]) {
            levels[child] = std::max(levels[child], levels[id] + 1);
            if (levels[child] > kMostLevels)
                FailAt(file, 0, "has objects more than " + std::to_string(kMostLevels) + " levels deep");
            if (--above[child] == 0) open.push_back(child);
        }
    }
    if (taken < above.size()) FailAt(file, 0, "has an object that hangs below itself, expected a tree");
}

} // namespace

void FailFbxBlocks(const std::string& file) {
    FailAt(file, 0, "is nested too deeply, expected at most " + std::to_string(kMostFbxBlocks) + " levels");
}

void FailFbxArray(const std::string& file) {
    FailAt(file, 0, "has an array that claims more numbers than the file can hold");
}

void FailFbxLayer(const std::string& file) {
    FailAt(file, 0, "has a layer without a number, expected one");
}

void CheckFbx(const std::string& file, std::string_view content) {
    const bool binary = content.starts_with("Kaydara FBX Binary");
    CheckTree(file, binary ? CheckFbxBinary(file, content) : CheckFbxText(file, content));
}

} // namespace host
