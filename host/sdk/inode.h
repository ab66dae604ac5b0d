#pragma once
// Scene nodes.

#include "sdk/modifier.h"

class Mtl;

/// A node: a place in the hierarchy, an object, a material.
class INode : public ReferenceTarget {
public:
    SClass_ID SuperClassID() override { return BASENODE_CLASS_ID; }
    virtual const char* GetName() = 0;
    virtual void SetName(const char* name) = 0;
    virtual INode* GetParentNode() = 0;
    virtual int NumberOfChildren() = 0;
    virtual INode* GetChildNode(int i) = 0;

    virtual Object* GetObjectRef() = 0;
    virtual void SetObjectRef(Object* o) = 0;
    /// The result of the modifier stack at `t`.
    virtual const ObjectState& EvalWorldState(TimeValue t) = 0;
    virtual int NumModifiers() = 0;
    virtual Modifier* GetModifier(int i) = 0; ///< from the top of the stack
    /// What modifier `i` keeps for this node.
    virtual ModContext* GetModContext(int i) = 0;

    virtual Matrix3 GetNodeTM(TimeValue t, Interval* valid = nullptr) = 0;
    /// Object space to world space, with the object offset.
    virtual Matrix3 GetObjectTM(TimeValue t, Interval* valid = nullptr) = 0;
    virtual void SetNodeTM(TimeValue t, const Matrix3& tm) = 0;

    virtual Mtl* GetMtl() = 0;
    virtual void SetMtl(Mtl* m) = 0;
    virtual Color GetWireColor() = 0;
    virtual void SetWireColor(const Color& c) = 0;

    virtual bool IsNodeHidden() = 0;
    virtual void Hide(bool on) = 0;
    virtual bool IsFrozen() = 0;
    virtual bool Selected() = 0;
    virtual float GetVisibility(TimeValue t, Interval* valid = nullptr) = 0; ///< 0..1
    virtual bool Renderable() = 0;
    virtual bool GetPrimaryVisibility() = 0;
    virtual bool GetSecondaryVisibility() = 0;
    virtual bool CastShadows() = 0;
    virtual bool RcvShadows() = 0;
    virtual bool ApplyAtmospherics() = 0;
    virtual void SetRenderFlags(bool renderable, bool primary, bool castShadows, bool rcvShadows, bool atmosphere) = 0;
    virtual int GetGBufID() = 0;
    virtual void SetGBufID(int id) = 0;
    virtual uint32_t GetRenderID() = 0; ///< number of the node among the nodes of the render, 0xffff outside one
    virtual void SetRenderID(uint32_t id) = 0;

    // User properties: text "key = value".
    virtual bool GetUserPropString(const char* key, TSTR& value) = 0;
    virtual bool GetUserPropFloat(const char* key, float& value) = 0;
    virtual bool GetUserPropInt(const char* key, int& value) = 0;
    virtual void SetUserPropString(const char* key, const char* value) = 0;
};

/// The triangle mesh of `node` at `t` in object space, or null when its object is none. `valid` is narrowed;
/// `needDelete` tells whether the caller deletes the returned object.
TriObject* GetTriObjectFromNode(INode* node, TimeValue t, Interval& valid, bool& needDelete);
