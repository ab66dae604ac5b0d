#pragma once
// The host's growable table.

#include <cstddef>
#include <vector>

/// Growable table of plain values or pointers.
template <class T>
class Tab {
public:
    int Count() const { return int(items_.size()); }
    void SetCount(int n) { items_.resize(size_t(n > 0 ? n : 0)); }
    void ZeroCount() { items_.clear(); }
    T& operator[](int i) { return items_[size_t(i)]; }
    const T& operator[](int i) const { return items_[size_t(i)]; }
    /// Appends `n` values; returns the new count.
    int Append(int n, const T* values) {
        items_.insert(items_.end(), values, values + n);
        return Count();
    }
    int Append(const T& value) {
        items_.push_back(value);
        return Count();
    }
    /// Deletes `n` values from `start`.
    void Delete(int start, int n) { items_.erase(items_.begin() + start, items_.begin() + start + n); }
    T* Addr(int i) { return items_.data() + i; }
    auto begin() { return items_.begin(); }
    auto end() { return items_.end(); }
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

private:
    std::vector<T> items_;
};
