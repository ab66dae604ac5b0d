#pragma once
// The layers of .exr files that G-buffer channels become.

#include <cstddef>
#include <cstdint>
#include <span>

#include <OpenEXR/ImfPixelType.h>

namespace host {

/// One channel of a file.
struct ExrLayer {
    const char* name;
    uint32_t channel; ///< BMM_CHAN_*
    Imf::PixelType type;
    int component;
    /// Component `k` of pixel `i` of the channel's data, in the file's type: the lowest bytes count.
    uint32_t (*bits)(const void* data, size_t i, int k);
};

/// All layers; those whose channel a picture has are written.
std::span<const ExrLayer> ExrLayers();

} // namespace host
