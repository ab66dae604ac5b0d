#include "image/exr_layers.h"

#include <bit>

#include <Imath/half.h>

#include "image/packed_normal.h"
#include "sdk/bitmap.h"
#include "sdk/color.h"

namespace host {

namespace {

template <class T>
uint32_t Number(const void* data, size_t i, int) {
    return static_cast<const T*>(data)[i];
}

uint32_t Float(const void* data, size_t i, int k) {
    return std::bit_cast<uint32_t>(static_cast<const float*>(data)[i * 2 + size_t(k)]);
}

uint32_t Half(float v) {
    return Imath::half(v).bits();
}

uint32_t Share(const void* data, size_t i, int) {
    return Half(float(static_cast<const uint8_t*>(data)[i]) / 255.0f);
}

uint32_t ByteColor(const void* data, size_t i, int k) {
    return Half(float(static_cast<const uint8_t*>(data)[i * 3 + size_t(k)]) / 255.0f);
}

uint32_t SharedExponent(const void* data, size_t i, int k) {
    return std::bit_cast<uint32_t>(ExpandRealPixel(static_cast<const RealPixel*>(data)[i])[k]);
}

uint32_t Direction(const void* data, size_t i, int k) {
    return std::bit_cast<uint32_t>(UnpackNormal(static_cast<const uint32_t*>(data)[i])[k]);
}

constexpr ExrLayer kLayers[] = {
    {"materialid", BMM_CHAN_MTL_ID, Imf::UINT, 0, Number<uint8_t>},
    {"objectid", BMM_CHAN_NODE_ID, Imf::UINT, 0, Number<uint16_t>},
    {"instanceid", BMM_CHAN_NODE_RENDER_ID, Imf::UINT, 0, Number<uint16_t>},
    {"coverage", BMM_CHAN_COVERAGE, Imf::HALF, 0, Share},
    {"color.R", BMM_CHAN_COLOR, Imf::HALF, 0, ByteColor},
    {"color.G", BMM_CHAN_COLOR, Imf::HALF, 1, ByteColor},
    {"color.B", BMM_CHAN_COLOR, Imf::HALF, 2, ByteColor},
    {"transparency.R", BMM_CHAN_TRANSP, Imf::HALF, 0, ByteColor},
    {"transparency.G", BMM_CHAN_TRANSP, Imf::HALF, 1, ByteColor},
    {"transparency.B", BMM_CHAN_TRANSP, Imf::HALF, 2, ByteColor},
    {"realpixel.R", BMM_CHAN_REALPIX, Imf::FLOAT, 0, SharedExponent},
    {"realpixel.G", BMM_CHAN_REALPIX, Imf::FLOAT, 1, SharedExponent},
    {"realpixel.B", BMM_CHAN_REALPIX, Imf::FLOAT, 2, SharedExponent},
    {"uv.u", BMM_CHAN_UV, Imf::FLOAT, 0, Float},
    {"uv.v", BMM_CHAN_UV, Imf::FLOAT, 1, Float},
    {"N.X", BMM_CHAN_NORMAL, Imf::FLOAT, 0, Direction},
    {"N.Y", BMM_CHAN_NORMAL, Imf::FLOAT, 1, Direction},
    {"N.Z", BMM_CHAN_NORMAL, Imf::FLOAT, 2, Direction},
    {"forward.u", BMM_CHAN_VELOC, Imf::FLOAT, 0, Float},
    {"forward.v", BMM_CHAN_VELOC, Imf::FLOAT, 1, Float},
};

} // namespace

std::span<const ExrLayer> ExrLayers() {
    return kLayers;
}

} // namespace host
