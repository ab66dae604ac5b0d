#pragma once
// What is checked of .fbx files before Assimp reads them, and mended while it does.

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Assimp {
class Importer;
}

namespace host {

/// Throws Error for what Assimp would stumble over: blocks nested too deeply and objects that hang below themselves,
/// both of which it follows by recursion, arrays that claim more numbers than there are bytes for, layers without the
/// number that it takes for granted, keys between which it would put others without end, and pictures inside of a text
/// file that are not base64, which it frees twice. What cannot be understood is left to Assimp's own checks.
void CheckFbx(const std::string& file, std::string_view content);

/// Where several bones of a mesh have the same name, Assimp puts the first one in place of all, and deletes it as
/// often. This makes the importer leave each of them once in the scenes of .fbx files, also in those that it deletes
/// itself because the file is refused further on. `twin`, which must outlive the importer, becomes the name of one that
/// was there more than once, or empty.
void MendTwinBones(Assimp::Importer& importer, std::string& twin);

/// What hangs below what, by the numbers of objects: (child, parent).
using FbxLinks = std::vector<std::pair<uint64_t, uint64_t>>;

// The parts of CheckFbx for the two forms of file; both return the links.
FbxLinks CheckFbxText(const std::string& file, std::string_view text);
FbxLinks CheckFbxBinary(const std::string& file, std::string_view bytes);

inline constexpr size_t kMostFbxBlocks = 64; ///< levels of nested blocks
[[noreturn]] void FailFbxBlocks(const std::string& file);
[[noreturn]] void FailFbxArray(const std::string& file);
[[noreturn]] void FailFbxLayer(const std::string& file);

} // namespace host
