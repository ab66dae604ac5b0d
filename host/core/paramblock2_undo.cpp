// Parameter blocks: what undo keeps.

#include <algorithm>

#include "core/paramblock2.h"
#include "sdk/hold.h"

namespace host {

/// A number or text before a change. Controllers and references have records of their own.
class ParamBlock2::NumberRestore : public ExchangeRestore {
public:
    NumberRestore(ParamBlock2* block, const Param& p)
        : block_(block), index_(size_t(&p - block->params_.data())), saved_(p.values[0]) {}
    TSTR Description() override { return "Parameter"; }

private:
    void Exchange() override {
        auto* const block = static_cast<ParamBlock2*>(block_.Maker());
        if (!block) return;
        Param& p = block->params_[index_];
        std::swap(p.values[0], saved_);
        block->TellChanged(p, 0);
    }

    MakerHandle block_;
    size_t index_;
    PB2Value saved_;
};

void ParamBlock2::HoldNumber(Param& p) {
    if (HoldOnce(p.held)) theHold.Put(new NumberRestore(this, p));
}

void ParamBlock2::HoldEntry(const Param& p, int at, bool present) {
    if (!theHold.Holding()) return;
    const size_t index = size_t(&p - params_.data());
    theHold.Put(new SlotRestore(this, present, [this, index, at](bool in) {
        Param& table = params_[index];
        if (in)
            InsertEntry(table, std::min(at, int(table.values.size())));
        else if (at < int(table.values.size()))
            EraseEntry(table, at);
        TellChanged(table, -1);
    }));
}

void ParamBlock2::InsertEntry(Param& p, int at) {
    p.values.insert(p.values.begin() + at, PB2Value());
    HoldEntry(p, at, true);
}

// Takes out an entry, emptying it first.
void ParamBlock2::EraseEntry(Param& p, int at) {
    ReplaceReference(SlotOf(p, at), nullptr);
    p.values.erase(p.values.begin() + at);
    HoldEntry(p, at, false);
}

void ParamBlock2::ReferenceRestored(int which) {
    const Place place = PlaceOf(which);
    if (place.param) TellChanged(*place.param, std::max(place.entry, 0));
}

} // namespace host
