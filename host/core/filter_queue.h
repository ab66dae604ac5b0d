#pragma once
// The scene's image filters.

#include <memory>
#include <string>
#include <vector>

#include "core/class_directory.h"
#include "sdk/filter.h"

namespace host {

/// Image filters in the order in which they work. The queue owns them; undo does not know it.
class FilterQueue {
public:
    struct Deleter {
        void operator()(ImageFilter* f) const { f->DeleteThis(); }
    };
    struct Entry {
        std::unique_ptr<ImageFilter, Deleter> filter;
        std::string name; ///< of the class
        bool active = true;
    };

    explicit FilterQueue(const ClassDirectory& classes) : classes_(classes) {}
    /// A new filter of a registered class at the end of the queue; null when the class is unknown or cannot be made.
    /// Later additions move the entry.
    Entry* Add(Class_ID id);
    std::vector<Entry>& Entries() { return entries_; }
    void Clear() { entries_.clear(); }

private:
    const ClassDirectory& classes_;
    std::vector<Entry> entries_;
};

} // namespace host
