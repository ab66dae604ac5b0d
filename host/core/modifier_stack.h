#pragma once
// The modifiers of a node and the evaluation of what they make of its object.

#include <array>
#include <memory>
#include <mutex>
#include <vector>

#include "sdk/modifier.h"

namespace host {

class Node;

/// A node's stack of modifiers with the results that are kept.
///
/// The stack is evaluated from the bottom in segments. Each segment owns one copy of what flows into it, on which its
/// modifiers work in place; evaluated again, only the channels that its modifiers change, or that changed below, are
/// copied again. A new segment begins where what flows in lives longer than what the next modifier makes of it: below
/// modifiers that move over time, and below a modifier that was edited. A change invalidates from there upward.
class ModifierStack {
public:
    /// Modifiers, counted from the top as nodes show them.
    int Count() const { return int(entries_.size()); }
    Modifier* At(int i) const;
    ModContext* ContextAt(int i) const;
    /// The place, from the top, at which a modifier can go in: world-space modifiers stay above the others.
    int PlaceFor(bool worldSpace, int wanted) const;
    /// An empty entry, with a context of its own or the one it had before.
    void Insert(int i, std::unique_ptr<ModContext> context = nullptr);
    void Set(int i, Modifier* m); ///< null empties the entry
    /// Exchanges the context of an entry.
    void SwapContext(int i, std::unique_ptr<ModContext>& context);
    /// Takes an entry out and gives back its context.
    std::unique_ptr<ModContext> Erase(int i);
    /// Takes an entry to another place; those between move up or down.
    void Move(int from, int to);

    /// Forgets all that is kept.
    void Invalidate();
    /// The base object changed in the parts of `mask`.
    void InvalidateBase(ChannelMask mask);
    /// A modifier changed.
    void InvalidateFrom(const ReferenceTarget* modifier);
    /// The node moved. True when the result depends on its place.
    bool NodeMoved();

    /// What `base` becomes at `t` on its way through the stack. Several threads may ask for the same time.
    const ObjectState& Eval(Node& node, Object* base, TimeValue t);

private:
    struct Deleter {
        void operator()(Object* o) const { o->DeleteThis(); }
    };
    using Owned = std::unique_ptr<Object, Deleter>;
    using Stamps = std::array<uint64_t, NUM_OBJ_CHANS>;
    struct Entry {
        Modifier* modifier = nullptr;
        std::unique_ptr<ModContext> context = std::make_unique<ModContext>();
        bool edited = false; ///< changed since it joined the stack
    };
    /// An object between two modifiers. Equal stamps of a channel mean equal content.
    struct Flow {
        Object* obj = nullptr;
        ChannelIntervals valid;
        Stamps stamp{};
        bool own = false; ///< modifiers may write
    };
    struct Segment {
        size_t first = 0; ///< its lowest modifier, counted from the bottom
        Owned work;       ///< the copy of what flows in
        const Object* workOf = nullptr;
        Stamps workStamp{};
        ChannelMask touched = 0; ///< channels of `work` that modifiers changed
        std::vector<Owned> made; ///< objects that conversions and modifiers made
        Flow out;
        bool clean = false;
    };
    struct Run; ///< one evaluation

    const Entry& FromBottom(size_t i) const { return entries_[entries_.size() - 1 - i]; }
    static bool UsesPlace(Modifier& m);
    bool Active(const Entry& e) const;
    void Dirty(size_t fromBottom);
    Flow BaseFlow(Object* base, TimeValue t);
    void RunSegment(size_t k, const Flow& in, Run& run);
    bool Converted(Segment& s, Modifier& m, Flow& f, TimeValue t);
    void TakeCopy(Segment& s, Flow& f, TimeValue t);
    void Apply(Segment& s, const Entry& e, Flow& f, Run& run);
    void Keep(const Flow& out, TimeValue t);

    std::vector<Entry> entries_;
    std::vector<std::unique_ptr<Segment>> segments_; ///< from the bottom
    Object* baseObject_ = nullptr;                   ///< what the base evaluated to
    ChannelIntervals baseValid_;
    Stamps baseStamp_{};
    uint64_t lastStamp_ = 0;
    bool stale_ = false;     ///< nothing that is kept can be used
    bool rendering_ = false; ///< what the results are for
    ObjectState result_{nullptr, NEVER};
    std::recursive_mutex mutex_;
};

} // namespace host
