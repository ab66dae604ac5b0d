#pragma once

/// A rectangle of pixels; x1 and y1 are exclusive.
struct PixelRect {
    int x0 = 0, y0 = 0, x1 = 0, y1 = 0;
    int Width() const { return x1 - x0; }
    int Height() const { return y1 - y0; }
    bool Contains(int x, int y) const { return x >= x0 && x < x1 && y >= y0 && y < y1; }
};
