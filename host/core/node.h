#pragma once
// Scene nodes of the bundled host.

#include <memory>
#include <string>
#include <vector>

#include "core/modifier_stack.h"
#include "core/user_props.h"
#include "sdk/control.h"
#include "sdk/inode.h"

namespace host {

/// A node. Its references are the transform controller, the object, the material, the visibility controller, the target
/// node and the modifiers; parent and children are no references. Deleting a node hands its children to its parent.
/// Every setter is undoable while a hold is open.
class Node : public INode {
public:
    explicit Node(const std::string& name = {});
    ~Node() override;
    void GetClassName(TSTR& s) override { s = "Node"; }
    /// Tells the scene's listeners, too. While a hold is open a node of a scene is only taken out of it.
    void DeleteThis() override;

    const char* GetName() override { return name_.c_str(); }
    void SetName(const char* name) override;
    Node* GetParentNode() override { return parent_; }
    int NumberOfChildren() override { return int(children_.size()); }
    Node* GetChildNode(int i) override;
    /// Makes `child` a child of this node; it keeps its own controller, and its place in the world when `keepTM` is set
    /// (at time `t`). False when this node's place depends on `child` (as child or by targets).
    bool AttachChild(Node* child, bool keepTM = false, TimeValue t = 0);

    Object* GetObjectRef() override { return object_; }
    void SetObjectRef(Object* o) override;
    const ObjectState& EvalWorldState(TimeValue t) override;
    int NumModifiers() override { return stack_.Count(); }
    Modifier* GetModifier(int i) override { return stack_.At(i); }
    ModContext* GetModContext(int i) override { return stack_.ContextAt(i); }
    /// Puts `m` on top of the stack, or at place `i` from the top; world-space modifiers stay above all others. False
    /// when there is no such place or it would make a circle.
    bool AddModifier(Modifier* m, int i = 0);
    bool DeleteModifier(int i);
    /// Takes the modifier at place `from` to place `to` with all that it keeps for this node; the border between
    /// world-space and other modifiers is kept. False when there is no such place.
    bool MoveModifier(int from, int to);
    /// Gives an entry of the stack another space, box and data. False when there is no such entry.
    bool SetModContext(int i, const ModContext& context);
    /// Drops the cached result of the stack.
    void InvalidateWorldState();

    Matrix3 GetNodeTM(TimeValue t, Interval* valid = nullptr) override;
    Matrix3 GetObjectTM(TimeValue t, Interval* valid = nullptr) override;
    void SetNodeTM(TimeValue t, const Matrix3& tm) override;
    Control* GetTMController() { return tm_; }
    /// False when `c` gives no matrix. The node shares ownership (SetAutoDelete).
    bool SetTMController(Control* c);
    const Matrix3& GetObjectOffset() const { return offset_; }
    void SetObjectOffset(const Matrix3& m);
    /// The node's -Z axis looks at this node's origin, X level; null for none. False when the target's place
    /// depends on this node.
    INode* GetTarget() { return target_; }
    bool SetTarget(INode* target);

    Mtl* GetMtl() override { return mtl_; }
    void SetMtl(Mtl* m) override;
    Color GetWireColor() override { return wireColor_; }
    void SetWireColor(const Color& c) override;

    bool IsNodeHidden() override { return hidden_; }
    void Hide(bool on) override;
    bool IsFrozen() override { return frozen_; }
    void SetFrozen(bool on);
    bool Selected() override { return selected_; }
    void SetSelected(bool on);
    float GetVisibility(TimeValue t, Interval* valid = nullptr) override;
    /// A constant visibility, 0..1.
    void SetVisibility(float v);
    bool SetVisibilityController(Control* c);
    bool Renderable() override { return renderable_; }
    bool GetPrimaryVisibility() override { return primary_; }
    bool GetSecondaryVisibility() override { return secondary_; }
    void SetSecondaryVisibility(bool on);
    bool CastShadows() override { return castShadows_; }
    bool RcvShadows() override { return rcvShadows_; }
    bool ApplyAtmospherics() override { return atmosphere_; }
    void SetRenderFlags(bool renderable, bool primary, bool castShadows, bool rcvShadows, bool atmosphere) override;
    int GetGBufID() override { return gbufID_; }
    void SetGBufID(int id) override;
    uint32_t GetRenderID() override { return renderID_; }
    void SetRenderID(uint32_t id) override { renderID_ = id; }

    bool GetUserPropString(const char* key, TSTR& value) override { return props_.GetString(key, value); }
    bool GetUserPropFloat(const char* key, float& value) override { return props_.GetFloat(key, value); }
    bool GetUserPropInt(const char* key, int& value) override { return props_.GetInt(key, value); }
    void SetUserPropString(const char* key, const char* value) override;
    const UserProps& UserProperties() const { return props_; }
    /// Replaces the text of all properties.
    void SetUserPropText(const std::string& text);

    int NumRefs() override { return kFixedRefs + NumModifiers(); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override;
    void ReferenceRestored(int which) override;
    int NumSubs() override { return NumRefs(); }
    Animatable* SubAnim(int i) override;
    TSTR SubAnimName(int i) override;
    /// A node of the same settings, object and modifiers copied (in the hands of the same scene), material shared;
    /// parent and children are not.
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    enum { kTMRef, kObjectRef, kMtlRef, kVisibilityRef, kTargetRef, kFixedRefs };
    class PlaceRestore;
    class ContextRestore;
    void PutBelow(Node* parent, size_t index);
    void HoldModifier(int i, bool present, std::unique_ptr<ModContext> context = nullptr);
    void InsertModifierSlot(int i);
    void EraseModifierSlot(int i);
    void MoveModifierSlot(int from, int to);
    static void DisplayRestored(ReferenceMaker* node);
    static void NameRestored(ReferenceMaker* node);
    static void PlaceRestored(ReferenceMaker* node);
    template <class T>
    void SetDisplayValue(T& place, const T& value);
    static bool PlaceDependsOn(INode* node, INode* on);
    void TellTMChanged(const Interval& when = FOREVER);
    void TellChanged(PartID part, RefMessage message = REFMSG_CHANGE, const Interval& when = FOREVER);
    void OwnLikeThis(RefTargetHandle copy);
    Matrix3 LookAt(const Matrix3& tm, TimeValue t, Interval& valid);

    std::string name_;
    Node* parent_ = nullptr;
    std::vector<Node*> children_;
    Control* tm_ = nullptr;
    Object* object_ = nullptr;
    Mtl* mtl_ = nullptr;
    Control* visibility_ = nullptr;
    INode* target_ = nullptr;
    ModifierStack stack_;
    Matrix3 offset_;
    Color wireColor_{0.6f, 0.6f, 0.6f};
    float constantVisibility_ = 1;
    UserProps props_;
    bool hidden_ = false, frozen_ = false, selected_ = false;
    bool renderable_ = true, primary_ = true, secondary_ = true;
    bool castShadows_ = true, rcvShadows_ = true, atmosphere_ = true;
    int gbufID_ = 0;
    uint32_t renderID_ = 0xffff;
};

/// The transform of something at `position` whose -Z axis looks at `target`, X level (along world X when it looks
/// straight up or down). The unturned transform when both places are the same.
Matrix3 LookAtMatrix(const Point3& position, const Point3& target);

} // namespace host
