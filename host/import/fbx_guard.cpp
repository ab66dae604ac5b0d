#include "import/fbx_guard.h"

#include <assimp/scene.h>

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>

#include "import/file_error.h"

namespace Assimp {

void aiAssertViolation(const char* expression, const char* file, int line);

// Debian's Assimp is built with its own checks, which abort the program. This takes the place of the library's
// function: a failed check becomes an error of the import, for all forms of file.
void aiAssertViolation(const char* expression, const char*, int) {
    throw std::runtime_error(std::string("failed check: ") + expression);
}

} // namespace Assimp

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
