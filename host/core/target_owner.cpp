#include "core/target_owner.h"

#include <algorithm>

namespace host {

void TargetOwner::Adopt(ReferenceTarget* target, size_t index) {
    if (!target || target->owner_ == this) return;
    if (target->owner_) target->owner_->Forget(target);
    target->owner_ = this;
    targets_.insert(targets_.begin() + std::ptrdiff_t(std::min(index, targets_.size())), target);
}

size_t TargetOwner::IndexOf(const ReferenceTarget* target) const {
    const auto it = std::find(targets_.rbegin(), targets_.rend(), target);
    return it == targets_.rend() ? targets_.size() : size_t(std::next(it).base() - targets_.begin());
}

void TargetOwner::Release(ReferenceTarget* target) {
    if (Owns(target)) Forget(target);
}

void TargetOwner::Forget(ReferenceTarget* target) {
    target->owner_ = nullptr;
    // The search runs backwards because DeleteAll mostly deletes the youngest.
    const auto it = std::find(targets_.rbegin(), targets_.rend(), target);
    if (it != targets_.rend()) targets_.erase(std::next(it).base());
}

void TargetOwner::DeleteAll() {
    while (!targets_.empty()) {
        // Objects that nobody refers to go first: so hardly any message reaches an object that is about to go too.
        // References make no circles, so the second choice is only met when somebody else holds a reference.
        const auto free = std::find_if(targets_.rbegin(), targets_.rend(),
                                       [](const ReferenceTarget* t) { return !t->HasDependents(); });
        ReferenceTarget* const target = free != targets_.rend() ? *free : targets_.back();
        Release(target);
        target->DeleteThis();
    }
}

} // namespace host
