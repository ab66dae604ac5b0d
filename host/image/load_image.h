#pragma once
// Picture files read into memory.

#include <cstdint>
#include <string>
#include <vector>

#include "sdk/color.h"

namespace host {

/// A picture that was read from a file: linear colour with alpha. 8-bit files stay in bytes.
class Image {
public:
    int Width() const { return width_; }
    int Height() const { return height_; }
    /// Pixel (0, 0) is the upper left one; `x` and `y` must lie inside.
    AColor At(int x, int y) const {
        const size_t i = (size_t(y) * size_t(width_) + size_t(x)) * 4;
        if (!floats_.empty()) return {floats_[i], floats_[i + 1], floats_[i + 2], floats_[i + 3]};
        const uint8_t* const p = &bytes_[i];
        return {decode_[p[0]], decode_[p[1]], decode_[p[2]], float(p[3]) / 255.0f};
    }

private:
    friend Image ReadExr(const std::string& path);
    friend Image ReadOther(const std::string& path, bool raw);
    int width_ = 0, height_ = 0;
    std::vector<float> floats_;
    std::vector<uint8_t> bytes_;
    std::vector<float> decode_; ///< linear light of a byte
};

/// Most pixels of a picture that is read: a wrong header must not fill the memory.
inline constexpr int64_t kMaxImagePixels = int64_t(1) << 26;

/// Reads flat .exr files, and .png, .jpg, .tif, .hdr and what else OpenImageIO knows. Grey becomes red = green = blue,
/// missing alpha is 1. Files of whole numbers (8 or 16 bits) with three colours are decoded from sRGB unless `raw`;
/// grey ones hold measures more often than light and are taken as they stand, as are float files. Throws Error.
Image LoadImage(const std::string& path, bool raw);

} // namespace host
