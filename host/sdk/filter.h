#pragma once
// What an image filter says to the window that runs it.

#include <cstdint>

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
