// Nodes: transforms, and what the modifier stack makes of the object.

#include <algorithm>

#include "core/node.h"
#include "sdk/control.h"
#include "sdk/hold.h"

namespace host {

Matrix3 LookAtMatrix(const Point3& position, const Point3& target) {
    const Point3 z = Normalize(position - target);
    if (z == Point3()) return TransMatrix(position);
    Point3 x = Normalize(CrossProd({0, 0, 1}, z));
    if (x == Point3()) x = {1, 0, 0};
    return {x, CrossProd(z, x), z, position};
}

Matrix3 Node::LookAt(const Matrix3& tm, TimeValue t, Interval& valid) {
    const Point3 place = target_->GetNodeTM(t, &valid).GetTrans();
    return place == tm.GetTrans() ? tm : LookAtMatrix(tm.GetTrans(), place);
}

Matrix3 Node::GetNodeTM(TimeValue t, Interval* valid) {
    Interval own = FOREVER;
    Matrix3 tm;
    if (tm_) tm_->GetValue(t, &tm, own);
    if (parent_) tm = tm * parent_->GetNodeTM(t, &own);
    if (target_) tm = LookAt(tm, t, own);
    if (valid) *valid &= own;
    return tm;
}

Matrix3 Node::GetObjectTM(TimeValue t, Interval* valid) {
    return offset_ * GetNodeTM(t, valid);
}

void Node::SetNodeTM(TimeValue t, const Matrix3& tm) {
    if (!tm_) return;
    const Matrix3 local = parent_ ? tm * Inverse(parent_->GetNodeTM(t)) : tm;
    tm_->SetValue(t, &local);
}

bool Node::SetTMController(Control* c) {
    if (!c || c->SuperClassID() != CTRL_MATRIX3_CLASS_ID) return false;
    if (ReplaceReference(kTMRef, c) != REF_SUCCEED) return false;
    c->SetAutoDelete(true);
    TellTMChanged();
    return true;
}

void Node::SetObjectOffset(const Matrix3& m) {
    HoldValue(this, offset_, PlaceRestored);
    offset_ = m;
    TellTMChanged();
}

bool Node::SetTarget(INode* target) {
    if (target && PlaceDependsOn(target, this)) return false;
    if (ReplaceReference(kTargetRef, target) != REF_SUCCEED) return false;
    TellTMChanged();
    return true;
}

// True when the place of `node` follows from that of `on`: the same node, a parent, a target, or theirs.
bool Node::PlaceDependsOn(INode* node, INode* on) {
    for (INode* n = node; n; n = n->GetParentNode()) {
        if (n == on) return true;
        auto* const own = dynamic_cast<Node*>(n);
        if (own && own->target_ && PlaceDependsOn(own->target_, on)) return true;
    }
    return false;
}

// A moved node moves everything below it.
void Node::TellTMChanged(const Interval& when) {
    TellChanged(stack_.NodeMoved() ? PART_TM | PART_GEOM : PART_TM, REFMSG_CHANGE, when);
    const std::vector<Node*> children = children_;
    for (Node* const child : children)
        if (std::find(children_.begin(), children_.end(), child) != children_.end()) child->TellTMChanged(when);
}

void Node::InvalidateWorldState() {
    stack_.Invalidate();
}

const ObjectState& Node::EvalWorldState(TimeValue t) {
    const HoldSuspend unrecorded; // results are no edits
    return stack_.Eval(*this, object_, t);
}

} // namespace host

TriObject* GetTriObjectFromNode(INode* node, TimeValue t, Interval& valid, bool& needDelete) {
    needDelete = false;
    if (!node) return nullptr;
    const ObjectState& os = node->EvalWorldState(t);
    if (!os.obj || !os.obj->CanConvertToType(TRIOBJ_CLASS_ID)) return nullptr;
    valid &= os.valid;
    Object* const tri = os.obj->ConvertToType(t, TRIOBJ_CLASS_ID);
    needDelete = tri && tri != os.obj;
    return static_cast<TriObject*>(tri);
}
