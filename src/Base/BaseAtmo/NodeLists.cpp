// The object's node lists and its records of the emitters.

#include <algorithm>

#include "Base/BaseAtmo.h"

int BaseAtmo::NodeCount(int list) const {
    IParamBlock2* block = BlockOf(list);
    return block ? block->Count(ParamID(list)) : 0;
}

INode* BaseAtmo::GetNode(int list, int index) const {
    IParamBlock2* block = BlockOf(list);
    return block ? block->GetINode(ParamID(list), 0, index) : nullptr;
}

bool BaseAtmo::AddNode(int list, INode* node) {
    IParamBlock2* block = BlockOf(list);
    return block && block->Append(ParamID(list), node);
}

bool BaseAtmo::DeleteNode(int list, INode* node) {
    for (int i = 0; i < NodeCount(list); ++i)
        if (GetNode(list, i) == node) return BlockOf(list)->Delete(ParamID(list), i, 1);
    return false;
}

void BaseAtmo::ClearNodeList(int list) {
    if (IParamBlock2* block = BlockOf(list)) block->SetCount(ParamID(list), 0);
}

void BaseAtmo::SetNodeList(int list, const std::vector<INode*>& nodes) {
    ClearNodeList(list);
    for (INode* node : nodes) AddNode(list, node);
}

void BaseAtmo::SyncEmitterRecords() {
    diag::ScopedLock lock(lock_);
    const int count = NodeCount(pid_emitters);
    std::vector<std::unique_ptr<EmitterRecord>> former(static_cast<size_t>(count));
    former.swap(emitters_);
    for (int i = 0; i < count; ++i) {
        INode* node = GetNode(pid_emitters, i);
        if (!node) continue;
        const auto known =
            std::find_if(former.begin(), former.end(), [node](const auto& e) { return e && e->node == node; });
        if (known != former.end())
            emitters_[size_t(i)] = std::move(*known);
        else
            emitters_[size_t(i)] = std::make_unique<EmitterRecord>(node);
    }
}
