#include "image/picture.h"

#include <algorithm>

namespace host {

namespace {

struct ChannelKind {
    uint32_t bit;
    ChannelType type;
};
constexpr ChannelKind kKinds[] = {
    {BMM_CHAN_Z, CHANNEL_32},       {BMM_CHAN_MTL_ID, CHANNEL_8},  {BMM_CHAN_NODE_ID, CHANNEL_16},
    {BMM_CHAN_UV, CHANNEL_64},      {BMM_CHAN_NORMAL, CHANNEL_32}, {BMM_CHAN_REALPIX, CHANNEL_32},
    {BMM_CHAN_COVERAGE, CHANNEL_8}, {BMM_CHAN_BG, CHANNEL_24},     {BMM_CHAN_NODE_RENDER_ID, CHANNEL_16},
    {BMM_CHAN_COLOR, CHANNEL_24},   {BMM_CHAN_TRANSP, CHANNEL_24}, {BMM_CHAN_VELOC, CHANNEL_64},
};

ChannelType TypeOf(uint32_t channel) {
    for (const ChannelKind& k : kKinds)
        if (k.bit == channel) return k.type;
    return CHANNEL_NONE;
}

} // namespace

void Picture::Reset(int width, int height, float aspect) {
    width_ = std::clamp(width, 0, kMaxPictureSide);
    height_ = std::clamp(height, 0, kMaxPictureSide);
    aspect_ = aspect;
    pixels_.assign(size_t(width_) * size_t(height_), AColor(0, 0, 0, 0));
    background_.clear();
    channels_.clear();
    hasInfo_ = false;
    framesPerSecond = 0;
}

Color Picture::GetBackground(int x, int y) const {
    return Inside(x, y) && HasBackground() ? background_[Index(x, y)] : Color();
}

void Picture::PutBackground(int x, int y, const Color& c) {
    if (!Inside(x, y)) return;
    if (!HasBackground()) AddBackground();
    background_[Index(x, y)] = c;
}

Color Picture::Shown(int x, int y) const {
    return Color(GetPixel(x, y)) + GetBackground(x, y);
}

void Picture::AddChannels(uint32_t channels) {
    for (const ChannelKind& k : kKinds) {
        if (!(channels & k.bit) || channels_.count(k.bit)) continue;
        channels_[k.bit].assign(pixels_.size() * size_t(k.type / 8), std::byte{0});
        if (k.bit == BMM_CHAN_Z) std::fill_n(Z(), pixels_.size(), kEmptyDepth);
    }
}

void Picture::KeepChannels(uint32_t channels) {
    std::erase_if(channels_, [channels](const auto& entry) { return (entry.first & channels) == 0; });
}

uint32_t Picture::Channels() const {
    uint32_t bits = 0;
    for (const auto& [bit, data] : channels_) bits |= bit;
    return bits;
}

void* Picture::GetChannel(uint32_t channel, ChannelType& type) {
    const auto it = channels_.find(channel);
    type = it == channels_.end() ? CHANNEL_NONE : TypeOf(channel);
    return it == channels_.end() ? nullptr : it->second.data();
}

const void* Picture::Channel(uint32_t channel) const {
    const auto it = channels_.find(channel);
    return it == channels_.end() ? nullptr : it->second.data();
}

float* Picture::Z() {
    ChannelType type;
    return static_cast<float*>(GetChannel(BMM_CHAN_Z, type));
}

const float* Picture::Z() const {
    return static_cast<const float*>(Channel(BMM_CHAN_Z));
}

} // namespace host
