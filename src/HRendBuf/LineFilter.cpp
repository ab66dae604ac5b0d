#include "HRendBuf/LineFilter.h"

#include <cmath>

void LineFilterBox::Setup(float a, float b, float width) {
    const float s = width < 0.15f && size_ > 0.5f ? 0.5f : size_;
    if (s == s_) return;
    s_ = s;
    p_ = s * b;
    q_ = s * a;
    k_ = 1.0f / (s * s * 8.0f);
    ia_ = 1.0f / a;
    ib_ = 1.0f / b;
}

// A plain sum over cells of 0.01 pixel, so that tables are the same everywhere. The last cell may overshoot its bound.
void LineFilterTable::Fill() {
    constexpr double kStep = 0.01;
    const double size = size_;
    table_[0] = 0.0f;
    table_[32] = table_[33] = 1.0f;
    for (int i = 1; i < 32; ++i) {
        const double x = 2.0 * i * size / 32.0 - size;
        double sum = 0;
        for (double u = -size; u < size; u += kStep)
            for (double v = -size; v < x; v += kStep) sum += Kernel(u, v);
        table_[i] = float(0.0001 * sum);
    }
}

LineFilterCone::LineFilterCone(float size)
    : LineFilterTable(size), norm_(3.0 / (3.14159265358979323846 * double(size) * double(size) * double(size))) {
    Fill();
}

double LineFilterCone::Kernel(double u, double v) const {
    const double r = std::sqrt(u * u + v * v);
    return r < size_ ? (size_ - r) * norm_ : 0.0;
}
