#pragma once
// What Assimp does not tell about .3ds files: the objects' names.

#include <string>
#include <string_view>
#include <vector>

namespace host {

/// A mesh object of a .3ds file.
struct Object3ds {
    std::string name;
    unsigned faces = 0;
};

/// The mesh objects in the order of the file. Stops quietly at what it cannot read.
std::vector<Object3ds> ListObjects3ds(std::string_view content);

} // namespace host
