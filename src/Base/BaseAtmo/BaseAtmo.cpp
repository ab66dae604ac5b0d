// The object's life: construction, references, cloning, the host's questions.

#include "Base/BaseAtmo.h"

#include "Base/DumMtl.h"
#include "Base/SurfDist/SurfDist.h"
#include "CurveCtl/CurveCtl.h"
#include "DebugTools/CrashReport.h"
#include "HairDLL/StringTable.h"
#include "sdk/core.h"

BaseAtmo::BaseAtmo(bool fur, ClassDesc2& desc) : fur_(fur), defaultMaterial_(new DumMtl(Point3(0, 0, 0), true)) {
    params_ = HairParams::Defaults(fur);
    desc.MakeAutoParamBlocks(this);
}

BaseAtmo::~BaseAtmo() {
    DeleteAllRefs();
}

RefTargetHandle BaseAtmo::GetReference(int i) {
    if (i == kMaterialRef) return material_;
    return GetParamBlock(i);
}

void BaseAtmo::SetReference(int i, RefTargetHandle target) {
    if (i == kMaterialRef)
        material_ = static_cast<Mtl*>(target);
    else if (i >= 0 && i < kNumHairBlocks)
        blocks_[size_t(i)] = static_cast<IParamBlock2*>(target);
}

TSTR BaseAtmo::SubAnimName(int i) {
    IParamBlock2* block = GetParamBlock(i);
    return block ? block->GetDesc()->title : TSTR();
}

void* BaseAtmo::GetInterface(uint32_t id) {
    if (id == HAIR_SOURCE_INTERFACE_ID) return static_cast<IHairSource*>(&source_);
    if (id == SCRIPT_PROPERTIES_INTERFACE_ID) return static_cast<IScriptProperties*>(this);
    return Atmospheric::GetInterface(id);
}

IParamBlock2* BaseAtmo::BlockOf(int pid) const {
    const uint8_t block = pid >= 0 && pid < kNumPids ? BlockMap()[size_t(pid)] : kNoBlock;
    return block == kNoBlock ? nullptr : blocks_[block];
}

void BaseAtmo::CreateMissingReferences() {
    const auto fill = [this](int pid, int nameText, auto make) {
        IParamBlock2* block = BlockOf(pid);
        if (!block || block->GetReferenceTarget(ParamID(pid))) return;
        auto* made = make();
        made->SetTitle(FindString(nameText));
        block->SetValue(ParamID(pid), 0, static_cast<ReferenceTarget*>(made));
    };
    for (int i = 0; i < kNumCurves; ++i) {
        const CurveDefRecord& def = CurveDefTable[size_t(i)];
        fill(kFirstCurvePid + i, def.name, [&] { return BuildDefaultCurve(def); });
    }
    for (int i = 0; i < kNumSurfDists; ++i)
        fill(kFirstSurfDistPid + i, SurfDistDefTable[size_t(i)].name, [] { return new SurfDist; });
    for (int i = 0; i < kNumRandDists; ++i)
        fill(kFirstRandDistPid + i, RandDistDefTable[size_t(i)].name, BuildDefaultRandDist);
}

bool BaseAtmo::ReplaceBlocks(BaseAtmo& source) {
    if (source.fur_ != fur_) return false;
    RemapDir remap;
    for (int b = 0; b < kNumHairBlocks; ++b)
        if (source.blocks_[size_t(b)]) ReplaceReference(b, remap.CloneRef(source.blocks_[size_t(b)]));
    SyncEmitterRecords();
    InvalidateGroups(GROUP_SHAPE | GROUP_DYNAMICS | GROUP_RENDER | GROUP_VIEW, true);
    return true;
}

RefTargetHandle BaseAtmo::Clone(RemapDir& remap) {
    BaseAtmo* copy = NewInstance();
    for (int b = 0; b < kNumHairBlocks; ++b)
        if (blocks_[size_t(b)]) copy->ReplaceReference(b, remap.CloneRef(blocks_[size_t(b)]));
    copy->ReplaceReference(kMaterialRef, material_);
    copy->SetName(GetName());
    copy->mapping_ = mapping_;
    copy->faceSelection_ = faceSelection_;
    copy->updateOnChange_ = updateOnChange_;
    copy->SyncEmitterRecords();
    return copy;
}

int BaseAtmo::Update(TimeValue t, Interval& valid) {
    const auto update = [&] {
        UpdateAtTime(t, valid);
        // The material is on no node, so nobody else brings it to the time.
        if (material_) material_->Update(t, valid);
    };
    if (!diag::Guarded("in BaseAtmo::Update", update)) valid.SetEmpty();
    return 1;
}

int BaseAtmo::GetMapping(int channel) const {
    return size_t(channel) < mapping_.size() ? mapping_[size_t(channel)] : int(STRANDMAP_NONE);
}

bool BaseAtmo::SetMapping(int channel, int type) {
    if (channel < 0 || channel >= MAX_MESHMAPS || type < STRANDMAP_EMITTER_COLOR || type >= MAX_MESHMAPS) return false;
    if (size_t(channel) >= mapping_.size()) mapping_.resize(size_t(channel) + 1, STRANDMAP_NONE);
    mapping_[size_t(channel)] = type;
    InvalidateGroups(GROUP_RENDER, true);
    return true;
}
