#pragma once
// What an .obj file holds beside its numbers: the checked structure.

#include <string>
#include <string_view>
#include <vector>

namespace host {

/// A polygon of the file and what it belongs to.
struct ObjPolygon {
    int corners = 0;
    int object = 0, group = -1, material = 0; ///< group -1: none
};

/// The structure of an .obj file, checked line by line.
struct ObjOutline {
    std::vector<std::string> objects;   ///< at least one; without an `o` line it has no name
    std::vector<std::string> groups;    ///< every name once
    std::vector<std::string> materials; ///< in the order of first use
    std::vector<ObjPolygon> polygons;   ///< in the order of the file
    bool hasColors = false;             ///< some vertex has a colour
    bool hasSmoothing = false;          ///< the file has an `s` line
    std::string geometry;               ///< the v, vt, vn, f and s lines alone
};

/// Most corners of a polygon.
inline constexpr int kMostObjCorners = 255;

/// Throws Error with file and line for what cannot be read or points to nothing.
ObjOutline ScanObj(const std::string& file, std::string_view content);

} // namespace host
