#pragma once
// Reading a pixel's fragments front to back, whether they are linked or packed.

#include "HRendBuf/PackedTile.h"

template <class Fragment>
class FragmentReader {
public:
    using Packed = PackedFragment<Fragment>;

    /// Nothing to read.
    FragmentReader() = default;
    /// A linked list from `first` on.
    explicit FragmentReader(const Fragment* first) : link_(first) { Look(); }
    /// The fragments begin..end-1 of a tile.
    FragmentReader(const PackedTile<Fragment>& tile, size_t begin, size_t end)
        : depth_(tile.Depths() + begin), end_(tile.Depths() + end), rest_(tile.Rests() + begin) {
        Look();
    }

    bool Done() const { return !place_; }
    /// The current fragment. Its link means nothing.
    const Fragment& Get() const { return current_; }
    /// Names the current fragment among those of its pixel; null when done.
    const void* Place() const { return place_; }
    void Next() {
        if (link_) {
            link_ = link_->next;
        } else {
            ++depth_;
            ++rest_;
        }
        Look();
    }

private:
    void Look() {
        if (link_) {
            current_ = *link_;
            place_ = link_;
        } else if (depth_ != end_) {
            current_ = Unpack<Fragment>(*depth_, *rest_);
            place_ = rest_;
        } else {
            place_ = nullptr;
        }
    }

    const Fragment* link_ = nullptr;
    const float* depth_ = nullptr;
    const float* end_ = nullptr;
    const Packed* rest_ = nullptr;
    const void* place_ = nullptr;
    Fragment current_;
};
