#pragma once
// The hair renderer: an atmospheric effect that answers every camera segment from its render buffer.

#include <atomic>
#include <memory>
#include <vector>

#include "Base/HUtil/SpinLock.h"
#include "DebugTools/Platform.h"
#include "HRendBuf/HRendBuf.h"
#include "sdk/atmos.h"
#include "sdk/plugapi.h"
#include "sdk/properties.h"

inline constexpr Class_ID HAIRRENDER_CLASS_ID{0x2b22403b, 0x168608d6};
/// Asks the renderer for its RaySampler part.
inline constexpr uint32_t RAYSAMPLER_INTERFACE_ID = 0x27110001;

/// Parameters of the block "velmarRender".
enum HairRenderParam : ParamID {
    HRP_QUALITY_MEMORY = 0,
    HRP_HAIR_OBJECT_SHADOWS = 1,
    HRP_BUCKET_SIZE = 2,
    HRP_USE_PROGRESS = 3,
    HRP_THICK_LIMIT = 5,
    HRP_USE_ATMOSBLENDER = 6,
    HRP_USE_THICK = 7,
    HRP_LARGE_WARNING = 8,
    HRP_LARGE_FACES = 9,
    HRP_HAIR_HAIR_SHADOWS = 10,
    HRP_DISABLE_MIDDLE_SHADING = 11,
    HRP_MULTITHREADING = 12,
    HRP_FILTER_SIZE = 13,
    HRP_FILTER_TYPE = 14,
    HRP_BUCKET_TYPE = 15,
    HRP_BUCKETS_FROM_RENDERER = 16,
    HRP_STATS_HAIR_TIME = 17,
    HRP_STATS_SHADOW_TIME = 18,
    HRP_STATS_HAIR_MEM = 19,
    HRP_STATS_SHADOW_MEM = 20,
    HRP_STATS_GBUF_MEM = 21,
    HRP_STATS_STRANDS = 22,
    HRP_STATS_GEOM_STRANDS = 23,
    HRP_STATS_GEOM_FACES = 24,
    HRP_STATS_GEOM_VERTS = 25,
};

/// Counters of a render; advisory, updated without a lock.
struct HairRenderStats {
    std::atomic<int> strands{0}, geometryStrands{0}, geometryFaces{0}, geometryVerts{0};
    std::atomic<int> hairBytes{0}, shadowBytes{0}, gbufferBytes{0}; ///< hair: peak
    std::atomic<int> hairMs{0}, shadowMs{0};
    std::atomic<int64_t> fragments{0}; ///< in all buckets of the render
};

/// The camera's view of one frame with its buffer. Never changed once samples use it; a changed view makes a new one.
struct CameraFrame {
    HairImageInfo image;
    ViewParamsEx view;
    RenderGlobalContext* context = nullptr; ///< null: the view is the active viewport's
    std::unique_ptr<HRendBuf> buffer;
};

/// There is exactly one per process, from Instance(). Update, RenderBegin and RenderEnd run on the host's main thread;
/// Shade and the samplers on any number of render threads.
class HairRender : public Atmospheric,
                   public RaySampler,
                   public VolumeSampler,
                   public IHRendOwner,
                   public IScriptProperties {
public:
    /// The process's renderer, made on first use, without a parameter block.
    static HairRender& Instance();
    /// The instance when it exists, else null.
    static HairRender* Existing();
    ~HairRender() override;
    /// The host deletes what it owns; the renderer belongs to the library.
    void DeleteThis() override {}

    // Atmospheric.
    Class_ID ClassID() override { return HAIRRENDER_CLASS_ID; }
    void GetClassName(TSTR& s) override;
    int RenderBegin(TimeValue t) override;
    int Update(TimeValue t, Interval& valid) override;
    void Shade(ShadeContext& sc, const Point3& p0, const Point3& p1, Color& col, Color& trans,
               bool isBackground = false) override;
    int RenderEnd(TimeValue t) override;
    void* GetInterface(uint32_t id) override;
    int NumRefs() override { return 1; }
    RefTargetHandle GetReference(int i) override { return i == 0 ? block_ : nullptr; }
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override;
    int NumSubs() override { return 1; }
    Animatable* SubAnim(int i) override { return i == 0 ? block_ : nullptr; }
    TSTR SubAnimName(int) override { return "Parameters"; }
    int NumParamBlocks() override { return 1; }
    IParamBlock2* GetParamBlock(int i) override { return i == 0 ? block_ : nullptr; }
    IParamBlock2* GetParamBlockByID(short id) override { return id == 0 ? block_ : nullptr; }

    // Script properties: "fragments", read only, the number of fragments of the last render.
    std::vector<TSTR> ListProperties() override { return {"fragments"}; }
    bool GetProperty(const TSTR& name, ScriptValue& value, TSTR& error) override;
    bool SetProperty(const TSTR& name, const ScriptValue& value, TSTR& error) override;
    bool Call(const TSTR& name, const std::vector<ScriptValue>& args, ScriptValue& result, TSTR& error) override;

    // RaySampler.
    bool Attach(void* blender) override;
    int NumVolumeSamplers() override { return 1; }
    VolumeSampler* GetVolumeSampler(int i) override { return i == 0 ? this : nullptr; }
    // VolumeSampler.
    void Begin(SamplerRecord& r) override;
    void Reset(SamplerRecord& r) override;
    void SampleFirst(SamplerRecord& r) override;
    void SampleNext(SamplerRecord& r) override;

    // For other parts of the library.
    /// The camera's buffer of the current frame, or null. Main thread, or while no frame can end.
    HRendBuf* CameraBuffer() {
        const std::shared_ptr<CameraFrame> frame = LoadFrame();
        return frame ? frame->buffer.get() : nullptr;
    }
    const HRendSettings& EffectiveSettings() const { return settings_; }
    const LineFilter* Filter() const { return filter_.get(); }
    int ThreadCount() const { return settings_.threadCount; }
    bool Inactive() const { return inactive_; }
    const HairRenderStats& Stats() const { return stats_; }
    HairRenderStats& Stats() { return stats_; }
    void AddShadowTime(int ms) { stats_.shadowMs += ms; }
    void AddShadowMemory(int bytes) { stats_.shadowBytes += bytes; }
    void ClearStats();
    /// Adds the renderer to the host's atmospheric effects when it is not among them.
    static void EnsureRendererInScene();

private:
    HairRender();
    void ReadParameters(TimeValue t);
    void ChooseBuckets(TimeValue t);
    void RebuildFilter(int type, float size);
    /// The frame of the sample's camera and its pixel, with the pixel's bucket rendered; null when it gets no hair.
    /// p0 and p1 come in world space and go out in camera space.
    std::shared_ptr<CameraFrame> PreparePixel(ShadeContext& sc, Point3& p0, Point3& p1, IPoint2& pixel);
    std::shared_ptr<CameraFrame> LoadFrame() const;
    void StoreFrame(std::shared_ptr<CameraFrame> frame);
    std::shared_ptr<CameraFrame> CurrentFrame(ShadeContext& sc);
    std::shared_ptr<CameraFrame> FrameFromContext(RenderGlobalContext& context);
    std::shared_ptr<CameraFrame> FrameFromViewport(ShadeContext& sc);
    void RenderPixelBucket(CameraFrame& frame, const IPoint2& pixel);
    void ShadeSegment(ShadeContext& sc, Point3 p0, Point3 p1, Color& col, Color& trans);
    bool Refuses(const ShadeContext& sc) const;

    // IHRendOwner.
    HRendSettings& Settings() override { return settings_; }
    std::vector<IHairSource*> HairSources() override;
    RendParams RenderParams() override;
    bool Aborted() override;
    bool MemoryIsTight() override;
    void Assert(const char* what) override;

    Point3 cameraPosition_; ///< world space, captured by Update
    HRendSettings settings_;
    int filterType_ = 2;
    float filterSize_ = 1.5f;
    bool hairObjectShadows_ = true, hairHairShadows_ = true;
    bool useProgress_ = true, useAtmosBlender_ = true, multithreading_ = true;
    bool largeWarning_ = true;
    int largeFaces_ = 50000;
    TimeValue time_ = 0;
    HairRenderStats stats_;
    std::unique_ptr<LineFilter> filter_;
    std::atomic<bool> inactive_{true};
    std::shared_ptr<CameraFrame> frame_; ///< guarded by frameLock_; replaced inside prepareLock_ only
    mutable SpinLock frameLock_;
    diag::CriticalSection prepareLock_; ///< "prepare render"
    void* blender_ = nullptr;
    IParamBlock2* block_ = nullptr;
};

/// The renderer's parameter block and class descriptor.
ParamBlockDesc2* GetHairRenderBlock();
ClassDesc2* GetHairRenderClassDesc();

/// True when the segment p0 .. p1 (camera space) is one that the camera itself sends out. `p0.z` of exactly 0 in a
/// parallel view is replaced by 1.0e30.
bool IsCameraSegment(bool perspective, Point3& p0, const Point3& p1);

/// Kind and size of buckets that suit the host's current renderer (null: none), from its class id and script values.
struct BucketChoice {
    int type = 1, size = 256;
};
BucketChoice ChooseBucketsFor(Renderer* renderer, Interface& host, int bucketSize);
