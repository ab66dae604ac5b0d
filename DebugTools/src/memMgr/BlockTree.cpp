// Top-down splaying.
#include "memMgr/BlockTree.h"

#include <algorithm>

namespace diag {

namespace {

uintptr_t AddressOf(const BlockHeader* block) {
    return reinterpret_cast<uintptr_t>(block);
}

} // namespace

// Brings the block at the address to the root, or else one of its neighbours. `less` and `more` are the ends of two
// chains that collect what lies below and above the address.
void BlockTree::Splay(uintptr_t address) {
    if (!root_) return;
    BlockHeader sides{};
    BlockHeader *less = &sides, *more = &sides, *at = root_;
    uint64_t steps = 0;
    while (address != AddressOf(at)) {
        BlockHeader* BlockHeader::*const down = address < AddressOf(at) ? &BlockHeader::left : &BlockHeader::right;
        BlockHeader* BlockHeader::*const other = address < AddressOf(at) ? &BlockHeader::right : &BlockHeader::left;
        BlockHeader* next = at->*down;
        if (!next) break;
        const bool onward = down == &BlockHeader::left ? address < AddressOf(next) : address > AddressOf(next);
        if (onward) { // two steps the same way: rotate first
            at->*down = next->*other;
            next->*other = at;
            at = next;
            ++steps;
            if (!(at->*down)) break;
        }
        BlockHeader*& end = down == &BlockHeader::left ? more : less;
        end->*down = at;
        end = at;
        at = at->*down;
        ++steps;
    }
    less->right = at->left;
    more->left = at->right;
    at->left = sides.right;
    at->right = sides.left;
    root_ = at;
    ++splays_;
    rotations_ += steps;
    mostRotations_ = std::max(mostRotations_, steps);
}

void BlockTree::Insert(BlockHeader* block) {
    block->left = block->right = nullptr;
    if (root_) {
        Splay(AddressOf(block));
        if (AddressOf(block) < AddressOf(root_)) {
            block->left = root_->left;
            block->right = root_;
            root_->left = nullptr;
        } else {
            block->right = root_->right;
            block->left = root_;
            root_->right = nullptr;
        }
    }
    root_ = block;
}

BlockHeader* BlockTree::Find(uintptr_t address) {
    Splay(address);
    return root_ && AddressOf(root_) == address ? root_ : nullptr;
}

bool BlockTree::Holds(uintptr_t address) const {
    const BlockHeader* at = root_;
    while (at && AddressOf(at) != address) at = address < AddressOf(at) ? at->left : at->right;
    return at != nullptr;
}

void BlockTree::RemoveRoot() {
    BlockHeader *below = root_->left, *above = root_->right, *gone = root_;
    root_ = below;
    if (!below) {
        root_ = above;
        return;
    }
    Splay(AddressOf(gone)); // the largest of those below: it has nothing to its right
    root_->right = above;
}

} // namespace diag
