#pragma once
// The reference system: who refers to whom, and how changes travel.

#include <string>
#include <vector>

#include "sdk/basetypes.h"
#include "sdk/interval.h"
#include "sdk/iosave.h"
#include "sdk/remapdir.h"

class ReferenceMaker;
class ReferenceTarget;
class IParamBlock2;
class ClassDesc;
class TargetWatch;
class MakerHandle;
class DependentEnumProc;
namespace host {
class TargetOwner;
void DeleteUndoably(ReferenceTarget* target);
} // namespace host

// Messages that travel from a target to its dependents.
enum RefMessage : unsigned {
    REFMSG_CHANGE = 0x70,         ///< the target changed; the part mask says what
    REFMSG_TARGET_DELETED = 0x80, ///< the target is about to be deleted; the reference is already empty
    REFMSG_BEGIN_EDIT = 0x90,     ///< the target's parameters are being shown
    REFMSG_END_EDIT = 0xa0,
    REFMSG_NODE_MATERIAL_CHANGED = 0xb0,
    REFMSG_NODE_DISPLAY_CHANGED = 0xb1,
    REFMSG_NODE_NAMECHANGE = 0xb2,
    REFMSG_SUBANIM_STRUCTURE_CHANGED = 0xb3, ///< tracks came or went
    REFMSG_MOD_DISPLAY_ON = 0xf2,            ///< the modifier shows its gizmo
    REFMSG_MOD_DISPLAY_OFF = 0xf3,
    REFMSG_USER = 0x10000, ///< messages of plug-ins' own are above this one
};

/// Anything with a class, a name, parameters and tracks of its own.
class Animatable {
public:
    virtual ~Animatable() = default;
    virtual void DeleteThis() { delete this; }
    virtual Class_ID ClassID() { return Class_ID(); }
    virtual SClass_ID SuperClassID() { return 0; }
    virtual void GetClassName(TSTR& s) { s = "Animatable"; }
    /// Sub-animatables (tracks): number, the i-th (null for an empty slot), its name.
    virtual int NumSubs() { return 0; }
    virtual Animatable* SubAnim(int) { return nullptr; }
    virtual TSTR SubAnimName(int) { return {}; }
    /// Parameter blocks the object owns directly.
    virtual int NumParamBlocks() { return 0; }
    virtual IParamBlock2* GetParamBlock(int) { return nullptr; }
    virtual IParamBlock2* GetParamBlockByID(short) { return nullptr; }
    /// An optional extra interface by id; null when the object does not have it.
    virtual void* GetInterface(uint32_t id) { return nullptr; }
};

/// Something that refers to reference targets through numbered slots.
/// The host keeps back references, so a target knows its dependents; slots are changed through ReplaceReference only.
class ReferenceMaker : public Animatable {
public:
    ReferenceMaker() = default;
    /// Copies have no references and no dependents of their own.
    ReferenceMaker(const ReferenceMaker&) : Animatable() {}
    ReferenceMaker& operator=(const ReferenceMaker&) { return *this; }
    ~ReferenceMaker() override;
    virtual int NumRefs() { return 0; }
    virtual RefTargetHandle GetReference(int) { return nullptr; }
    /// Stores the slot. Called by ReplaceReference only.
    virtual void SetReference(int, RefTargetHandle) {}
    /// A message from one of the references. `partID` may be narrowed or widened for the dependents further on;
    /// REF_STOP keeps the message from them.
    virtual RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                                       RefMessage message) {
        return REF_SUCCEED;
    }
    /// Old scenes: which slot the stored reference `iref` belongs to now, or -1 to drop it.
    virtual int RemapRefOnLoad(int iref) { return iref; }
    virtual IOResult Save(ISave*) { return IO_OK; }
    virtual IOResult Load(ILoad*) { return IO_OK; }

    /// Puts `target` (or null) into slot `which`, keeping back references right. REF_FAIL when there is no such slot,
    /// when that would make a circle, or when SetReference does not store the target. Undoable while a hold is open.
    RefResult ReplaceReference(int which, RefTargetHandle target);
    /// The same, for a slot that is filled for the first time.
    RefResult MakeRefByID(int which, RefTargetHandle target) { return ReplaceReference(which, target); }
    RefResult DeleteReference(int which) { return ReplaceReference(which, nullptr); }
    /// Empties every slot; destructors of concrete classes call it before their members go. Not undoable.
    void DeleteAllRefs();
    /// The first slot that holds `target`, or -1.
    int FindRef(RefTargetHandle target);
    virtual bool IsRefTarget() { return false; }
    /// False when this maker's reference does not keep an auto-delete target alive (a weak reference).
    virtual bool IsRealDependency(RefTargetHandle) { return true; }
    /// Undo or redo changed slot `which`. Brings the maker up to date and tells dependents; as it stands it passes a
    /// change of the slot's new target to NotifyRefChanged and goes on to the dependents unless that stops it.
    virtual void ReferenceRestored(int which);

private:
    friend class ReferenceTarget;
    friend class MakerHandle;
    friend void host::DeleteUndoably(ReferenceTarget* target);
    friend bool DependsOn(ReferenceMaker* maker, RefTargetHandle target);
    void Link(RefTargetHandle target);
    void Unlink(RefTargetHandle target);
    bool IsLinked(RefTargetHandle target) const;
    void TargetDeleted(RefTargetHandle target);
    void ReleaseHandles();

    std::vector<RefTargetHandle> targets_; ///< what the slots refer to, one entry a slot, in no order
    MakerHandle* handles_ = nullptr;       ///< those that follow this maker
};

/// Something that can be referred to.
class ReferenceTarget : public ReferenceMaker {
public:
    ReferenceTarget() = default;
    ReferenceTarget(const ReferenceTarget& other) : ReferenceMaker(other) {}
    ReferenceTarget& operator=(const ReferenceTarget&) { return *this; }
    ~ReferenceTarget() override;
    /// Sends REFMSG_TARGET_DELETED while the object is still whole, then deletes it. While a hold is open an object of
    /// the scene is only taken out of it; undo brings it back.
    void DeleteThis() override;
    bool IsRefTarget() override { return true; }
    /// A copy of this object; references are cloned through `remap`. Null when the class cannot be copied.
    virtual RefTargetHandle Clone(RemapDir& remap) { return nullptr; }
    /// Tells every dependent, and through them theirs, that something happened.
    RefResult NotifyDependents(const Interval& changeInt, PartID partID, RefMessage message);
    /// Direct dependents, one entry a slot.
    const std::vector<ReferenceMaker*>& Dependents() const { return dependents_; }
    bool HasDependents() const { return !dependents_.empty(); }
    /// True when a dependent's reference keeps the target alive (IsRealDependency).
    bool HasRealDependents();
    /// Shows `proc` this target, its dependents, theirs and so on, everyone once, before what depends on it. False
    /// when it was halted.
    bool DoEnumDependents(DependentEnumProc* proc);
    /// Makes everyone who refers to `old` refer to this target instead, where that makes no circle.
    void TransferReferences(RefTargetHandle old);
    /// When on, the target is deleted as soon as its last reference goes (at the end of a running notification, or when
    /// the last TargetWatch on it ends). Off for a new object: whoever made it deletes it.
    void SetAutoDelete(bool on) { autoDelete_ = on; }
    bool AutoDelete() const { return autoDelete_; }

private:
    friend class ReferenceMaker;
    friend class TargetWatch;
    friend class MakerHandle;
    friend class host::TargetOwner;
    friend void host::DeleteUndoably(ReferenceTarget* target);
    void AddDependent(ReferenceMaker* maker);
    void RemoveDependent(ReferenceMaker* maker);
    void TellDependentsOfDeletion();
    void DeleteIfOrphaned();

    std::vector<ReferenceMaker*> dependents_; ///< entries of one maker stand together
    TargetWatch* watches_ = nullptr;          ///< innermost first
    host::TargetOwner* owner_ = nullptr;
    int keeps_ = 0; ///< handles that keep this target alive
    bool autoDelete_ = false, orphaned_ = false, dying_ = false;
};

/// Keeps an auto-delete target from being deleted automatically for a scope, and tells whether it was deleted all the
/// same. Watches of one target end in the reverse order of their beginning.
class TargetWatch {
public:
    explicit TargetWatch(RefTargetHandle target);
    ~TargetWatch();
    TargetWatch(const TargetWatch&) = delete;
    TargetWatch& operator=(const TargetWatch&) = delete;
    bool Deleted() const { return deleted_; }

private:
    friend class ReferenceTarget;
    RefTargetHandle target_;
    TargetWatch* outer_ = nullptr;
    size_t next_ = 0, end_ = 0; ///< running notification: entries next_..end_ of the dependents are still to be told
    bool deleted_ = false;
};

/// Follows a maker until it dies; empty afterwards. A keeping handle also holds off the automatic deletion of a target
/// until it lets go. Undo records refer to the scene through handles.
class MakerHandle {
public:
    explicit MakerHandle(ReferenceMaker* maker = nullptr, bool keep = false);
    ~MakerHandle() { Set(nullptr); }
    MakerHandle(const MakerHandle&) = delete;
    MakerHandle& operator=(const MakerHandle&) = delete;
    /// Follows another maker (null: none), keeping it if this is a keeping handle.
    void Set(ReferenceMaker* maker);
    ReferenceMaker* Maker() const { return maker_; }
    /// The maker as a target; null when it is none.
    RefTargetHandle Target() const;

private:
    friend class ReferenceMaker;
    ReferenceMaker* maker_ = nullptr;
    MakerHandle *next_ = nullptr, *previous_ = nullptr;
    bool keep_;
};

// What an enumeration of dependents goes on with.
enum { DEP_ENUM_CONTINUE = 0, DEP_ENUM_HALT = 1, DEP_ENUM_SKIP = 2 };

/// Called for every dependent: DEP_ENUM_SKIP passes over those that depend on this one only, DEP_ENUM_HALT ends the
/// enumeration. References must not change meanwhile.
class DependentEnumProc {
public:
    virtual ~DependentEnumProc() = default;
    virtual int proc(ReferenceMaker* maker) = 0;
};

/// True when `maker` refers to `target` directly or through others.
bool DependsOn(ReferenceMaker* maker, RefTargetHandle target);
