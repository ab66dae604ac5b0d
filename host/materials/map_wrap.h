#pragma once
// How a map goes on outside 0..1.

namespace host {

enum MapWrap {
    kWrapRepeat,
    kWrapMirror, ///< every second repetition runs backwards
    kWrapClamp,  ///< the border goes on
};

/// The place inside 0..1 that a coordinate stands for; 0 for what is not a finite number.
float Wrapped(float c, int wrap);
/// The pixel inside 0..n-1 that number `i` stands for.
int WrappedPixel(int i, int n, int wrap);

} // namespace host
