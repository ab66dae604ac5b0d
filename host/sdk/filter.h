#pragma once
// Image filters: what works on finished pictures in the filter queue, and the window that runs them.

#include <cstdint>

#include "sdk/basetypes.h"

class Bitmap;

// Messages of the filter window.
inline constexpr unsigned FLT_PROGRESS = 1056; ///< progress: first of second
inline constexpr unsigned FLT_CHECKABORT =
    1057;                                  ///< second: address of an int, not 0 afterwards when the user cancelled
inline constexpr unsigned FLT_TEXT = 1058; ///< second: a text to show

class IFilterWindow {
public:
    virtual ~IFilterWindow() = default;
    virtual void SendMessage(unsigned message, intptr_t first, intptr_t second) = 0;
};

/// An entry of the queue of image filters. It has no references and no parameter blocks: what is set of it is one
/// piece of data of a fixed size. Create of a filter class answers the ImageFilter itself.
class ImageFilter {
public:
    virtual ~ImageFilter() = default;
    virtual void DeleteThis() { delete this; }
    /// G-buffer channels (BMM_CHAN_*) that Render wants to find in the picture.
    virtual uint32_t ChannelsRequired() { return 0; }
    /// Once a frame, before any sample and before the atmospheric effects begin.
    virtual void BeforeRender(TimeValue t) {}
    /// Works on the finished picture, before the atmospheric effects end. `window` is told the progress and asked
    /// whether to stop. False when the filter failed.
    virtual bool Render(Bitmap* bitmap, IFilterWindow* window) = 0;

    /// Size of the configuration in bytes; 0 when nothing can be set.
    virtual int EvaluateConfigure() { return 0; }
    /// Writes, reads EvaluateConfigure() bytes; false when they make no sense, and nothing changes.
    virtual bool SaveConfigure(void* data) { return true; }
    virtual bool LoadConfigure(const void* data) { return true; }
};
