// Cloning with remapping.

#include "sdk/remapdir.h"

#include "sdk/hold.h"
#include "sdk/ref.h"

RemapDir::~RemapDir() {
    Finish();
}

RefTargetHandle RemapDir::FindMapping(RefTargetHandle from) const {
    const auto it = map_.find(from);
    return it == map_.end() ? nullptr : it->second;
}

RefTargetHandle RemapDir::CloneRef(RefTargetHandle from) {
    if (!from) return nullptr;
    if (const RefTargetHandle known = FindMapping(from)) return known;
    // Nobody knows the clone yet, so there is nothing to take back.
    const HoldSuspend unrecorded;
    const RefTargetHandle to = from->Clone(*this);
    if (to) {
        to->SetAutoDelete(from->AutoDelete());
        AddEntry(from, to);
    }
    return to;
}

void RemapDir::AddEntry(RefTargetHandle from, RefTargetHandle to) {
    map_[from] = to;
    if (!to) return;
    const auto [first, last] = patches_.equal_range(from);
    std::vector<Patch> due;
    for (auto it = first; it != last; ++it) due.push_back(it->second);
    patches_.erase(first, last);
    for (const Patch& patch : due) Apply(patch, to);
}

void RemapDir::AddPatch(RefTargetHandle from, Patch patch) {
    if (!from) return;
    if (const RefTargetHandle to = FindMapping(from))
        Apply(patch, to);
    else
        patches_.emplace(from, std::move(patch));
}

void RemapDir::Backpatch(ReferenceMaker* maker, int which, RefTargetHandle from) {
    if (maker) AddPatch(from, {std::make_shared<MakerHandle>(maker), which, nullptr});
}

void RemapDir::Backpatch(RefTargetHandle* pointer, RefTargetHandle from) {
    if (pointer) AddPatch(from, {nullptr, 0, pointer});
}

void RemapDir::Apply(const Patch& patch, RefTargetHandle to) {
    if (patch.pointer) {
        *patch.pointer = to;
    } else if (ReferenceMaker* const maker = patch.maker->Maker()) {
        const HoldSuspend unrecorded;
        maker->ReplaceReference(patch.which, to);
    }
}

void RemapDir::Finish() {
    patches_.clear();
    while (!postPatch_.empty()) {
        const auto proc = std::move(postPatch_.front());
        postPatch_.erase(postPatch_.begin());
        proc(*this);
    }
}

RefTargetHandle CloneRefHierarchy(RefTargetHandle from) {
    RemapDir remap;
    return remap.CloneRef(from);
}
