// The running host: nodes, ownership, looking things up.

#include <set>

#include "core/core.h"
#include "core/undo_records.h"

namespace host {

namespace {

void Collect(Node* parent, std::vector<Node*>& nodes) {
    for (int i = 0; i < parent->NumberOfChildren(); ++i) {
        nodes.push_back(parent->GetChildNode(i));
        Collect(parent->GetChildNode(i), nodes);
    }
}

// Searches a material or map and everything below it; shared parts are visited once.
Texmap* FindMap(MtlBase* base, const std::string& name, std::set<MtlBase*>& seen) {
    if (!base || !seen.insert(base).second) return nullptr;
    if (base->SuperClassID() == TEXMAP_CLASS_ID && base->GetName() == name) return static_cast<Texmap*>(base);
    for (int i = 0; i < base->NumSubTexmaps(); ++i)
        if (Texmap* const map = FindMap(base->GetSubTexmap(i), name, seen)) return map;
    if (base->SuperClassID() != MATERIAL_CLASS_ID) return nullptr;
    auto* const mtl = static_cast<Mtl*>(base);
    for (int i = 0; i < mtl->NumSubMtls(); ++i)
        if (Texmap* const map = FindMap(mtl->GetSubMtl(i), name, seen)) return map;
    return nullptr;
}

} // namespace

std::vector<Node*> Core::AllNodes() {
    std::vector<Node*> nodes;
    Collect(root_, nodes);
    return nodes;
}

INode* Core::GetINodeByName(const char* name) {
    if (!name) return nullptr;
    for (Node* const node : AllNodes())
        if (node->GetName() == std::string(name)) return node;
    return nullptr;
}

Node* Core::CreateNode(const std::string& name, Object* object, Node* parent) {
    const HoldGroup group;
    Node* const node = Adopt(new Node(name));
    Adopt(object);
    if (object) node->SetObjectRef(object);
    (parent ? parent : root_)->AttachChild(node);
    BroadcastNotification(NOTIFY_NODE_CREATED, static_cast<INode*>(node));
    return node;
}

// To be called before the adoption.
void Core::HoldAdoption(ReferenceTarget* target) {
    if (target && !owner_.Owns(target) && theHold.Holding())
        theHold.Put(new OwnerRestore(&owner_, target, true, owner_.Targets().size()));
}

void Core::DeleteNode(INode* node) {
    if (node && node != root_ && owner_.Owns(node)) node->DeleteThis();
}

ReferenceTarget* Core::CreateInstance(SClass_ID sid, Class_ID id) {
    if (sid == FLT_CLASS_ID) return nullptr;
    ClassDesc* const desc = classes_.Find(sid, id);
    const auto create = [](ClassDesc& c) {
        const HoldSuspend unrecorded; // undo takes back the object as a whole
        return c.Create(false);
    };
    void* const made = desc ? create(*desc) : nullptr;
    if (!made) return nullptr;
    // Create answers the object itself, whose first base is ReferenceMaker.
    auto* const maker = static_cast<ReferenceMaker*>(made);
    return maker->IsRefTarget() ? Adopt(static_cast<ReferenceTarget*>(maker)) : nullptr;
}

std::vector<Node*> Core::CloneNodes(const std::vector<INode*>& nodes) {
    const HoldGroup group;
    const size_t before = owner_.Targets().size();
    std::vector<Node*> clones;
    RemapDir remap;
    for (INode* const node : nodes) {
        Node* const clone = owner_.Owns(node) && node != root_ ? static_cast<Node*>(remap.CloneRef(node)) : nullptr;
        owner_.Adopt(clone);
        clones.push_back(clone);
    }
    remap.Finish();
    // The clones with their parts.
    for (size_t i = before; theHold.Holding() && i < owner_.Targets().size(); ++i)
        theHold.Put(new OwnerRestore(&owner_, owner_.Targets()[i], true, i));
    for (size_t i = 0; i < nodes.size(); ++i) {
        if (!clones[i] || clones[i]->GetParentNode()) continue;
        auto* const parent = static_cast<Node*>(nodes[i]->GetParentNode());
        auto* const cloned = static_cast<Node*>(remap.FindMapping(parent));
        (cloned ? cloned : parent ? parent : root_)->AttachChild(clones[i]);
        BroadcastNotification(NOTIFY_NODE_CLONED, static_cast<INode*>(clones[i]));
    }
    return clones;
}

void Core::ResetScene() {
    BroadcastNotification(NOTIFY_SYSTEM_PRE_RESET);
    theHold.Flush();
    const HoldSuspend unrecorded;
    owner_.DeleteAll();
    refs_.DeleteAllRefs();
    atmospherics_.RemoveAll();
    effects_.RemoveAll();
    filters_.Clear();
    root_ = Adopt(new Node("Scene Root"));
    boxes_.Clear();
    ClearRenderAbort();
    BroadcastNotification(NOTIFY_SYSTEM_POST_RESET);
}

template <class T>
void Core::DeleteFrom(RefList<T>& list, int i) {
    T* const target = list.At(i);
    if (!target) return;
    TargetWatch watch(target);
    const HoldGroup group;
    list.Remove(i);
    if (owner_.Owns(target) && !target->HasDependents()) target->DeleteThis();
}
template void Core::DeleteFrom(RefList<Atmospheric>& list, int i);
template void Core::DeleteFrom(RefList<Effect>& list, int i);

Texmap* Core::FindTexmapByName(const char* name) {
    if (!name || !*name) return nullptr;
    std::set<MtlBase*> seen;
    if (Texmap* const map = FindMap(GetEnvironmentMap(), name, seen)) return map;
    for (Node* const node : AllNodes())
        if (Texmap* const map = FindMap(node->GetMtl(), name, seen)) return map;
    for (ReferenceTarget* const t : owner_.Targets())
        if (t->SuperClassID() == TEXMAP_CLASS_ID || t->SuperClassID() == MATERIAL_CLASS_ID)
            if (Texmap* const map = FindMap(static_cast<MtlBase*>(t), name, seen)) return map;
    return nullptr;
}

} // namespace host
