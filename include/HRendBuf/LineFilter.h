#pragma once
// Line filters: the part of a filter kernel that lies on the inner side of an edge.
//
// A strand of half-width h whose centre line passes a pixel centre at distance d covers F(h - d) - F(-h - d) of it,
// F being the edge integral that Eval answers. An end of the strand fades with one more factor F(s), s being the pixel
// centre's distance inside the strand from the end line.

#include "Base/HUtil/Simd.h"

/// A filter kernel of radius `Size()` pixels.
class LineFilter {
public:
    explicit LineFilter(float size) : size_(size) {}
    virtual ~LineFilter() = default;
    /// 0 none, 1 box, 2 cone.
    virtual int GetType() const = 0;
    /// The fraction of the kernel on the inner side of an edge at signed distance `e` (pixels) from the pixel centre.
    virtual float Eval(float e) const = 0;
    /// Kernel radius in pixels.
    float Size() const { return size_; }

protected:
    float size_;
};

/// A hard edge: the strand covers the pixel centre or it does not.
class LineFilterNone final : public LineFilter {
public:
    explicit LineFilterNone(float size) : LineFilter(size) {}
    int GetType() const override { return 0; }
    float Eval(float e) const override { return e < 0.0f ? 0.0f : 1.0f; }
};

/// A square of half-size s, aligned with the pixel grid. It is set up for a direction before use.
class LineFilterBox final : public LineFilter {
public:
    explicit LineFilterBox(float size) : LineFilter(size) {}
    int GetType() const override { return 1; }
    float Eval(float e) const override { return Area(e); }
    /// Prepares for a segment whose unit normal has the absolute components `a` and `b`, a >= b; `width` is the larger
    /// of its end widths in pixels. The half-size is 0.5 for strands thinner than 0.15 pixel when Size() is larger.
    /// intended: nothing is recomputed while the half-size stays the same, so the terms may be an earlier segment's. A
    /// caller that wants this segment's terms starts from a fresh filter.
    virtual void Setup(float a, float b, float width);
    /// The half-size in use; 0 before the first Setup.
    float HalfSize() const { return s_; }
    /// Eval without the virtual call.
    float Area(float e) const;

private:
    float s_ = 0;
    float p_ = 0, q_ = 0; ///< s b, s a
    float k_ = 0;         ///< 1 / (8 s^2)
    float ia_ = 0, ib_ = 0;
};

/// A radial kernel whose edge integral is tabulated once.
class LineFilterTable : public LineFilter {
public:
    explicit LineFilterTable(float size) : LineFilter(size), invScale_(1.0f / (2.0f * size)) {}
    float Eval(float e) const final { return Lookup(e); }
    /// The kernel at (u, v) pixels from its centre; its volume is 1.
    virtual double Kernel(double u, double v) const = 0;
    /// Eval without the virtual call. |e| must be below Size().
    float Lookup(float e) const {
        const float f = (e + size_) * 32.0f * invScale_;
        const int i = int(f);
        const float t = f - float(i);
        return (1.0f - t) * table_[i] + t * table_[i + 1];
    }
    /// Several at once; an argument beyond Size() gives some entry.
    template <class Lanes>
    [[gnu::always_inline]] Lanes Lookup(Lanes e) const {
        const Lanes scaled = (e + Lanes(size_)) * Lanes(32.0f) * Lanes(invScale_);
        const Lanes f = MinOr(MaxOr(scaled, Lanes(0.0f)), Lanes(32.5f));
        const auto i = ToInts(f);
        const Lanes t = f - ToFloats(i);
        Lanes at, next;
        LookUpTwo(table_, i, at, next);
        return (Lanes(1.0f) - t) * at + t * next;
    }
    /// Entry 0..32 of the table.
    float Entry(int i) const { return table_[i]; }

protected:
    /// Fills the table from Kernel; for the constructors of concrete classes.
    void Fill();

private:
    float invScale_;
    // 33 entries, and one that is only ever read with weight zero: when rounding carries e + size up to 2 size.
    float table_[34] = {};
};

/// A cone of radius Size().
class LineFilterCone final : public LineFilterTable {
public:
    explicit LineFilterCone(float size);
    int GetType() const override { return 2; }
    double Kernel(double u, double v) const override;

private:
    double norm_; ///< 3 / (pi size^3)
};

inline float LineFilterBox::Area(float e) const {
    const float s = s_, u1 = (e - p_) * ia_, u2 = (e + p_) * ia_;
    if (u1 >= -s) {
        if (u1 >= s) return u2 <= s ? 1.0f - (s - u2) * (s + (e - q_) * ib_) * k_ : 1.0f;
        if (u2 < -s) return (s - (e + q_) * ib_) * (u1 + s) * k_;
        if (u2 >= s) return 1.0f - (s - u1) * (s + (q_ - e) * ib_) * k_;
        return (2.0f * s + u1 + u2) * s * 2.0f * k_;
    }
    return u2 >= -s ? (s + (e + q_) * ib_) * (u2 + s) * k_ : 0.0f;
}
