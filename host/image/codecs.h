#pragma once
// Picture formats other than .exr, in a library of their own that is loaded when first needed: what it is built on
// brings along hundreds of libraries, which a render should not carry in memory.

#include <cstdint>
#include <string>
#include <vector>

namespace host {

/// What a picture file holds, channel by channel as it stands: `channels` values a pixel, upper left pixel first.
struct RawImage {
    int width = 0, height = 0;
    int channels = 0;
    bool wholeNumbers = false;  ///< the file holds 8- or 16-bit numbers
    std::vector<uint8_t> bytes; ///< 8-bit files
    std::vector<float> floats;  ///< all others
};

/// Refuses a size (throws Error) before any pixel is read.
using CheckSizeFn = void (*)(const std::string& path, int64_t width, int64_t height);

/// What the library offers. Functions answer false and put one line into `error`.
struct Codecs {
    bool (*readImage)(const std::string& path, CheckSizeFn checkSize, RawImage& image, std::string& error);
    /// Encodes 8-bit RGB pixels as a .png file in memory.
    bool (*encodePng)(const uint8_t* rgb, int width, int height, float aspect, const char* software,
                      std::vector<unsigned char>& file, std::string& error);
};

/// The codecs, loaded on the first call. Throws Error when the library is missing. Any thread.
const Codecs& GetCodecs();

/// The one function that the library exports.
inline constexpr const char* kCodecsEntry = "velmar_codecs";
using CodecsEntryFn = const Codecs* (*)();

} // namespace host
