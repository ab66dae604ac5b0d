#pragma once
// Modifiers: what changes an object on its way up a node's stack.

#include "sdk/hold.h"
#include "sdk/object.h"

/// What a modifier keeps for one node.
class LocalModData {
public:
    virtual ~LocalModData() = default;
    virtual LocalModData* Clone() = 0;
    /// An optional extra interface by id; null when there is none.
    virtual void* GetInterface(uint32_t id) { return nullptr; }
};

/// One use of a modifier: its place in one node's stack.
class ModContext {
public:
    ModContext() = default;
    ModContext(const ModContext& other)
        : tm(other.tm), box(other.box), localData(other.localData ? other.localData->Clone() : nullptr) {}
    ModContext& operator=(const ModContext&) = delete;
    ~ModContext() { delete localData; }

    Matrix3 tm;                        ///< the modifier's own space in object space
    Box3 box;                          ///< of the object when the modifier first saw it
    LocalModData* localData = nullptr; ///< owned
};

/// A modifier on a node's stack. One modifier may stand in several stacks.
class Modifier : public BaseObject {
public:
    SClass_ID SuperClassID() override { return OSM_CLASS_ID; }
    /// The class that it works on. Objects that cannot be converted pass unchanged.
    virtual Class_ID InputType() { return defObjectClassID; }
    /// What the outcome depends on; with TM_CHANNEL also on the node's place, which then stands in ObjectState::tm.
    virtual ChannelMask ChannelsUsed() { return OBJ_CHANNELS; }
    /// All that ModifyObject may write. Channels left out must stay as they are.
    virtual ChannelMask ChannelsChanged() { return OBJ_CHANNELS; }
    /// Where the modifier itself stays the same.
    virtual Interval LocalValidity(TimeValue t) { return FOREVER; }
    /// Changes `os->obj`, a copy that belongs to this stack when its class can be copied, and narrows `os->valid` where
    /// LocalValidity does not say it. A modifier that puts another object there hands over a new one.
    virtual void ModifyObject(TimeValue t, ModContext& mc, ObjectState* os, INode* node) {}

    /// Switches; dependents are told, undo knows them.
    void EnableMod() { SetSwitch(enabled_, true); }
    void DisableMod() { SetSwitch(enabled_, false); }
    void EnableModInRender(bool on) { SetSwitch(inRender_, on); }
    void EnableModInViews(bool on) { SetSwitch(inViews_, on); }
    bool IsEnabled() const { return enabled_; }
    bool IsEnabledInRender() const { return inRender_; }
    bool IsEnabledInViews() const { return inViews_; }
    /// The name in the stack; the class's when none was given.
    TSTR GetName() { return name_.empty() ? TSTR(GetObjectName()) : name_; }
    void SetName(const TSTR& name) {
        if (name == name_) return;
        HoldValue(this, name_, NameRestored);
        name_ = name;
    }

protected:
    /// Hands switches and name to a copy.
    void CopySwitches(Modifier& copy) const {
        copy.enabled_ = enabled_;
        copy.inRender_ = inRender_;
        copy.inViews_ = inViews_;
        copy.name_ = name_;
    }

private:
    void SetSwitch(bool& which, bool on) {
        if (which == on) return;
        HoldValue(this, which);
        which = on;
        NotifyDependents(FOREVER, PART_ALL, REFMSG_CHANGE);
    }
    static void NameRestored(ReferenceMaker*) {} // a name changes nothing that is evaluated
    bool enabled_ = true, inRender_ = true, inViews_ = true;
    TSTR name_;
};

/// A modifier in world space: a space warp's grip on a node. It stands above all others in a stack. Points stay in
/// object space; ObjectState::tm leads to the world.
class WSModifier : public Modifier {
public:
    SClass_ID SuperClassID() override { return WSM_CLASS_ID; }
    ChannelMask ChannelsUsed() override { return OBJ_CHANNELS | TM_CHANNEL; }
};
