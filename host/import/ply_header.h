#pragma once
// Headers of .ply files.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace host {

enum class PlyType { kInt8, kUint8, kInt16, kUint16, kInt32, kUint32, kFloat32, kFloat64 };
/// Bytes of a value in a binary file.
size_t PlySize(PlyType type);

struct PlyProperty {
    std::string name;
    PlyType type = PlyType::kFloat32; ///< of the value, or of the entries of a list
    bool isList = false;
    PlyType countType = PlyType::kUint8; ///< of a list's length
};

struct PlyElement {
    std::string name;
    size_t count = 0;
    std::vector<PlyProperty> properties;
    /// Place of a property, -1 when there is none.
    int Find(std::string_view property) const;
    /// The first of several names that there is, -1 when there is none.
    int FindAny(std::initializer_list<std::string_view> names) const;
};

enum class PlyForm { kAscii, kLittleEndian, kBigEndian };

struct PlyHeader {
    PlyForm form = PlyForm::kAscii;
    std::vector<PlyElement> elements;
    size_t bytes = 0; ///< where the values begin
    int lines = 0;    ///< lines of the header
};

// What a header may claim.
inline constexpr size_t kMostPlyElements = 64, kMostPlyProperties = 256, kMostPlyHeaderLines = 4096;
inline constexpr size_t kMostPlyCount = 500'000'000;

/// Throws Error with file and line.
PlyHeader ReadPlyHeader(const std::string& file, std::string_view content);

} // namespace host
