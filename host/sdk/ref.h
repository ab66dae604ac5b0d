#pragma once
// The reference system: who refers to whom, and how changes travel.

#include <map>
#include <string>
#include <vector>

#include "sdk/basetypes.h"
#include "sdk/interval.h"
#include "sdk/iosave.h"

class ReferenceMaker;
class ReferenceTarget;
class IParamBlock2;
class ClassDesc;

/// A handle to a reference target (the target itself).
using RefTargetHandle = ReferenceTarget*;

// Messages that travel from a target to its dependents.
enum RefMessage : unsigned {
    REFMSG_CHANGE = 0x70,         ///< the target changed; the part mask says what
    REFMSG_TARGET_DELETED = 0x80, ///< the target is about to be deleted; the reference is already empty
    REFMSG_NODE_NAMECHANGE = 0x90,
    REFMSG_SUBANIM_STRUCTURE_CHANGED = 0xa0,
    REFMSG_NODE_MATERIAL_CHANGED = 0xb0,
    REFMSG_NODE_DISPLAY_CHANGED = 0xb1,
};

/// Keeps source-to-clone pairs while a graph is cloned, so that shared targets stay shared.
class RemapDir {
public:
    /// The clone of `from`, made on first request.
    RefTargetHandle CloneRef(RefTargetHandle from);
    RefTargetHandle FindMapping(RefTargetHandle from) const;
    void AddEntry(RefTargetHandle from, RefTargetHandle to) { map_[from] = to; }

private:
    std::map<RefTargetHandle, RefTargetHandle> map_;
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

    /// Puts `target` (or null) into slot `which`, keeping back references right. REF_FAIL when that would make a
    /// circle.
    RefResult ReplaceReference(int which, RefTargetHandle target);
    RefResult DeleteReference(int which) { return ReplaceReference(which, nullptr); }
    /// Empties every slot; destructors of concrete classes call it before their members go.
    void DeleteAllRefs();
    virtual bool IsRefTarget() { return false; }

private:
    friend class ReferenceTarget;
    void TargetDeleted(RefTargetHandle target);
};

/// Something that can be referred to.
class ReferenceTarget : public ReferenceMaker {
public:
    ~ReferenceTarget() override;
    bool IsRefTarget() override { return true; }
    /// A copy of this object; references are cloned through `remap`. Null when the class cannot be copied.
    virtual RefTargetHandle Clone(RemapDir& remap) { return nullptr; }
    /// Tells every dependent, and through them theirs, that something happened.
    RefResult NotifyDependents(const Interval& changeInt, PartID partID, RefMessage message);
    /// Direct dependents, one entry a slot.
    const std::vector<ReferenceMaker*>& Dependents() const { return dependents_; }
    bool HasDependents() const { return !dependents_.empty(); }

private:
    friend class ReferenceMaker;
    std::vector<ReferenceMaker*> dependents_;
};

/// True when `maker` refers to `target` directly or through others.
bool DependsOn(ReferenceMaker* maker, RefTargetHandle target);
