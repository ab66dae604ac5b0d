#pragma once
// A resizable array of bits.

#include <cstddef>
#include <vector>

/// Bits addressed by index; reading beyond the size gives false, writing beyond it is ignored.
class BitArray {
public:
    BitArray() = default;
    explicit BitArray(int n) : bits_(size_t(n > 0 ? n : 0), false) {}
    int GetSize() const { return int(bits_.size()); }
    /// Changes the size; kept bits stay, new bits are clear.
    void SetSize(int n) { bits_.resize(size_t(n > 0 ? n : 0), false); }
    bool operator[](int i) const { return i >= 0 && i < GetSize() && bits_[size_t(i)]; }
    void Set(int i, bool on = true) {
        if (i >= 0 && i < GetSize()) bits_[size_t(i)] = on;
    }
    void Clear(int i) { Set(i, false); }
    void SetAll() { bits_.assign(bits_.size(), true); }
    void ClearAll() { bits_.assign(bits_.size(), false); }
    int NumberSet() const {
        int n = 0;
        for (const bool b : bits_) n += b;
        return n;
    }
    bool IsEmpty() const { return NumberSet() == 0; }
    /// Removes bit `i`; later bits move down.
    void DeleteSet(int i) {
        if (i >= 0 && i < GetSize()) bits_.erase(bits_.begin() + i);
    }
    friend bool operator==(const BitArray&, const BitArray&) = default;

private:
    std::vector<bool> bits_;
};
