#pragma once
// Ownership of reference targets by a scene.

#include <vector>

#include "sdk/ref.h"

namespace host {

/// Deletes the targets it adopted, unless they die earlier by other hands.
class TargetOwner {
public:
    TargetOwner() = default;
    TargetOwner(const TargetOwner&) = delete;
    TargetOwner& operator=(const TargetOwner&) = delete;
    ~TargetOwner() { DeleteAll(); }

    /// Takes over the duty to delete `target`; a former owner gives it up. Null is ignored. `index` is its place among
    /// the others, by default behind them.
    void Adopt(ReferenceTarget* target, size_t index = size_t(-1));
    /// Gives the duty back to the caller.
    void Release(ReferenceTarget* target);
    /// The owner of `target`, or null.
    static TargetOwner* Of(const ReferenceTarget* target) { return target->owner_; }
    /// Place of an owned target.
    size_t IndexOf(const ReferenceTarget* target) const;
    bool Owns(const ReferenceTarget* target) const { return target && target->owner_ == this; }
    /// Deletes everything through DeleteThis, dependents before what they refer to.
    void DeleteAll();
    /// What is owned, in the order of adoption.
    const std::vector<ReferenceTarget*>& Targets() const { return targets_; }

private:
    friend class ::ReferenceTarget;
    void Forget(ReferenceTarget* target);

    std::vector<ReferenceTarget*> targets_;
};

} // namespace host
