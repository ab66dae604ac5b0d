// Nodes: the slots of the modifier stack, what undo keeps of them.

#include <algorithm>
#include <memory>
#include <utility>

#include "core/node.h"
#include "core/undo_records.h"

namespace host {

/// What an entry of the stack kept before it was given something else.
class Node::ContextRestore : public ExchangeRestore {
public:
    ContextRestore(Node* node, int i, std::unique_ptr<ModContext> former)
        : node_(node), index_(i), context_(std::move(former)) {}
    TSTR Description() override { return "Modifier data"; }

private:
    void Exchange() override {
        auto* const node = static_cast<Node*>(node_.Maker());
        if (!node || index_ >= node->NumModifiers()) return;
        node->stack_.SwapContext(index_, context_);
        node->TellChanged(PART_ALL);
    }

    MakerHandle node_;
    int index_;
    std::unique_ptr<ModContext> context_;
};

bool Node::AddModifier(Modifier* m, int i) {
    if (!m || i < 0 || i > NumModifiers()) return false;
    const int place = stack_.PlaceFor(m->SuperClassID() == WSM_CLASS_ID, i);
    HoldGroup group;
    InsertModifierSlot(place);
    if (ReplaceReference(kFixedRefs + place, m) != REF_SUCCEED) {
        if (!group.TakeBack()) EraseModifierSlot(place);
        return false;
    }
    TellChanged(PART_ALL);
    return true;
}

bool Node::DeleteModifier(int i) {
    if (i < 0 || i >= NumModifiers()) return false;
    EraseModifierSlot(i);
    TellChanged(PART_ALL);
    return true;
}

bool Node::MoveModifier(int from, int to) {
    if (std::min(from, to) < 0 || std::max(from, to) >= NumModifiers()) return false;
    const bool world = GetModifier(from) && GetModifier(from)->SuperClassID() == WSM_CLASS_ID;
    // The border counted with the modifier itself in the stack.
    const int place = world ? std::min(to, stack_.PlaceFor(true, NumModifiers()) - 1) : stack_.PlaceFor(false, to);
    if (place == from) return true;
    MoveModifierSlot(from, place);
    if (theHold.Holding())
        theHold.Put(new SlotRestore(this, true, [this, from, place](bool moved) {
            if (std::max(from, place) >= NumModifiers()) return;
            moved ? MoveModifierSlot(from, place) : MoveModifierSlot(place, from);
        }));
    return true;
}

void Node::MoveModifierSlot(int from, int to) {
    stack_.Move(from, to);
    TellChanged(PART_ALL);
}

bool Node::SetModContext(int i, const ModContext& context) {
    if (i < 0 || i >= NumModifiers()) return false;
    auto other = std::make_unique<ModContext>(context);
    stack_.SwapContext(i, other);
    if (theHold.Holding()) theHold.Put(new ContextRestore(this, i, std::move(other)));
    TellChanged(PART_ALL);
    return true;
}

// While a slot is out of the stack its record keeps what the slot held.
void Node::HoldModifier(int i, bool present, std::unique_ptr<ModContext> context) {
    if (!theHold.Holding()) return;
    const auto kept = std::make_shared<std::unique_ptr<ModContext>>(std::move(context));
    theHold.Put(new SlotRestore(this, present, [this, i, kept](bool in) {
        if (in)
            stack_.Insert(std::min(i, NumModifiers()), std::move(*kept));
        else if (i < NumModifiers())
            ReplaceReference(kFixedRefs + i, nullptr), *kept = stack_.Erase(i);
    }));
}

void Node::InsertModifierSlot(int i) {
    stack_.Insert(i);
    HoldModifier(i, true);
}

// Takes out a slot, emptying it first.
void Node::EraseModifierSlot(int i) {
    ReplaceReference(kFixedRefs + i, nullptr);
    HoldModifier(i, false, stack_.Erase(i));
}

} // namespace host
