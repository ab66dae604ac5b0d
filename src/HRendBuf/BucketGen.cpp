#include "HRendBuf/BucketGen.h"

int BucketGen::Divisions(int extent) const {
    const int n = extent / size_;
    return n < 2 ? 1 : n;
}

void BucketGen::Setup(int width, int height) {
    width_ = width;
    height_ = height;
    columns_ = rows_ = 1;
}

void BucketGen::GetBucketRect(int x, int y, int& x0, int& y0, int& w, int& h) const {
    x0 = y0 = 0;
    w = width_;
    h = height_;
}

int BucketGen::ColumnOf(int x) const {
    const int c = x / size_;
    return c >= columns_ - 1 ? columns_ - 1 : c;
}

int BucketGen::RowOf(int y) const {
    const int r = y / size_;
    return r >= rows_ - 1 ? rows_ - 1 : r;
}

void BucketGen::ColumnSpan(int x, int& start, int& extent) const {
    const int c = ColumnOf(x);
    start = c * size_;
    extent = c == columns_ - 1 ? width_ - start : size_;
}

void BucketGen::RowSpan(int y, int& start, int& extent) const {
    const int r = RowOf(y);
    start = r * size_;
    extent = r == rows_ - 1 ? height_ - start : size_;
}

void BucketGenStripeHoriz::Setup(int width, int height) {
    BucketGen::Setup(width, height);
    rows_ = Divisions(height);
}

void BucketGenStripeHoriz::GetBucketRect(int x, int y, int& x0, int& y0, int& w, int& h) const {
    x0 = 0;
    w = width_;
    RowSpan(y, y0, h);
}

void BucketGenSquare::Setup(int width, int height) {
    BucketGen::Setup(width, height);
    columns_ = Divisions(width);
    rows_ = Divisions(height);
}

void BucketGenSquare::GetBucketRect(int x, int y, int& x0, int& y0, int& w, int& h) const {
    ColumnSpan(x, x0, w);
    RowSpan(y, y0, h);
}
