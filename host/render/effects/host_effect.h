#pragma once
// What the host's own render effects have in common.

#include <vector>

#include "core/block_class.h"
#include "core/block_holder.h"
#include "sdk/atmos.h"
#include "sdk/bitmap.h"
#include "sdk/render.h"

namespace host {

/// A pixel as effects change it: its own premultiplied colour with alpha, and what of the background shines through.
struct EffectPixel {
    AColor own;
    Color background;
};

/// A render effect with a parameter block, the first parameter being kOnlyId. Colours never fall below zero.
class HostEffect : public BlockHolder<Effect> {
public:
    enum : ParamID { kOnlyId, kOwnParams }; ///< a class's own parameters begin at kOwnParams

    /// The node ids, where only nodes with a G-buffer id are changed.
    uint32_t GBufferChannelsRequired(TimeValue t) override { return Int(kOnlyId, t) != 0 ? BMM_CHAN_NODE_ID : 0; }

protected:
    /// The parameters of every effect and those of a class.
    static std::vector<ParamDef> WithShared(std::vector<ParamDef> own);
    /// Calls change(x, y, pixel) for every pixel that the effect may change, line by line, and tells the progress.
    /// False when the user wants to stop: the lines below stay as they were.
    template <class F>
    bool EachPixel(TimeValue t, Bitmap& bitmap, RendProgressCallback* progress, F&& change);
    /// A copy of a class, with its own block.
    template <class T>
    RefTargetHandle CopyOf(RemapDir& remap) {
        auto* const copy = new T;
        CopyBlock(*copy, remap);
        copy->SetName(GetName());
        copy->SetDisabled(!Active(0));
        return copy;
    }
    Color ColorOf(ParamID id, TimeValue t) { return Color(Point(id, t)); }
};

inline EffectPixel PixelAt(const Bitmap& bitmap, int x, int y) {
    return {bitmap.GetPixel(x, y), bitmap.GetBackground(x, y)};
}

/// Puts a pixel; a black background is not put where there is none yet, so that pictures without one stay so.
void PutPixel(Bitmap& bitmap, int x, int y, EffectPixel p);

/// Multiplies by `factor` and adds `offset`, to the pixel's own colour and to the background in the shares that alpha
/// gives them.
void ScaleAndAdd(EffectPixel& p, const Color& factor, const Color& offset);

/// Tells a callback, which may be null. False when the user wants to stop.
inline bool Tell(RendProgressCallback* progress, int done, int total) {
    return !progress || progress->Progress(done, total) != 0;
}

template <class F>
bool HostEffect::EachPixel(TimeValue t, Bitmap& bitmap, RendProgressCallback* progress, F&& change) {
    const int only = Int(kOnlyId, t), width = bitmap.Width();
    ChannelType type = CHANNEL_NONE;
    const auto* const ids = only ? static_cast<const uint16_t*>(bitmap.GetChannel(BMM_CHAN_NODE_ID, type)) : nullptr;
    if (only && !ids) return true; // no such nodes are known here
    for (int y = 0; y < bitmap.Height(); ++y) {
        if (!Tell(progress, y, bitmap.Height())) return false;
        for (int x = 0; x < width; ++x) {
            if (only && ids[size_t(y) * size_t(width) + size_t(x)] != only) continue;
            EffectPixel p = PixelAt(bitmap, x, y);
            change(x, y, p);
            PutPixel(bitmap, x, y, p);
        }
    }
    return Tell(progress, bitmap.Height(), bitmap.Height());
}

} // namespace host
