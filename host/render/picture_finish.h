#pragma once
// What happens to a picture when all its pixels are there: render effects and image filters.

#include <vector>

#include "core/core.h"
#include "image/picture.h"
#include "render/frame.h"

namespace host {

/// The active render effects and image filters of one frame. Making it brings the effects to the frame's time and tells
/// the filters of the frame: it must be there before the atmospheric effects begin, and be run before they end. While
/// it lives, the core's render parameters ask for the channels that they want, too.
class PictureFinish {
public:
    PictureFinish(Core& core, const FrameSettings& settings);
    ~PictureFinish();
    PictureFinish(const PictureFinish&) = delete;
    PictureFinish& operator=(const PictureFinish&) = delete;

    /// Runs the effects in their order, then the filters in theirs. What lies outside of the settings' region stays
    /// empty, and channels that nobody but them asked for are gone afterwards. False when the user wanted to stop.
    /// Throws Error when a filter fails.
    bool Run(Picture& picture, RenderGlobalContext& render, IProgressIndicator* progress);

private:
    bool RunFilters(Picture& picture, IProgressIndicator* progress);
    void EmptyOutside(Picture& picture) const;

    Core& core_;
    const FrameSettings& settings_;
    const uint32_t asked_; ///< channels that the scene asks for
    std::vector<Effect*> effects_;
    std::vector<FilterQueue::Entry*> filters_;
};

} // namespace host
