// Which nodes may stand in the node lists.

#include "Base/ParamBlocks.h"
#include "DebugTools/Assert.h"
#include "sdk/core.h"

namespace {

// Classes of the library that the checks know by their identity.
constexpr Class_ID kHairGeometryClass{0x54d9504e, 0x48822ea3};
constexpr Class_ID kVectorClass{0x265057db, 0x378a63fe};
constexpr Class_ID kModelHairClass{0x6af3cd97, 0x99c3b9db};

bool IsHairGeometry(Object* object) {
    return object->SuperClassID() == GEOMOBJECT_CLASS_ID && object->ClassID() == kHairGeometryClass;
}

/// A hair geometry object refers to the hair object it is built from, and that to its emitters: so a chain of such
/// nodes that starts at `owner` shows as a dependence on it.
bool IsBuiltFrom(Object* object, ReferenceMaker* owner) {
    return owner && owner->IsRefTarget() && DependsOn(object, static_cast<ReferenceTarget*>(owner));
}

bool IsEmitter(Object* object, ReferenceMaker* owner) {
    if (object->SuperClassID() != GEOMOBJECT_CLASS_ID) return false;
    return !(IsHairGeometry(object) && IsBuiltFrom(object, owner));
}

bool IsCutter(Object* object) {
    return object->CanConvertToType(TRIOBJ_CLASS_ID) && !IsHairGeometry(object);
}

bool IsModelHair(INode* node, Object* object) {
    if (object->SuperClassID() != SHAPE_CLASS_ID) return false;
    for (int i = 0; i < node->NumModifiers(); ++i)
        if (node->GetModifier(i)->ClassID() == kModelHairClass) return true;
    return false;
}

bool IsNodeList(int pid) {
    return pid >= kFirstNodeListPid && pid < kFirstNodeListPid + kNumNodeLists;
}

TimeValue HostTime() {
    Interface* host = GetCOREInterface();
    return host ? host->GetTime() : 0;
}

class NodeListValidator : public PBValidator {
public:
    bool Validate(PB2Value&) override { return false; }
    bool Validate(PB2Value& v, ReferenceMaker* owner, ParamID id, int) override {
        return AcceptsNode(id, static_cast<INode*>(v.r), owner, HostTime());
    }
};

class NodeListAccessor : public PBAccessor {
public:
    void Set(PB2Value& v, ReferenceMaker* owner, ParamID id, int, TimeValue t) override {
        if (v.r && !AcceptsNode(id, static_cast<INode*>(v.r), owner, t)) v.r = nullptr;
    }
};

} // namespace

bool AcceptsNode(int list, INode* node, ReferenceMaker* owner, TimeValue t) {
    SASSERT(IsNodeList(list));
    if (!node || !IsNodeList(list)) return false;
    Object* object = node->EvalWorldState(t).obj;
    if (!object) return false;
    switch (list) {
    case pid_emitters:
        return IsEmitter(object, owner);
    case pid_cutters:
    case pid_modcuts:
        return IsCutter(object);
    case pid_winds:
    case pid_gravs:
    case pid_colls:
        return object->SuperClassID() == WSM_OBJECT_CLASS_ID;
    case pid_fur_leanVects:
    case pid_fur_bendVects:
        return object->SuperClassID() == HELPER_CLASS_ID && object->ClassID() == kVectorClass;
    default:
        return IsModelHair(node, object);
    }
}

PBValidator* GetNodeListValidator() {
    static NodeListValidator validator;
    return &validator;
}

PBAccessor* GetNodeListAccessor() {
    static NodeListAccessor accessor;
    return &accessor;
}
