#pragma once
// Selections on meshes: named sets, and the interfaces of whatever holds a selection.

#include <string>
#include <utility>
#include <vector>

#include "sdk/bitarray.h"
#include "sdk/ref.h"

/// Named selection sets of one level, in the order in which they were made.
class GenericNamedSelSetList {
public:
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
        for (auto& [known, old] : sets_)
            if (known == name) {
                old = set;
                return;
            }
        sets_.emplace_back(name, set);
    }
    /// False when there is none of that name.
    bool RemoveSet(const std::string& name) {
        return std::erase_if(sets_, [&](const auto& entry) { return entry.first == name; }) > 0;
    }
    void DeleteAll() { sets_.clear(); }

private:
    std::vector<std::pair<std::string, BitArray>> sets_;
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

/// The selection itself.
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
