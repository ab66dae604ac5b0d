#pragma once
// Selections on meshes: named sets, and the interfaces of whatever holds a selection.

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "sdk/bitarray.h"
#include "sdk/ref.h"

/// Named selection sets of one level, in the order in which they were made.
class GenericNamedSelSetList {
public:
    /// `changing` is called before every change; it stays with this list when another is assigned to it.
    explicit GenericNamedSelSetList(std::function<void()> changing = {}) : changing_(std::move(changing)) {}
    GenericNamedSelSetList(const GenericNamedSelSetList& other) : sets_(other.sets_) {}
    GenericNamedSelSetList& operator=(const GenericNamedSelSetList& other) {
        sets_ = other.sets_;
        return *this;
    }
    int Count() const { return int(sets_.size()); }
    const std::string& Name(int i) const { return sets_[size_t(i)].first; }
    const BitArray& operator[](int i) const { return sets_[size_t(i)].second; }
    /// The set of that name, or null.
    const BitArray* GetSet(const std::string& name) const {
        for (const auto& [known, set] : sets_)
            if (known == name) return &set;
        return nullptr;
    }
    /// Adds a set; one of the same name is replaced.
    void AppendSet(const BitArray& set, const std::string& name) {
        if (changing_) changing_();
        for (auto& [known, old] : sets_)
            if (known == name) {
                old = set;
                return;
            }
        sets_.emplace_back(name, set);
    }
    /// False when there is none of that name.
    bool RemoveSet(const std::string& name) {
        if (!GetSet(name)) return false;
        if (changing_) changing_();
        std::erase_if(sets_, [&](const auto& entry) { return entry.first == name; });
        return true;
    }
    void DeleteAll() {
        if (changing_) changing_();
        sets_.clear();
    }

private:
    std::vector<std::pair<std::string, BitArray>> sets_;
    std::function<void()> changing_;
};

inline constexpr uint32_t I_MESHSELECT = 0x11B0;     ///< asked of a modifier or an editable mesh
inline constexpr uint32_t I_MESHSELECTDATA = 0x11C0; ///< asked of a modifier's local data or an editable mesh

/// Something whose local data holds a mesh selection.
class IMeshSelect {
public:
    virtual ~IMeshSelect() = default;
    /// One of the MESH_ levels of sdk/mesh.h.
    virtual uint32_t GetSelLevel() = 0;
    virtual void SetSelLevel(uint32_t level) = 0;
    /// To be called after the selection in the local data was changed: dependents are told.
    virtual void LocalDataChanged() = 0;
};

/// The selection itself. Changes are undoable while a hold is open.
class IMeshSelectData {
public:
    virtual ~IMeshSelectData() = default;
    virtual BitArray GetVertSel() = 0;
    virtual BitArray GetFaceSel() = 0;
    virtual void SetVertSel(const BitArray& set, IMeshSelect* owner, TimeValue t) = 0;
    virtual void SetFaceSel(const BitArray& set, IMeshSelect* owner, TimeValue t) = 0;
    virtual GenericNamedSelSetList& GetNamedVertSelList() = 0;
    virtual GenericNamedSelSetList& GetNamedFaceSelList() = 0;
};

inline IMeshSelect* GetMeshSelectInterface(Animatable* a) {
    return a ? static_cast<IMeshSelect*>(a->GetInterface(I_MESHSELECT)) : nullptr;
}
