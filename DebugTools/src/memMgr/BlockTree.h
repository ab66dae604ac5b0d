// The tracked blocks of one thread: a splay tree ordered by address, whose links live in the blocks' headers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace diag {

/// Stands before the user data of a tracked block.
struct BlockHeader {
    uint32_t frontGuard;
    uint32_t id;
    int32_t line;
    const char* file;
    uint32_t size; ///< of the user data
    BlockHeader* left;
    BlockHeader* right;
    uint32_t unused;
    uint32_t backGuard; ///< just before the user data
};
static_assert(sizeof(BlockHeader) == 56);

inline unsigned char* UserData(BlockHeader* block) {
    return reinterpret_cast<unsigned char*>(block + 1);
}

class BlockTree {
public:
    BlockHeader* Root() const { return root_; }
    /// Makes the block the root; it must not be in the tree.
    void Insert(BlockHeader* block);
    /// The block whose header lies at `address`, which becomes the root; null when there is none.
    BlockHeader* Find(uintptr_t address);
    /// The same without touching the tree.
    bool Holds(uintptr_t address) const;
    /// Takes the root out.
    void RemoveRoot();
    /// Calls `visit(BlockHeader&)` for all blocks by rising address, without memory of its own: on the way down, links
    /// back up are threaded through the tree, and taken out again. `visit` must not touch the tree.
    template <class Visit>
    void ForEach(const Visit& visit);

    uint64_t Rotations() const { return rotations_; }
    uint64_t Splays() const { return splays_; }
    uint64_t MostRotations() const { return mostRotations_; } ///< in one splay

private:
    void Splay(uintptr_t address);

    BlockHeader* root_ = nullptr;
    uint64_t rotations_ = 0, splays_ = 0, mostRotations_ = 0;
};

template <class Visit>
void BlockTree::ForEach(const Visit& visit) {
    for (BlockHeader* node = root_; node;) {
        if (node->left) {
            BlockHeader* before = node->left;
            while (before->right && before->right != node) before = before->right;
            if (!before->right) {
                before->right = node;
                node = node->left;
                continue;
            }
            before->right = nullptr;
        }
        visit(*node);
        node = node->right;
    }
}

} // namespace diag
