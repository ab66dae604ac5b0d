#include "materials/multi_mtl.h"

#include "core/host_classes.h"
#include "sdk/hold.h"

namespace host {

ClassDesc* MultiMtlDesc() {
    static SimpleClassDesc<MultiMtl> desc("Multi/Sub-Object", MATERIAL_CLASS_ID, MULTI_CLASS_ID);
    return &desc;
}

void MultiMtl::SetSubMtl(int i, Mtl* m) {
    if (i < 0 || i >= kMost) return;
    const HoldGroup group;
    if (i >= NumSubMtls()) Resize(i + 1);
    ReplaceReference(i, m);
}

void MultiMtl::SetNumSubMtls(int n) {
    if (n < 0 || n > kMost || n == NumSubMtls()) return;
    const HoldGroup group;
    Resize(n);
}

// What falls off the end is let go first.
void MultiMtl::Resize(int n) {
    const int was = NumSubMtls();
    for (int i = was - 1; i >= n; --i) ReplaceReference(i, nullptr);
    subs_.resize(size_t(n));
    if (theHold.Holding())
        theHold.Put(new SlotRestore(this, true, [this, n, was](bool now) { Resize(now ? n : was); }));
}

void MultiMtl::SetReference(int i, RefTargetHandle target) {
    if (i >= 0 && i < NumSubMtls()) subs_[size_t(i)] = static_cast<Mtl*>(target);
}

Mtl* MultiMtl::SubFor(int mtlNum) const {
    return subs_.empty() || mtlNum < 0 ? nullptr : subs_[size_t(mtlNum) % subs_.size()];
}

void MultiMtl::Update(TimeValue t, Interval& valid) {
    for (Mtl* const m : subs_)
        if (m) m->Update(t, valid);
}

void MultiMtl::Shade(ShadeContext& sc) {
    if (Mtl* const m = SubFor(sc.mtlNum)) return m->Shade(sc);
    sc.out.c = sc.out.t = Color();
}

Color MultiMtl::GetAmbient(int mtlNum, bool backFace) {
    Mtl* const m = SubFor(mtlNum);
    return m ? m->GetAmbient(mtlNum, backFace) : Color();
}

Color MultiMtl::GetDiffuse(int mtlNum, bool backFace) {
    Mtl* const m = SubFor(mtlNum);
    return m ? m->GetDiffuse(mtlNum, backFace) : Color();
}

Color MultiMtl::GetSpecular(int mtlNum, bool backFace) {
    Mtl* const m = SubFor(mtlNum);
    return m ? m->GetSpecular(mtlNum, backFace) : Color();
}

float MultiMtl::GetShininess(int mtlNum, bool backFace) {
    Mtl* const m = SubFor(mtlNum);
    return m ? m->GetShininess(mtlNum, backFace) : 0.0f;
}

float MultiMtl::GetXParency(int mtlNum, bool backFace) {
    Mtl* const m = SubFor(mtlNum);
    return m ? m->GetXParency(mtlNum, backFace) : 0.0f;
}

Color MultiMtl::ShadowTransparency(ShadeContext& sc) {
    Mtl* const m = SubFor(sc.mtlNum);
    return m ? m->ShadowTransparency(sc) : Color();
}

uint32_t MultiMtl::Requirements(int subMtl) {
    Mtl* const m = SubFor(subMtl);
    return m ? m->Requirements(subMtl) : 0;
}

RefTargetHandle MultiMtl::Clone(RemapDir& remap) {
    auto* const copy = new MultiMtl;
    copy->SetName(GetName());
    for (int i = 0; i < NumSubMtls(); ++i) {
        RefTargetHandle own = remap.CloneRef(GetSubMtl(i));
        // A copied sub-material has no other owner than the copy.
        if (own && !own->HasDependents()) own->SetAutoDelete(true);
        copy->SetSubMtl(i, own ? static_cast<Mtl*>(own) : GetSubMtl(i));
    }
    copy->SetNumSubMtls(NumSubMtls());
    return copy;
}

} // namespace host
