// Nodes: plain values, the hierarchy, what undo keeps of them.

#include <algorithm>
#include <utility>

#include "core/node.h"
#include "core/undo_records.h"
#include "sdk/notify.h"

namespace host {

namespace {

Node* AsNode(ReferenceMaker* maker) {
    return static_cast<Node*>(maker);
}

} // namespace

/// Where a node stood in the hierarchy.
class Node::PlaceRestore : public ExchangeRestore {
public:
    explicit PlaceRestore(Node* node) : node_(node), parent_(node->parent_), hadParent_(node->parent_) {
        index_ = IndexOf(node);
    }
    TSTR Description() override { return "Parent"; }

private:
    static size_t IndexOf(const Node* node) {
        if (!node->parent_) return 0;
        const auto& siblings = node->parent_->children_;
        return size_t(std::find(siblings.begin(), siblings.end(), node) - siblings.begin());
    }
    void Exchange() override {
        auto* const node = static_cast<Node*>(node_.Maker());
        auto* const parent = static_cast<Node*>(parent_.Maker());
        if (!node || (hadParent_ && !parent) || (parent && PlaceDependsOn(parent, node))) return;
        Node* const now = node->parent_;
        const size_t at = IndexOf(node);
        node->PutBelow(parent, index_);
        parent_.Set(now);
        hadParent_ = now;
        index_ = at;
        node->TellTMChanged();
    }

    MakerHandle node_, parent_;
    bool hadParent_;
    size_t index_ = 0;
};

void Node::PutBelow(Node* parent, size_t index) {
    if (parent_) std::erase(parent_->children_, this);
    parent_ = parent;
    if (!parent) return;
    auto& siblings = parent->children_;
    siblings.insert(siblings.begin() + std::ptrdiff_t(std::min(index, siblings.size())), this);
}

bool Node::AttachChild(Node* child, bool keepTM, TimeValue t) {
    if (!child || PlaceDependsOn(this, child)) return false;
    const Matrix3 place = child->GetNodeTM(t);
    if (theHold.Holding()) theHold.Put(new PlaceRestore(child));
    child->PutBelow(this, size_t(-1));
    if (keepTM)
        child->SetNodeTM(t, place);
    else
        child->TellTMChanged();
    return true;
}

void Node::DeleteThis() {
    const bool inScene = TargetOwner::Of(this);
    if (inScene) BroadcastNotification(NOTIFY_SCENE_PRE_DELETED_NODE, static_cast<INode*>(this));
    if (inScene && theHold.Holding()) {
        const HoldGroup group;
        while (!children_.empty()) {
            Node* const child = children_.back();
            if (parent_ && parent_->AttachChild(child)) continue;
            theHold.Put(new PlaceRestore(child));
            child->PutBelow(nullptr, 0);
        }
        theHold.Put(new PlaceRestore(this));
        PutBelow(nullptr, 0);
        INode::DeleteThis();
    } else {
        INode::DeleteThis();
    }
    if (inScene) BroadcastNotification(NOTIFY_SCENE_POST_DELETED_NODE);
}

void Node::DisplayRestored(ReferenceMaker* node) {
    AsNode(node)->TellChanged(PART_DISPLAY, REFMSG_NODE_DISPLAY_CHANGED);
}

void Node::NameRestored(ReferenceMaker* node) {
    AsNode(node)->TellChanged(PART_ALL, REFMSG_NODE_NAMECHANGE);
    if (TargetOwner::Of(AsNode(node))) BroadcastNotification(NOTIFY_NODE_RENAMED, static_cast<INode*>(AsNode(node)));
}

void Node::PlaceRestored(ReferenceMaker* node) {
    AsNode(node)->TellTMChanged();
}

template <class T>
void Node::SetDisplayValue(T& place, const T& value) {
    HoldValue(this, place, DisplayRestored);
    place = value;
    DisplayRestored(this);
}

void Node::SetName(const char* name) {
    HoldValue(this, name_, NameRestored);
    name_ = name ? name : "";
    NameRestored(this);
}

void Node::SetWireColor(const Color& c) {
    SetDisplayValue(wireColor_, c);
}

void Node::Hide(bool on) {
    if (hidden_ != on) SetDisplayValue(hidden_, on);
}

void Node::SetFrozen(bool on) {
    if (frozen_ != on) SetDisplayValue(frozen_, on);
}

void Node::SetSelected(bool on) {
    if (selected_ == on) return;
    const auto told = [](ReferenceMaker* node) {
        if (TargetOwner::Of(AsNode(node))) BroadcastNotification(NOTIFY_SELECTIONSET_CHANGED);
    };
    HoldValue(this, selected_, +told);
    selected_ = on;
    told(this);
}

void Node::SetVisibility(float v) {
    ReplaceReference(kVisibilityRef, nullptr);
    SetDisplayValue(constantVisibility_, v);
}

void Node::SetSecondaryVisibility(bool on) {
    if (secondary_ != on) SetDisplayValue(secondary_, on);
}

void Node::SetGBufID(int id) {
    HoldValue(this, gbufID_, DisplayRestored);
    gbufID_ = id;
}

void Node::SetUserPropString(const char* key, const char* value) {
    HoldValue(this, props_, DisplayRestored);
    props_.Set(key, value);
}

void Node::SetUserPropText(const std::string& text) {
    HoldValue(this, props_, DisplayRestored);
    props_.SetText(text);
}

void Node::SetRenderFlags(bool renderable, bool primary, bool castShadows, bool rcvShadows, bool atmosphere) {
    const HoldGroup group;
    const std::pair<bool*, bool> values[] = {{&renderable_, renderable},
                                             {&primary_, primary},
                                             {&castShadows_, castShadows},
                                             {&rcvShadows_, rcvShadows},
                                             {&atmosphere_, atmosphere}};
    for (const auto& [place, value] : values) {
        if (*place == value) continue;
        HoldValue(this, *place, DisplayRestored);
        *place = value;
    }
    DisplayRestored(this);
}

void Node::ReferenceRestored(int which) {
    switch (which) {
    case kTMRef:
    case kTargetRef:
        return TellTMChanged();
    case kMtlRef:
        return TellChanged(PART_MTL, REFMSG_NODE_MATERIAL_CHANGED);
    case kVisibilityRef:
        return TellChanged(PART_DISPLAY, REFMSG_NODE_DISPLAY_CHANGED);
    default:
        InvalidateWorldState();
        TellChanged(PART_ALL);
    }
}

} // namespace host
