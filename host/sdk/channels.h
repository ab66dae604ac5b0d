#pragma once
// The channels of objects in the pipeline: what a modifier uses and changes, and what stays valid for how long.

#include <array>

#include "sdk/basetypes.h"
#include "sdk/interval.h"

// Channel numbers.
inline constexpr int TOPO_CHAN_NUM = 0;        ///< faces, knots' number and order, smoothing groups, material ids
inline constexpr int GEOM_CHAN_NUM = 1;        ///< places of points, explicit normals
inline constexpr int TEXMAP_CHAN_NUM = 2;      ///< mapping channels from 1, vertex data
inline constexpr int MTL_CHAN_NUM = 3;         ///< materials
inline constexpr int SELECT_CHAN_NUM = 4;      ///< selections, soft selection weights, named sets
inline constexpr int SUBSEL_TYPE_CHAN_NUM = 5; ///< the selection level
inline constexpr int DISP_ATTRIB_CHAN_NUM = 6; ///< how it is displayed
inline constexpr int VERT_COLOR_CHAN_NUM = 7;  ///< vertex colours, illumination and alpha
inline constexpr int GFX_DATA_CHAN_NUM = 8;    ///< data for display
inline constexpr int NUM_OBJ_CHANS = 9;

/// Set of channels: bit n is channel number n, as in the PART_ masks of change messages.
using ChannelMask = PartID;
inline constexpr ChannelMask TOPO_CHANNEL = PART_TOPO, GEOM_CHANNEL = PART_GEOM, TEXMAP_CHANNEL = PART_TEXMAP,
                             MTL_CHANNEL = PART_MTL, SELECT_CHANNEL = PART_SELECT,
                             SUBSEL_TYPE_CHANNEL = PART_SUBSEL_TYPE, DISP_ATTRIB_CHANNEL = PART_DISPLAY,
                             VERTCOLOR_CHANNEL = PART_VERTCOLOR, GFX_DATA_CHANNEL = PART_GFX_DATA;
inline constexpr ChannelMask OBJ_CHANNELS = (ChannelMask(1) << NUM_OBJ_CHANS) - 1;
/// Not a channel of objects: the node's transform.
inline constexpr ChannelMask TM_CHANNEL = PART_TM;

inline constexpr ChannelMask ChannelBit(int channel) {
    return ChannelMask(1) << channel;
}

/// A validity interval for every channel; new ones hold forever.
class ChannelIntervals {
public:
    ChannelIntervals() { each_.fill(FOREVER); }
    const Interval& operator[](int channel) const { return each_[size_t(channel)]; }
    Interval& operator[](int channel) { return each_[size_t(channel)]; }
    /// Where all channels hold.
    Interval All() const { return Of(OBJ_CHANNELS); }
    /// Where the channels of `mask` hold.
    Interval Of(ChannelMask mask) const {
        Interval v = FOREVER;
        for (int c = 0; c < NUM_OBJ_CHANS; ++c)
            if (mask & ChannelBit(c)) v &= each_[size_t(c)];
        return v;
    }
    void Invalidate(ChannelMask mask) {
        for (int c = 0; c < NUM_OBJ_CHANS; ++c)
            if (mask & ChannelBit(c)) each_[size_t(c)].SetEmpty();
    }

private:
    std::array<Interval, NUM_OBJ_CHANS> each_;
};
