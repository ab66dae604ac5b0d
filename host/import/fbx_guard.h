#pragma once
// What is checked of .fbx files before Assimp reads them.

#include <string>
#include <string_view>

namespace host {

/// Throws Error when the objects of a .fbx file hang below themselves or too deep: Assimp follows them by recursion.
/// What cannot be understood is left to Assimp's own checks.
void CheckFbxTree(const std::string& file, std::string_view content);

} // namespace host
