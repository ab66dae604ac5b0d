#pragma once
// Undo records of the reference system and of a scene's ownership.

#include "core/target_owner.h"
#include "sdk/hold.h"

namespace host {

/// What a reference slot held before a change. The former target is kept alive.
class RefRestore : public ExchangeRestore {
public:
    RefRestore(ReferenceMaker* maker, int which, RefTargetHandle former);
    TSTR Description() override { return "Reference"; }

private:
    void Exchange() override;
    MakerHandle maker_;
    int which_;
    MakerHandle saved_;
    bool wasEmpty_;
};

/// An object came into a scene or went out of it. While it is out it belongs to the record.
class OwnerRestore : public RestoreObj {
public:
    /// `owned`: the scene has it now; otherwise it was the scene's object number `index`.
    OwnerRestore(TargetOwner* owner, RefTargetHandle target, bool owned, size_t index)
        : owner_(owner), target_(target, true), owned_(owned), index_(index) {}
    ~OwnerRestore() override;
    void Restore(int) override { Turn(); }
    void Redo() override { Turn(); }
    TSTR Description() override { return "Object"; }

private:
    void Turn();
    TargetOwner* owner_; ///< outlives the record: a scene's end flushes theHold
    MakerHandle target_;
    bool owned_;
    size_t index_;
};

/// Takes an object out of its scene as DeleteThis would delete it, but so that theHold can bring it back: its
/// dependents' slots are emptied and they hear REFMSG_TARGET_DELETED.
void DeleteUndoably(ReferenceTarget* target);

} // namespace host
