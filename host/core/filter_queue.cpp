#include "core/filter_queue.h"

namespace host {

FilterQueue::Entry* FilterQueue::Add(Class_ID id) {
    ClassDesc* const desc = classes_.Find(FLT_CLASS_ID, id);
    auto* const filter = desc ? static_cast<ImageFilter*>(desc->Create(false)) : nullptr;
    if (!filter) return nullptr;
    entries_.push_back({std::unique_ptr<ImageFilter, Deleter>(filter), desc->ClassName()});
    return &entries_.back();
}

} // namespace host
