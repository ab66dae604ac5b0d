#pragma once
// An ordered list of references that undo knows.

#include <algorithm>
#include <vector>

#include "sdk/hold.h"
#include "sdk/ref.h"

namespace host {

/// References to `T`s, each at most once. A deleted target leaves the list. The list does not own.
template <class T>
class RefList : public ReferenceMaker {
public:
    ~RefList() override { DeleteAllRefs(); }
    const std::vector<T*>& Items() const { return items_; }
    int Count() const { return int(items_.size()); }
    /// Null out of range.
    T* At(int i) const { return i >= 0 && i < Count() ? items_[size_t(i)] : nullptr; }
    /// To the end; null and what is in the list already are ignored.
    void Add(T* target) {
        if (!target || std::find(items_.begin(), items_.end(), target) != items_.end()) return;
        const HoldGroup group;
        InsertSlot(items_.size());
        ReplaceReference(Count() - 1, target);
    }
    void Remove(int i) {
        if (i < 0 || i >= Count()) return;
        const HoldGroup group;
        EraseSlot(size_t(i));
    }
    void RemoveAll() {
        while (Count() > 0) Remove(Count() - 1);
    }

    int NumRefs() override { return Count(); }
    RefTargetHandle GetReference(int i) override { return At(i); }
    void SetReference(int i, RefTargetHandle target) override {
        if (i >= 0 && i < Count()) items_[size_t(i)] = static_cast<T*>(target);
    }
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage message) override {
        if (message == REFMSG_TARGET_DELETED)
            for (size_t i = items_.size(); i-- > 0;)
                if (!items_[i]) EraseSlot(i);
        return REF_SUCCEED;
    }

private:
    void HoldSlot(size_t i, bool present) {
        if (!theHold.Holding()) return;
        theHold.Put(new SlotRestore(this, present, [this, i](bool in) {
            if (in)
                InsertSlot(std::min(i, items_.size()));
            else if (i < items_.size())
                EraseSlot(i);
        }));
    }
    void InsertSlot(size_t i) {
        items_.insert(items_.begin() + std::ptrdiff_t(i), nullptr);
        HoldSlot(i, true);
    }
    // Takes out a slot, emptying it first.
    void EraseSlot(size_t i) {
        ReplaceReference(int(i), nullptr);
        items_.erase(items_.begin() + std::ptrdiff_t(i));
        HoldSlot(i, false);
    }

    std::vector<T*> items_;
};

} // namespace host
