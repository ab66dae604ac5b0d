#pragma once
// Pictures in memory.

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "sdk/bitmap.h"

namespace host {

/// Depth of pixels that show nothing, in the Z channel.
inline constexpr float kEmptyDepth = -1e30f;
/// Longest side of a picture.
inline constexpr int kMaxPictureSide = 32768;

/// A picture: linear float colour, premultiplied by alpha and without the background; what of the background shines
/// through is kept beside it. Pixel (0, 0) is the upper left one. Channels are absent until asked for.
/// Different pixels may be written from different threads.
class Picture final : public Bitmap {
public:
    Picture() = default;
    Picture(int width, int height, float aspect = 1) { Reset(width, height, aspect); }
    /// Makes an empty picture (transparent black) of that size, 0..kMaxPictureSide a side, without channels. `aspect`
    /// is a pixel's width by its height.
    void Reset(int width, int height, float aspect = 1);

    int Width() const override { return width_; }
    int Height() const override { return height_; }
    float Aspect() const override { return aspect_; }
    /// Transparent black outside the picture.
    AColor GetPixel(int x, int y) const override { return Inside(x, y) ? pixels_[Index(x, y)] : AColor(0, 0, 0, 0); }
    /// Ignored outside the picture.
    void PutPixel(int x, int y, const AColor& c) override {
        if (Inside(x, y)) pixels_[Index(x, y)] = c;
    }

    /// What of the background shines through a pixel; black when no background was ever put.
    Color GetBackground(int x, int y) const override;
    void PutBackground(int x, int y, const Color& c) override;
    /// Makes room for the background; needed before several threads put it.
    void AddBackground() { background_.resize(pixels_.size()); }
    bool HasBackground() const { return !background_.empty(); }
    /// The pixel as it looks: colour over the background.
    Color Shown(int x, int y) const;

    /// Makes the channels of the bit set `channels` (BMM_CHAN_*) that are not there yet, filled with zero; Z is
    /// filled with kEmptyDepth. Z holds camera-space z: negative in front of the camera.
    void AddChannels(uint32_t channels);
    /// Drops all channels that are not in the set.
    void KeepChannels(uint32_t channels);
    /// Channels there, as a bit set.
    uint32_t Channels() const;
    void* GetChannel(uint32_t channel, ChannelType& type) override;
    /// The same to read; null when absent.
    const void* Channel(uint32_t channel) const;
    /// The Z channel, row-major; null when absent.
    float* Z();
    const float* Z() const;

    /// View of the render; null until SetRenderInfo.
    RenderInfo* GetRenderInfo() override { return hasInfo_ ? &info_ : nullptr; }
    const RenderInfo* GetRenderInfo() const { return hasInfo_ ? &info_ : nullptr; }
    void SetRenderInfo(const RenderInfo& info) { info_ = info, hasInfo_ = true; }
    /// Frames a second of the scene, 0 when unknown; written into files.
    int framesPerSecond = 0;

private:
    bool Inside(int x, int y) const { return x >= 0 && y >= 0 && x < width_ && y < height_; }
    size_t Index(int x, int y) const { return size_t(y) * size_t(width_) + size_t(x); }

    int width_ = 0, height_ = 0;
    float aspect_ = 1;
    std::vector<AColor> pixels_;
    std::vector<Color> background_;
    std::map<uint32_t, std::vector<std::byte>> channels_; ///< row-major
    RenderInfo info_;
    bool hasInfo_ = false;
};

} // namespace host
