// Nodes: hierarchy, references, flags.

#include "core/node.h"

#include <algorithm>

#include "core/controllers.h"
#include "core/undo_records.h"
#include "sdk/mtl.h"

namespace host {

Node::Node(const std::string& name) : name_(name) {
    const HoldSuspend unrecorded;
    auto* const tm = new MatrixControl;
    tm->SetAutoDelete(true);
    ReplaceReference(kTMRef, tm);
}

Node::~Node() {
    const HoldSuspend unrecorded;
    while (!children_.empty()) {
        Node* const child = children_.back();
        children_.pop_back();
        child->parent_ = nullptr;
        if (parent_) parent_->AttachChild(child);
    }
    if (parent_) std::erase(parent_->children_, this);
    DeleteAllRefs();
}

void Node::TellChanged(PartID part, RefMessage message, const Interval& when) {
    NotifyDependents(when, part, message);
}

Node* Node::GetChildNode(int i) {
    return i >= 0 && i < NumberOfChildren() ? children_[size_t(i)] : nullptr;
}

void Node::SetObjectRef(Object* o) {
    if (ReplaceReference(kObjectRef, o) != REF_SUCCEED) return;
    InvalidateWorldState();
    TellChanged(PART_ALL);
}

void Node::SetMtl(Mtl* m) {
    if (ReplaceReference(kMtlRef, m) == REF_SUCCEED) TellChanged(PART_MTL, REFMSG_NODE_MATERIAL_CHANGED);
}

float Node::GetVisibility(TimeValue t, Interval* valid) {
    float v = constantVisibility_;
    Interval own = FOREVER;
    if (visibility_) visibility_->GetValue(t, &v, own);
    if (valid) *valid &= own;
    return std::clamp(v, 0.0f, 1.0f);
}

bool Node::SetVisibilityController(Control* c) {
    if (c && c->SuperClassID() != CTRL_FLOAT_CLASS_ID) return false;
    if (ReplaceReference(kVisibilityRef, c) != REF_SUCCEED) return false;
    if (c) c->SetAutoDelete(true);
    TellChanged(PART_DISPLAY, REFMSG_NODE_DISPLAY_CHANGED);
    return true;
}

RefTargetHandle Node::GetReference(int i) {
    switch (i) {
    case kTMRef:
        return tm_;
    case kObjectRef:
        return object_;
    case kMtlRef:
        return mtl_;
    case kVisibilityRef:
        return visibility_;
    case kTargetRef:
        return target_;
    default:
        return GetModifier(i - kFixedRefs);
    }
}

void Node::SetReference(int i, RefTargetHandle target) {
    switch (i) {
    case kTMRef:
        tm_ = static_cast<Control*>(target);
        break;
    case kObjectRef:
        object_ = static_cast<Object*>(target);
        break;
    case kMtlRef:
        mtl_ = static_cast<Mtl*>(target);
        break;
    case kVisibilityRef:
        visibility_ = static_cast<Control*>(target);
        break;
    case kTargetRef:
        target_ = static_cast<INode*>(target);
        break;
    default:
        if (i >= kFixedRefs && i < NumRefs()) stack_.Set(i - kFixedRefs, static_cast<Modifier*>(target));
    }
}

RefResult Node::NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                                 RefMessage message) {
    if (message == REFMSG_TARGET_DELETED) {
        for (int i = NumModifiers() - 1; i >= 0; --i)
            if (!GetModifier(i)) EraseModifierSlot(i);
        InvalidateWorldState();
        TellTMChanged();
        TellChanged(PART_ALL);
        return REF_SUCCEED;
    }
    if (message != REFMSG_CHANGE) return REF_SUCCEED;
    if (target == tm_ || target == target_) {
        // A target counts by its place only.
        if (target == target_ && !(partID & PART_TM)) return REF_STOP;
        TellTMChanged(changeInt);
        return REF_STOP;
    }
    if (target == mtl_)
        partID = PART_MTL;
    else if (target == visibility_)
        partID = PART_DISPLAY;
    else if (target == object_)
        stack_.InvalidateBase(partID);
    else
        stack_.InvalidateFrom(target);
    // Whatever moved inside the object, the node did not. (A light that lists a child of its own target's would
    // otherwise go on telling of movements for ever.)
    if (partID & PART_TM) partID = PART_ALL & ~PART_TM;
    return REF_SUCCEED;
}

Animatable* Node::SubAnim(int i) {
    return i == kTargetRef ? nullptr : GetReference(i); // another node is no track of this one
}

TSTR Node::SubAnimName(int i) {
    constexpr const char* kNames[kFixedRefs] = {"Transform", "Object", "Material", "Visibility", "Target"};
    if (i >= 0 && i < kFixedRefs) return kNames[i];
    Modifier* const m = GetModifier(i - kFixedRefs);
    return m ? TSTR(m->GetObjectName()) : TSTR();
}

// A copied part belongs to the scene that this node belongs to; outside a scene it goes with its last user.
void Node::OwnLikeThis(RefTargetHandle copy) {
    TargetOwner* const scene = TargetOwner::Of(this);
    if (!scene)
        copy->SetAutoDelete(true);
    else if (!copy->AutoDelete())
        scene->Adopt(copy);
}

RefTargetHandle Node::Clone(RemapDir& remap) {
    auto* const copy = new Node(name_);
    const auto cloneOrShare = [&](RefTargetHandle from) {
        const RefTargetHandle known = remap.FindMapping(from);
        const RefTargetHandle to = known ? known : remap.CloneRef(from);
        if (to && !known) OwnLikeThis(to);
        return to ? to : from;
    };
    for (const int i : {int(kTMRef), int(kObjectRef), int(kVisibilityRef)})
        copy->ReplaceReference(i, cloneOrShare(GetReference(i)));
    for (int i = 0; i < NumModifiers(); ++i) {
        copy->AddModifier(static_cast<Modifier*>(cloneOrShare(GetModifier(i))), copy->NumModifiers());
        copy->SetModContext(i, *GetModContext(i));
    }
    copy->ReplaceReference(kMtlRef, mtl_);
    copy->ReplaceReference(kTargetRef, target_);
    remap.Backpatch(copy, kTargetRef, target_);
    copy->offset_ = offset_;
    copy->wireColor_ = wireColor_;
    copy->constantVisibility_ = constantVisibility_;
    copy->props_ = props_;
    copy->hidden_ = hidden_;
    copy->frozen_ = frozen_;
    copy->secondary_ = secondary_;
    copy->gbufID_ = gbufID_;
    copy->SetRenderFlags(renderable_, primary_, castShadows_, rcvShadows_, atmosphere_);
    return copy;
}

} // namespace host
