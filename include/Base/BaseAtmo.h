#pragma once
// The common base of the hair object and the fur object: parameters, node lists, caches, and the way to their strands.

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "Base/BaseAtmo/EmitterRecord.h"
#include "Base/HairParams.h"
#include "Base/ParamBlocks.h"
#include "Base/ParamDefs.h"
#include "DebugTools/platform/Thread.h"
#include "HRendBuf/HRendOwner.h"
#include "sdk/atmos.h"
#include "sdk/properties.h"

struct GenerationRun;

/// Size of the geometry that an object would produce.
struct GeometryEstimate {
    int64_t vertices = 0, faces = 0, mappingVertices = 0, strands = 0, points = 0;
};

/// A hair or fur object: an atmospheric effect that the hair renderer asks for strands (GetInterface with
/// HAIR_SOURCE_INTERFACE_ID). Parameters change on the main thread; strand requests may come from render threads and
/// are serialised by the object's lock.
class BaseAtmo : public Atmospheric, public IFaceSelectionOwner, public IScriptProperties {
public:
    ~BaseAtmo() override;

    // Change tracking, by change groups (ChangeGroup bits).

    /// Whether a change of any of the groups shows: shape and view always, dynamics when they are in use, render when
    /// strands become geometry.
    virtual bool IsGroupRelevant(int groups);
    /// The same; false while parameters are being loaded.
    virtual bool IsGroupRelevantNow(int groups);
    /// Forgets what is known to hold for the groups, on all emitters.
    virtual void InvalidateGroups(int groups, bool notify);
    /// Forgets the strands of one emitter, or of all (-1), when the groups have the shape; with `notify` tells the
    /// dependents with part mask 2 (shape, dynamics) and 4 (render).
    virtual void InvalidateCaches(int groups, int emitter, bool notify);

    // Evaluation.

    /// The strand request of renderers: brings parameters and emitters to `t` under the lock. False when no emitter
    /// has a mesh.
    virtual bool GetStrandsAt(TimeValue t);
    /// Brings everything to `t`; answers the interval over which it holds and narrows `validity` to it.
    virtual Interval UpdateAtTime(TimeValue t, Interval& validity);
    /// Reads one parameter into the value cache and narrows `validity` to where it holds. True when it changed; false
    /// too for an identifier that no block of the object holds.
    virtual bool UpdateParam(TimeValue t, int pid, Interval& validity);

    // Node lists (200..208). An identifier that the object does not have is ignored.

    virtual int NodeCount(int list) const;
    virtual INode* GetNode(int list, int index) const;
    /// False when the node does not qualify.
    virtual bool AddNode(int list, INode* node);
    virtual bool DeleteNode(int list, INode* node);
    virtual void ClearNodeList(int list);
    /// Replaces the list by those of the nodes that qualify.
    virtual void SetNodeList(int list, const std::vector<INode*>& nodes);
    /// Sizes the emitter records to the emitter list and makes those that are missing.
    virtual void SyncEmitterRecords();
    /// Replaces every parameter block by a clone of the source's. False, changing nothing, between hair and fur.
    virtual bool ReplaceBlocks(BaseAtmo& source);

    // Hair geometry nodes built from this object. There is no such class, so there are none.
    virtual int CountGeometryNodes(int emitter) { return 0; }
    virtual int GetGeometryNodes(std::vector<INode*>& out, int emitter) { return 0; }
    virtual void ForEachGeometryNode(const std::function<void(INode*, Object*)>& callback) {}

    // Generation. Each holds the object's lock.

    /// Draws the strands of every emitter that shows in the buffer's pass; answers how many.
    virtual int RenderStrands(HRendBuf& buffer);
    /// What the strands of one emitter, or of all (-1), would take as geometry.
    virtual GeometryEstimate EstimateGeometry(TimeValue t, int emitter = -1);

    bool IsFur() const { return fur_; }
    /// The values as last updated.
    const HairParams& Params() const { return params_; }
    int EmitterCount() const { return int(emitters_.size()); }
    /// Null for an empty place of the list.
    EmitterRecord* Emitter(int i) { return emitters_[size_t(i)].get(); }
    /// The material that shades the strands; null: the default material.
    Mtl* GetMaterial() const { return material_; }
    bool SetMaterial(Mtl* material) { return ReplaceReference(kMaterialRef, material) == REF_SUCCEED; }
    /// The strands' mapping table (StrandMapping, or an emitter channel 1..99, by output channel 0..99).
    int GetMapping(int channel) const;
    bool SetMapping(int channel, int type);
    /// While on, changes are kept back; switching off invalidates everything.
    void SetLoading(bool on);
    /// Makes every curve and distribution that is missing, in its default shape.
    void CreateMissingReferences();
    /// The block that holds a parameter, or null.
    IParamBlock2* BlockOf(int pid) const;

    // IFaceSelectionOwner.
    FaceSelection& GetFaceSelection() override { return faceSelection_; }
    bool& GetUpdateOnChange() override { return updateOnChange_; }
    void ParametersChanged() override;

    // IScriptProperties.
    std::vector<TSTR> ListProperties() override;
    bool GetProperty(const TSTR& name, ScriptValue& value, TSTR& error) override;
    bool SetProperty(const TSTR& name, const ScriptValue& value, TSTR& error) override;
    bool Call(const TSTR& name, const std::vector<ScriptValue>& args, ScriptValue& result, TSTR& error) override;

    // Host overrides.
    int Update(TimeValue t, Interval& valid) override;
    /// Strands reach the picture through the hair renderer; the object itself leaves every segment as it is.
    void Shade(ShadeContext&, const Point3&, const Point3&, Color&, Color&, bool) override {}
    void* GetInterface(uint32_t id) override;
    int NumRefs() override { return kNumRefs; }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override;
    int NumSubs() override { return kNumHairBlocks; }
    Animatable* SubAnim(int i) override { return GetParamBlock(i); }
    TSTR SubAnimName(int i) override;
    int NumParamBlocks() override { return kNumHairBlocks; }
    /// By block identifier; null for block 4 of the hair object.
    IParamBlock2* GetParamBlock(int i) override { return i >= 0 && i < kNumHairBlocks ? blocks_[size_t(i)] : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return GetParamBlock(id); }
    RefTargetHandle Clone(RemapDir& remap) override;

protected:
    /// Makes the parameter blocks that `desc` describes.
    BaseAtmo(bool fur, ClassDesc2& desc);
    /// A new object of the same class with default blocks.
    virtual BaseAtmo* NewInstance() const = 0;

private:
    /// What the hair renderer sees.
    class Source : public IHairSource {
    public:
        explicit Source(BaseAtmo& owner) : owner_(owner) {}
        bool Update(TimeValue t) override;
        int StrandCount() override;
        float MinHairDist() override;
        int Render(HRendBuf& buffer) override { return owner_.RenderStrands(buffer); }

    private:
        BaseAtmo& owner_;
    };

    /// A cached value with its validity; 16 bytes.
    struct CachedValue {
        union {
            int i = 0; ///< numbers; for colours their place in cachedColors_
            float f;
            ReferenceTarget* ref;
        };
        Interval valid = NEVER;
    };
    enum { kMaterialRef = kNumHairBlocks, kNumRefs };
    static constexpr int kNumGroups = 4;

    const std::array<uint8_t, kNumPids>& BlockMap() const;
    bool UpdateReference(ReferenceTarget* now, TimeValue t, int pid, Interval& valid);
    bool UpdateNodeList(IParamBlock2& block, int pid, TimeValue t);
    bool Store(int pid, int value);
    bool Store(int pid, float value);

    void Refresh(TimeValue t);
    void ReadAllParams(TimeValue t);
    void FoldNodes(int list, TimeValue t, int groups);
    void UpdateEmitters(TimeValue t);
    void FillSnapshot(TimeValue t);
    void FillCurves(TimeValue t);
    int GroupsOf(int pid) const;
    PartID PartsOf(int groups) const;
    RefResult ParamChanged(int pid, int entry, PartID& part);

    bool ShowsInPass(const EmitterRecord& e, int pass) const;
    int RenderEmitter(EmitterRecord& e, HRendBuf& buffer, int pass, uint32_t& unit);
    bool PrepareEstimate(EmitterRecord& e, GenerationRun& run) const;
    void EstimateEmitter(EmitterRecord& e, GeometryEstimate& sum);
    ScriptValue ScriptEstimate();

    bool fur_;
    std::array<IParamBlock2*, kNumHairBlocks> blocks_{};
    Mtl* material_ = nullptr;
    std::unique_ptr<Mtl> defaultMaterial_;
    std::array<CachedValue, kNumPids> cache_{};
    Color cachedColors_[2];
    std::vector<int> mapping_{STRANDMAP_STRAND_COLOR, STRANDMAP_CYLINDRICAL};
    FaceSelection faceSelection_;
    bool updateOnChange_ = true;
    std::array<std::vector<INode*>, kNumNodeLists> nodeCache_;
    std::vector<std::unique_ptr<EmitterRecord>> emitters_;
    bool loading_ = false;
    Interval groupValid_[kNumGroups];                    ///< by group bit
    Interval combinedValid_, emitterValid_, lastUpdate_; ///< all groups; the emitters; the last completed update
    HairParams params_;
    bool updating_ = false; ///< on, while no update runs, after one that did not come to its end
    int strandCount_ = -1;  ///< drawn by the renderer; -1 unknown
    diag::CriticalSection lock_;
    Source source_{*this};
};
