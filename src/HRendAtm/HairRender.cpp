// The hair renderer's life: construction, parameters, beginning and end of a render.

#include "HRendAtm/HairRender.h"

#include <algorithm>

#include "Base/CreateHair/WorkerPool.h"
#include "DebugTools/Assert.h"
#include "sdk/core.h"

namespace {

constexpr int kMaxThreads = 16;

HairRender* existing = nullptr;

constexpr int kSceneNotifications[] = {NOTIFY_FILE_POST_OPEN, NOTIFY_FILE_POST_MERGE, NOTIFY_MERGE_DONE,
                                       NOTIFY_FILE_PRE_SAVE};

// Scenes came or go: links of hair to nodes are the host's references, so only the viewports have to follow.
void SceneChanged(void*, int, void*) {
    if (Interface* host = GetCOREInterface()) host->RedrawViews(host->GetTime());
}

// The host's own thread number, where it sets one, stands for the number of processors.
int ChooseThreads(bool multithreading) {
    if (!multithreading) return 1;
    Interface* host = GetCOREInterface();
    const int wanted = host ? host->GetRendParams().maxThreads : 0;
    return std::clamp(wanted > 0 ? wanted : diag::ProcessorCount(), 1, kMaxThreads);
}

} // namespace

HairRender& HairRender::Instance() {
    static HairRender instance;
    return instance;
}

HairRender* HairRender::Existing() {
    return existing;
}

HairRender::HairRender() {
    settings_.quality = 6.0f;
    settings_.thickLimit = 1.0f;
    settings_.bucketSize = 256;
    settings_.bucketType = 1;
    settings_.idleTimeout = 3000;
    existing = this;
    if (Interface* host = GetCOREInterface())
        for (const int code : kSceneNotifications) host->RegisterNotification(SceneChanged, this, code);
}

HairRender::~HairRender() {
    if (Interface* host = GetCOREInterface())
        for (const int code : kSceneNotifications) host->UnRegisterNotification(SceneChanged, this, code);
    existing = nullptr;
    DeleteAllRefs();
}

void HairRender::GetClassName(TSTR& s) {
    s = "velmar Renderer";
}

void HairRender::SetReference(int i, RefTargetHandle target) {
    if (i == 0) block_ = static_cast<IParamBlock2*>(target);
}

RefResult HairRender::NotifyRefChanged(const Interval&, RefTargetHandle target, PartID&, RefMessage message) {
    if (message == REFMSG_TARGET_DELETED && target == block_) block_ = nullptr;
    return REF_SUCCEED;
}

void* HairRender::GetInterface(uint32_t id) {
    if (id == SCRIPT_PROPERTIES_INTERFACE_ID) return static_cast<IScriptProperties*>(this);
    if (id == RAYSAMPLER_INTERFACE_ID) return static_cast<RaySampler*>(this);
    return Atmospheric::GetInterface(id);
}

void HairRender::ClearStats() {
    for (std::atomic<int>* v :
         {&stats_.strands, &stats_.geometryStrands, &stats_.geometryFaces, &stats_.geometryVerts, &stats_.hairBytes,
          &stats_.shadowBytes, &stats_.gbufferBytes, &stats_.hairMs, &stats_.shadowMs})
        *v = 0;
    stats_.fragments = 0;
}

bool HairRender::GetProperty(const TSTR& name, ScriptValue& value, TSTR& error) {
    if (name != "fragments") {
        error = "no such property";
        return false;
    }
    value = ScriptValue::Int(int(std::min<int64_t>(stats_.fragments, INT_MAX)));
    return true;
}

bool HairRender::SetProperty(const TSTR& name, const ScriptValue&, TSTR& error) {
    error = name == "fragments" ? "cannot be set" : "no such property";
    return false;
}

bool HairRender::Call(const TSTR&, const std::vector<ScriptValue>&, ScriptValue&, TSTR& error) {
    error = "no such operation";
    return false;
}

void HairRender::EnsureRendererInScene() {
    Interface* host = GetCOREInterface();
    if (!host) return;
    for (int i = 0; i < host->NumAtmospheric(); ++i)
        if (host->GetAtmospheric(i)->ClassID() == HAIRRENDER_CLASS_ID) return;
    auto* renderer = static_cast<HairRender*>(static_cast<ReferenceTarget*>(GetHairRenderClassDesc()->Create(false)));
    renderer->SetName("velmar Renderer");
    host->AddAtmosphere(renderer);
}

// Every value is clamped again to its range.
void HairRender::ReadParameters(TimeValue t) {
    if (!block_) return;
    const auto on = [&](ParamID id) { return block_->GetInt(id, t) != 0; };
    hairObjectShadows_ = on(HRP_HAIR_OBJECT_SHADOWS);
    hairHairShadows_ = on(HRP_HAIR_HAIR_SHADOWS);
    settings_.hairShadows = hairObjectShadows_ || hairHairShadows_;
    settings_.shadeMiddle = !on(HRP_DISABLE_MIDDLE_SHADING);
    useProgress_ = on(HRP_USE_PROGRESS);
    settings_.thickLimit = std::clamp(block_->GetFloat(HRP_THICK_LIMIT, t), 0.0f, 1000000.0f);
    filterSize_ = std::clamp(block_->GetFloat(HRP_FILTER_SIZE, t), 0.0f, 3.0f);
    filterType_ = std::clamp(block_->GetInt(HRP_FILTER_TYPE, t), 0, 2);
    useAtmosBlender_ = on(HRP_USE_ATMOSBLENDER);
    settings_.useThick = on(HRP_USE_THICK);
    largeWarning_ = on(HRP_LARGE_WARNING);
    largeFaces_ = std::clamp(block_->GetInt(HRP_LARGE_FACES, t), 0, 10000000);
    multithreading_ = on(HRP_MULTITHREADING);
    settings_.threadCount = ChooseThreads(multithreading_);
    settings_.bucketType = std::clamp(block_->GetInt(HRP_BUCKET_TYPE, t), 0, 2);
}

void HairRender::ChooseBuckets(TimeValue t) {
    const int size = block_ ? std::clamp(block_->GetInt(HRP_BUCKET_SIZE, t), 10, 10000) : settings_.bucketSize;
    settings_.bucketSize = size;
    Interface* host = GetCOREInterface();
    if (!host || !block_ || block_->GetInt(HRP_BUCKETS_FROM_RENDERER, t) == 0) return;
    const BucketChoice choice = ChooseBucketsFor(host->GetCurrentRenderer(), *host, size);
    settings_.bucketType = choice.type;
    settings_.bucketSize = choice.size;
}

void HairRender::RebuildFilter(int type, float size) {
    settings_.filterSize = size;
    if (filter_ && filter_->GetType() == type && filter_->Size() == size) return;
    filter_.reset();
    if (type == 2) filter_ = std::make_unique<LineFilterCone>(size);
    if (type == 0) filter_ = std::make_unique<LineFilterNone>(size);
    // Type 1 has no filter here: the rasterisers use boxes of their own.
    settings_.filter = filter_.get();
}

int HairRender::RenderBegin(TimeValue t) {
    blender_ = nullptr;
    ClearStats();
    if (Active(t)) ReadParameters(t);
    ChooseBuckets(t);
    RebuildFilter(filterType_, filterSize_);
    inactive_ = false;
    time_ = t;
    return 1;
}

int HairRender::Update(TimeValue t, Interval&) {
    time_ = t;
    {
        diag::ScopedLock lock(prepareLock_);
        StoreFrame(nullptr);
    }
    if (!inactive_ && block_) {
        settings_.quality = std::clamp(block_->GetFloat(HRP_QUALITY_MEMORY, t), 0.0f, 10.0f);
        if (block_->GetInt(HRP_BUCKETS_FROM_RENDERER, t) == 0)
            settings_.bucketSize = std::clamp(block_->GetInt(HRP_BUCKET_SIZE, t), 10, 10000);
    }
    ViewParamsEx view;
    if (view.SetFromViewport(t)) cameraPosition_ = Point3(0, 0, 0) * view.camToWorld;
    return 1;
}

int HairRender::RenderEnd(TimeValue) {
    stats_.gbufferBytes = 0;
    if (inactive_) return 1;
    {
        diag::ScopedLock lock(prepareLock_);
        StoreFrame(nullptr);
    }
    inactive_ = true;
    WorkerPool::Get().Stop();
    return 1;
}

std::vector<IHairSource*> HairRender::HairSources() {
    std::vector<IHairSource*> sources;
    Interface* host = GetCOREInterface();
    for (int i = 0; host && i < host->NumAtmospheric(); ++i) {
        Atmospheric* a = host->GetAtmospheric(i);
        if (a == this || !a->Active(time_)) continue;
        if (auto* source = static_cast<IHairSource*>(a->GetInterface(HAIR_SOURCE_INTERFACE_ID)))
            sources.push_back(source);
    }
    return sources;
}

RendParams HairRender::RenderParams() {
    Interface* host = GetCOREInterface();
    return host ? host->GetRendParams() : RendParams();
}

bool HairRender::Aborted() {
    Interface* host = GetCOREInterface();
    return inactive_ || (host && host->CheckForRenderAbort());
}

bool HairRender::MemoryIsTight() {
    const HRendBuf* buffer = CameraBuffer();
    return buffer && buffer->MemoryInUse() > diag::GetMemoryAmounts().physicalTotal / 4;
}

void HairRender::Assert(const char*) {
    SASSERT_ONCE(false);
}
