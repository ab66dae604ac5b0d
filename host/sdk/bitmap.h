#pragma once
// Pictures in memory with their G-buffer channels.

#include <cstdint>
#include <vector>

#include "sdk/color.h"
#include "sdk/matrix3.h"
#include "sdk/point2.h"

// G-buffer channels (bit set).
inline constexpr uint32_t BMM_CHAN_Z = 1 << 0;
inline constexpr uint32_t BMM_CHAN_MTL_ID = 1 << 1;
inline constexpr uint32_t BMM_CHAN_NODE_ID = 1 << 2;
inline constexpr uint32_t BMM_CHAN_UV = 1 << 3;
inline constexpr uint32_t BMM_CHAN_NORMAL = 1 << 4;
inline constexpr uint32_t BMM_CHAN_REALPIX = 1 << 5;
inline constexpr uint32_t BMM_CHAN_COVERAGE = 1 << 6;
inline constexpr uint32_t BMM_CHAN_BG = 1 << 7;
inline constexpr uint32_t BMM_CHAN_NODE_RENDER_ID = 1 << 8;
inline constexpr uint32_t BMM_CHAN_COLOR = 1 << 9;
inline constexpr uint32_t BMM_CHAN_TRANSP = 1 << 10;
inline constexpr uint32_t BMM_CHAN_VELOC = 1 << 11;

/// Storage type of a channel.
enum ChannelType {
    CHANNEL_NONE = 0,
    CHANNEL_8 = 8,
    CHANNEL_16 = 16,
    CHANNEL_24 = 24,
    CHANNEL_32 = 32,
    CHANNEL_64 = 64
};

/// How the picture was rendered.
class RenderInfo {
public:
    int projType = 0;
    float xscale[2] = {1, 1}, yscale[2] = {1, 1}, xc = 0, yc = 0; ///< per field
    Matrix3 camToWorld[2], worldToCam[2];                         ///< per field
    bool fieldRender = false;
    Point2 MapCamToScreen(const Point3& p, int field = 0) const {
        if (projType == 1) return {xc + xscale[field] * p.x, yc + yscale[field] * p.y};
        return {xc + xscale[field] * p.x / p.z, yc + yscale[field] * p.y / p.z};
    }
};

/// A picture: float colour with alpha, and optional channels. Colours are linear, premultiplied and without the
/// background; what of it shines through a pixel may be kept beside.
class Bitmap {
public:
    virtual ~Bitmap() = default;
    virtual int Width() const = 0;
    virtual int Height() const = 0;
    virtual float Aspect() const { return 1; }
    virtual AColor GetPixel(int x, int y) const = 0;
    virtual void PutPixel(int x, int y, const AColor& c) = 0;
    /// Raw data of one channel, row-major, and its storage type; null when absent.
    virtual void* GetChannel(uint32_t channel, ChannelType& type) = 0;
    virtual RenderInfo* GetRenderInfo() { return nullptr; }
    /// What of the background shines through a pixel; the pixel looks like the sum of both. Black without one.
    virtual Color GetBackground(int x, int y) const { return {}; }
    /// Does nothing for pictures that keep no background.
    virtual void PutBackground(int x, int y, const Color& c) {}
};
