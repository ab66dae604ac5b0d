#pragma once
// What is checked of .fbx files before Assimp reads them, and mended afterwards.

#include <string>
#include <string_view>

struct aiScene;

namespace host {

/// Throws Error for what Assimp would stumble over: objects that hang below themselves or too deep, which it follows by
/// recursion, and pictures inside of a text file that are no base64 text, which it frees twice. What cannot be
/// understood is left to Assimp's own checks.
void CheckFbx(const std::string& file, std::string_view content);

/// Where several bones of a mesh have the same name, Assimp puts the first one in place of all, and deletes it as
/// often. This leaves each of them once; returns the name of one that was there more than once, or an empty text.
std::string DropTwinBones(aiScene& scene);

} // namespace host
