#pragma once
// Insertion into a pixel's depth-sorted list, with merging of what lies close together.

#include "HRendBuf/FragmentPool.h"
#include "HRendBuf/HairFragment.h"

/// A sample of the image pass.
struct ImagePoint {
    float z;
    float opacity, coverage; ///< 0..1
    Color color;
};

/// A sample of the shadow pass.
struct ShadowPoint {
    float z;
    float opacity, coverage;
};

/// The kind of sample that a kind of fragment takes.
template <class Fragment>
struct PointOf;
template <>
struct PointOf<HairFragment> {
    using Type = ImagePoint;
};
template <>
struct PointOf<ShadowFragment> {
    using Type = ShadowPoint;
};

/// Where an insertion takes its fragments from, and how close in depth merges.
struct FragmentStore {
    FragmentAllocator* pool;
    int slot;
    float depthTolerance;
    bool recycle; ///< give fragments behind an opaque one back to the pool; otherwise they are only cut off
};

/// A fragment whose depth extent has reached this takes no further sample.
inline constexpr float kMaxFragmentDepth = 10.0f;
/// Coverage and opacity from here on count as full.
inline constexpr uint16_t kOpaque = 0xFFBF;

template <class Fragment>
inline void SetColor(Fragment& f, const ImagePoint& s) {
    f.color = PackRealPixel(s.color);
}
template <class Fragment>
inline void SetColor(Fragment&, const ShadowPoint&) {}

template <class Fragment>
inline void MergeColor(Fragment& f, const ImagePoint& s) {
    const Color old = UnpackRealPixel(f.color);
    f.color = PackRealPixel(old + (s.color - old) * s.opacity * s.coverage);
}
template <class Fragment>
inline void MergeColor(Fragment&, const ShadowPoint&) {}

/// Merges a sample into a fragment's colour, opacity and coverage; its depths stay.
template <class Fragment, class Point>
inline void MergeInto(Fragment& f, const Point& s) {
    const float a = s.opacity, k = s.coverage;
    const float opacity = UnpackFraction(f.opacity), coverage = UnpackFraction(f.coverage);
    MergeColor(f, s);
    const float total = coverage + k;
    f.opacity = total > 0.0f ? PackFraction((opacity * coverage + a * k) / total) : uint16_t(0);
    f.coverage = PackFraction(coverage * (1.0f - k) + k);
}

/// A new fragment in front of `next`; null when the pool is exhausted.
template <class Fragment, class Point>
inline Fragment* NewFragment(Fragment* next, const Point& s, const FragmentStore& store) {
    void* block = store.pool->Alloc(store.slot);
    if (!block) return nullptr;
    Fragment* f = new (block) Fragment;
    f->next = next;
    f->zMin = f->zMax = s.z;
    f->opacity = PackFraction(s.opacity);
    f->coverage = PackFraction(s.coverage);
    SetColor(*f, s);
    return f;
}

/// True when nothing shines through a fragment.
template <class Fragment>
inline bool IsOpaque(const Fragment& f) {
    return f.coverage >= kOpaque && f.opacity >= kOpaque;
}

/// Drops everything behind `f` when nothing shines through it.
template <class Fragment>
inline void CutBehind(Fragment& f, const FragmentStore& store) {
    if (!IsOpaque(f)) return;
    Fragment* hidden = f.next;
    f.next = nullptr;
    if (!store.recycle) return;
    while (hidden) {
        Fragment* next = hidden->next;
        store.pool->Free(hidden, store.slot);
        hidden = next;
    }
}

/// Inserts behind `link`; keeps the list as it is when the pool is exhausted.
template <class Fragment, class Point>
inline void InsertAt(Fragment*& link, const Point& s, const FragmentStore& store) {
    Fragment* f = NewFragment(link, s, store);
    if (!f) return;
    link = f;
    CutBehind(*f, store);
}

/// Inserts a sample that is not in front of the whole list.
template <class Fragment, class Point>
inline void InsertBehindHead(Fragment* head, const Point& s, const FragmentStore& store) {
    const float z = s.z, tolerance = store.depthTolerance;
    Fragment* prev = head;
    Fragment* next = prev->next;
    while (next && next->zMax >= z) {
        prev = next;
        next = next->next;
    }
    if (prev->zMin - z < tolerance && prev->zMax - prev->zMin < kMaxFragmentDepth) {
        MergeInto(*prev, s);
        if (z < prev->zMin) prev->zMin = z;
        CutBehind(*prev, store);
    } else if (next && z - next->zMax < tolerance && next->zMax - next->zMin < kMaxFragmentDepth) {
        MergeInto(*next, s);
        next->zMax = z;
        CutBehind(*next, store);
    } else {
        InsertAt(prev->next, s, store);
    }
}

/// Inserts a sample into a list sorted front to back (falling zMax).
template <class Fragment, class Point>
inline void InsertPoint(Fragment*& head, const Point& s, const FragmentStore& store) {
    if (!head || s.z > head->zMax) {
        // intended: the head takes a merge up to and including the limits, everything behind it only below them.
        if (head && s.z - head->zMax <= store.depthTolerance && head->zMax - head->zMin <= kMaxFragmentDepth) {
            MergeInto(*head, s);
            head->zMax = s.z;
            CutBehind(*head, store);
        } else {
            InsertAt(head, s, store);
        }
        return;
    }
    InsertBehindHead(head, s, store);
}
