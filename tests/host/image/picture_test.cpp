#include "image/picture.h"

#include <gtest/gtest.h>

namespace host {
namespace {

TEST(Picture, StartsTransparentBlackWithoutChannels) {
    const Picture p(3, 2);
    EXPECT_EQ(p.Width(), 3);
    EXPECT_EQ(p.Height(), 2);
    EXPECT_EQ(p.GetPixel(2, 1), AColor(0, 0, 0, 0));
    EXPECT_EQ(p.Channels(), 0u);
    EXPECT_EQ(p.Z(), nullptr);
    EXPECT_FALSE(p.HasBackground());
}

TEST(Picture, PixelsOutsideAreIgnored) {
    Picture p(2, 2);
    p.PutPixel(2, 0, {1, 1, 1, 1});
    p.PutPixel(0, -1, {1, 1, 1, 1});
    p.PutBackground(-1, 0, {1, 1, 1});
    EXPECT_EQ(p.GetPixel(2, 0), AColor(0, 0, 0, 0));
    EXPECT_FALSE(p.HasBackground());
    for (int i = 0; i < 4; ++i) EXPECT_EQ(p.GetPixel(i % 2, i / 2), AColor(0, 0, 0, 0));
}

TEST(Picture, ShownIsColourPlusWhatShinesThrough) {
    Picture p(1, 1);
    p.PutPixel(0, 0, {0.25f, 0.5f, 0, 0.5f});
    p.PutBackground(0, 0, {0.125f, 0, 0.5f});
    EXPECT_EQ(p.Shown(0, 0), Color(0.375f, 0.5f, 0.5f));
}

TEST(Picture, ChannelsHaveTheirTypesAndZStartsEmpty) {
    Picture p(5, 3);
    p.AddChannels(BMM_CHAN_Z | BMM_CHAN_MTL_ID | BMM_CHAN_NODE_ID | BMM_CHAN_VELOC | BMM_CHAN_COLOR);
    EXPECT_EQ(p.Channels(), BMM_CHAN_Z | BMM_CHAN_MTL_ID | BMM_CHAN_NODE_ID | BMM_CHAN_VELOC | BMM_CHAN_COLOR);
    const struct {
        uint32_t channel;
        ChannelType type;
    } expected[] = {{BMM_CHAN_Z, CHANNEL_32},
                    {BMM_CHAN_MTL_ID, CHANNEL_8},
                    {BMM_CHAN_NODE_ID, CHANNEL_16},
                    {BMM_CHAN_VELOC, CHANNEL_64},
                    {BMM_CHAN_COLOR, CHANNEL_24}};
    for (const auto& e : expected) {
        ChannelType type = CHANNEL_NONE;
        EXPECT_NE(p.GetChannel(e.channel, type), nullptr);
        EXPECT_EQ(type, e.type);
    }
    ChannelType type = CHANNEL_8;
    EXPECT_EQ(p.GetChannel(BMM_CHAN_REALPIX, type), nullptr);
    EXPECT_EQ(type, CHANNEL_NONE);
    for (int i = 0; i < 15; ++i) EXPECT_EQ(p.Z()[i], kEmptyDepth);
}

TEST(Picture, AddingAChannelTwiceKeepsIt) {
    Picture p(2, 1);
    p.AddChannels(BMM_CHAN_Z);
    p.Z()[1] = -5;
    p.AddChannels(BMM_CHAN_Z | BMM_CHAN_MTL_ID);
    EXPECT_EQ(p.Z()[1], -5);
}

TEST(Picture, ResetForgetsEverything) {
    Picture p(2, 2);
    p.AddChannels(BMM_CHAN_Z);
    p.PutBackground(0, 0, {1, 1, 1});
    p.SetRenderInfo(RenderInfo());
    p.Reset(4, 1, 2.0f);
    EXPECT_EQ(p.Aspect(), 2.0f);
    EXPECT_EQ(p.Channels(), 0u);
    EXPECT_FALSE(p.HasBackground());
    EXPECT_EQ(p.GetRenderInfo(), nullptr);
    EXPECT_EQ(p.Width() * p.Height(), 4);
}

} // namespace
} // namespace host
