// Modifier stacks: the modifiers, and what a change invalidates.

#include "core/modifier_stack.h"

#include <algorithm>
#include <utility>

namespace host {

Modifier* ModifierStack::At(int i) const {
    return i >= 0 && i < Count() ? entries_[size_t(i)].modifier : nullptr;
}

ModContext* ModifierStack::ContextAt(int i) const {
    return i >= 0 && i < Count() ? entries_[size_t(i)].context.get() : nullptr;
}

int ModifierStack::PlaceFor(bool worldSpace, int wanted) const {
    const auto inWorld = [](const Entry& e) { return e.modifier && e.modifier->SuperClassID() == WSM_CLASS_ID; };
    const int border = int(std::count_if(entries_.begin(), entries_.end(), inWorld));
    return worldSpace ? std::min(wanted, border) : std::max(wanted, border);
}

void ModifierStack::Insert(int i, std::unique_ptr<ModContext> context) {
    Entry& e = *entries_.emplace(entries_.begin() + i);
    if (context) e.context = std::move(context);
    Invalidate();
}

void ModifierStack::Set(int i, Modifier* m) {
    entries_[size_t(i)].modifier = m;
    Invalidate();
}

void ModifierStack::SwapContext(int i, std::unique_ptr<ModContext>& context) {
    std::swap(entries_[size_t(i)].context, context);
    Invalidate();
}

std::unique_ptr<ModContext> ModifierStack::Erase(int i) {
    auto context = std::move(entries_[size_t(i)].context);
    entries_.erase(entries_.begin() + i);
    Invalidate();
    return context;
}

void ModifierStack::Move(int from, int to) {
    const auto at = [this](int i) { return entries_.begin() + i; };
    if (from < to)
        std::rotate(at(from), at(from) + 1, at(to) + 1);
    else
        std::rotate(at(to), at(from), at(from) + 1);
    Invalidate();
}

void ModifierStack::Invalidate() {
    const std::lock_guard<std::recursive_mutex> lock(mutex_);
    // The copies go; objects that a caller may still look at stay until the next evaluation.
    for (const auto& s : segments_) s->clean = false;
    stale_ = true;
    result_.valid = NEVER;
}

void ModifierStack::Dirty(size_t fromBottom) {
    for (size_t k = 0; k < segments_.size(); ++k)
        if (k + 1 == segments_.size() || segments_[k + 1]->first > fromBottom) segments_[k]->clean = false;
    result_.valid = NEVER;
}

void ModifierStack::InvalidateBase(ChannelMask mask) {
    const std::lock_guard<std::recursive_mutex> lock(mutex_);
    for (int c = 0; c < NUM_OBJ_CHANS; ++c)
        if (mask & ChannelBit(c)) baseStamp_[size_t(c)] = ++lastStamp_;
    Dirty(0);
}

void ModifierStack::InvalidateFrom(const ReferenceTarget* modifier) {
    const std::lock_guard<std::recursive_mutex> lock(mutex_);
    for (size_t b = entries_.size(); b-- > 0;) {
        Entry& e = entries_[entries_.size() - 1 - b];
        if (e.modifier != modifier) continue;
        e.edited = true;
        Dirty(b);
    }
}

bool ModifierStack::UsesPlace(Modifier& m) {
    return m.SuperClassID() == WSM_CLASS_ID || (m.ChannelsUsed() & TM_CHANNEL);
}

bool ModifierStack::NodeMoved() {
    const std::lock_guard<std::recursive_mutex> lock(mutex_);
    bool any = false;
    for (size_t b = 0; b < entries_.size(); ++b) {
        const Entry& e = FromBottom(b);
        if (!e.modifier || !UsesPlace(*e.modifier)) continue;
        if (!any) Dirty(b);
        any = true;
    }
    return any;
}

} // namespace host
