#pragma once
// The multi/sub-object material.

#include <vector>

#include "sdk/mtl.h"

namespace host {

/// Picks a sub-material by the face's material id: number id modulo the number of sub-materials. An empty slot shades
/// black and opaque. References: the sub-materials.
class MultiMtl : public Mtl {
public:
    /// Most sub-materials.
    static constexpr int kMost = 65536;

    ~MultiMtl() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return MULTI_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Multi/Sub-Object"; }
    bool IsMultiMtl() override { return true; }
    int NumSubMtls() override { return int(subs_.size()); }
    Mtl* GetSubMtl(int i) override { return i >= 0 && i < NumSubMtls() ? subs_[size_t(i)] : nullptr; }
    /// Grows when `i` is beyond the end; ignored outside 0..kMost - 1.
    void SetSubMtl(int i, Mtl* m) override;
    /// 0..kMost; new slots are empty.
    void SetNumSubMtls(int n);
    /// The sub-material of a face with that id; null for an empty slot.
    Mtl* SubFor(int mtlNum) const;

    void Update(TimeValue t, Interval& valid) override;
    void Shade(ShadeContext& sc) override;
    Color GetAmbient(int mtlNum, bool backFace) override;
    Color GetDiffuse(int mtlNum, bool backFace) override;
    Color GetSpecular(int mtlNum, bool backFace) override;
    float GetShininess(int mtlNum, bool backFace) override;
    float GetXParency(int mtlNum, bool backFace) override;
    Color ShadowTransparency(ShadeContext& sc) override;
    uint32_t Requirements(int subMtl) override;

    int NumRefs() override { return NumSubMtls(); }
    RefTargetHandle GetReference(int i) override { return GetSubMtl(i); }
    void SetReference(int i, RefTargetHandle target) override;
    int NumSubs() override { return NumSubMtls(); }
    Animatable* SubAnim(int i) override { return GetSubMtl(i); }
    TSTR SubAnimName(int i) override { return "Material " + std::to_string(i + 1); }
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    void Resize(int n);

    std::vector<Mtl*> subs_;
};

ClassDesc* MultiMtlDesc();

} // namespace host
