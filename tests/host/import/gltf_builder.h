#pragma once
// glTF files for tests, put together piece by piece.

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace import_test {

inline std::string Base64(const std::string& bytes) {
    const char* const digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t v = 0;
        for (size_t k = 0; k < 3; ++k) v = v << 8 | (i + k < bytes.size() ? uint8_t(bytes[i + k]) : 0u);
        for (size_t k = 0; k < 4; ++k) out += i + k > bytes.size() ? '=' : digits[v >> (18 - 6 * k) & 63];
    }
    return out;
}

/// A .gltf file whose buffer stands inside it. `rest` are further top-level entries, each with a comma in front.
class GltfText {
public:
    /// An accessor of numbers of a kind (5126 float, 5123, 5125, 5121); returns its number.
    template <class T>
    int Add(int kind, const char* type, int width, const std::vector<T>& values, const std::string& more = "") {
        while (buffer_.size() % 4) buffer_ += '\0';
        const size_t at = buffer_.size();
        buffer_.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T));
        views_ += std::string(views_.empty() ? "" : ",") + "{\"buffer\":0,\"byteOffset\":" + std::to_string(at) +
                  ",\"byteLength\":" + std::to_string(values.size() * sizeof(T)) + "}";
        accessors_ += std::string(accessors_.empty() ? "" : ",") + "{\"bufferView\":" + std::to_string(count_) +
                      ",\"componentType\":" + std::to_string(kind) +
                      ",\"count\":" + std::to_string(values.size() / size_t(width)) + ",\"type\":\"" + type + "\"" +
                      more + "}";
        return count_++;
    }
    int Floats(const char* type, int width, const std::vector<float>& v) { return Add(5126, type, width, v); }
    int Points(const std::vector<float>& v) { return Floats("VEC3", 3, v); }
    int Shorts(const std::vector<uint16_t>& v) { return Add(5123, "SCALAR", 1, v); }

    std::string Text(const std::string& rest) const {
        const std::string buffers =
            buffer_.empty() ? ""
                            : ",\"buffers\":[{\"byteLength\":" + std::to_string(buffer_.size()) +
                                  ",\"uri\":\"data:application/octet-stream;base64," + Base64(buffer_) + "\"}]";
        return "{\"asset\":{\"version\":\"2.0\"}" + buffers + ",\"bufferViews\":[" + views_ + "],\"accessors\":[" +
               accessors_ + "]" + rest + "}";
    }

private:
    std::string buffer_, views_, accessors_;
    int count_ = 0;
};

/// Two triangles of a unit square with all vertices split; accessor 0 holds the positions.
inline GltfText SplitSquare() {
    GltfText g;
    g.Points({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 0, 0, 1, 1, 0, 0, 1, 0});
    return g;
}
/// One node with one mesh of one primitive: its attributes and further entries.
inline std::string OneMesh(const std::string& attributes, const std::string& more = "") {
    return ",\"meshes\":[{\"name\":\"square\",\"primitives\":[{\"attributes\":{" + attributes + "}" + more +
           "}]}],\"nodes\":[{\"name\":\"it\",\"mesh\":0}],\"scenes\":[{\"nodes\":[0]}]";
}

} // namespace import_test
