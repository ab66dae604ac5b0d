#pragma once
// Weak references.

#include <functional>
#include <utility>

#include "sdk/ref.h"

/// Refers to one target without keeping it alive: an auto-delete target goes when only weak references are left, and
/// the reference is then empty. Being no target itself it closes no circle, so an object may hold one on something that
/// depends on the object.
class SingleWeakRefMaker : public ReferenceMaker {
public:
    using Observer = std::function<RefResult(const Interval&, RefTargetHandle, PartID&, RefMessage)>;

    SingleWeakRefMaker() = default;
    explicit SingleWeakRefMaker(RefTargetHandle target) { SetRef(target); }
    ~SingleWeakRefMaker() override { DeleteAllRefs(); }
    RefTargetHandle GetRef() const { return target_; }
    void SetRef(RefTargetHandle target) { ReplaceReference(0, target); }
    /// Who hears the target's messages; none for nobody.
    void SetObserver(Observer observer) { observer_ = std::move(observer); }

    bool IsRealDependency(RefTargetHandle) override { return false; }
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? target_ : nullptr; }
    void SetReference(int i, RefTargetHandle target) override {
        if (i == 0) target_ = target;
    }
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override {
        return observer_ ? observer_(changeInt, target, partID, message) : REF_SUCCEED;
    }

private:
    RefTargetHandle target_ = nullptr;
    Observer observer_;
};
