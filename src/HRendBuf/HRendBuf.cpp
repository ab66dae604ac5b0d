// Rendering of buckets. Reading them is in HRendBufRead.cpp, inserting in HRendBufInsert.cpp.

#include "HRendBuf/HRendBuf.h"

#include <algorithm>

#include "Base/HairMath.h"
#include "DebugTools/Tracer.h"
#include "DebugTools/platform/Thread.h"
#include "sdk/inode.h"

int FieldSelect(const RendParams& params) {
    if (!params.fieldRender) return 0;
    return (params.fieldOrder == 0) == (params.currentField == 0) ? 1 : 2;
}

HRendBuf::HRendBuf(IHRendOwner& owner) : owner_(owner), pixelLocks_(new std::mutex[kPixelLocks]) {}

HRendBuf::~HRendBuf() {
    for (BucketSlot& slot : buckets_) delete slot.bucket.load();
}

int HRendBuf::RenderBucket(HRendMode mode, TimeValue time, const HairImageInfo& image, const ViewParamsEx& view, int x,
                           int y, IProgressIndicator* progress, const char* title, RenderGlobalContext* context,
                           DrawnBucket* drawn) {
    if (mode == HRM_GBUFFER) {
        owner_.Assert("The render buffer draws no G-buffer channels.");
        return 0;
    }
    if (TouchBucket(x, y)) return 0;
    const diag::ScopedLock guard(renderLock_);
    if (TouchBucket(x, y)) return 0;
    mode_ = mode;
    time_ = time;
    image_ = image;
    view_ = view;
    context_ = context;
    progress_ = progress;
    if (!CreateGenerator()) return 0;
    const int elapsed = RenderLocked(x, y, title);
    if (drawn) *drawn = drawn_; // now, before another thread draws the next one
    return elapsed;
}

/// HasBucket, as a use of the bucket. A bucket that was found at this very tick is not looked for again: it cannot be
/// freed before the idle timeout is over, and nearly every sample of a picture ends here.
bool HRendBuf::TouchBucket(int x, int y) {
    const uint32_t now = owner_.Settings().tick();
    BucketSlot* slot = nullptr;
    if (bucketsReady_.load(std::memory_order_acquire) && x >= 0 && y >= 0) {
        slot = &buckets_[size_t(bucketGen_->GetBucketIndex(x, y))];
        if (slot->touched.load(std::memory_order_acquire) == now && now != HRendBucket::kNever && Find(x, y))
            return true;
    }
    const diag::ScopedLock guard(bucketListLock_);
    if (!FindTouched(x, y)) return false;
    if (slot) slot->touched.store(now, std::memory_order_release);
    return true;
}

bool HRendBuf::CreateGenerator() {
    if (bucketGen_) return true;
    const HRendSettings& settings = owner_.Settings();
    const int type = mode_ == HRM_IMAGE ? settings.bucketType : 0;
    std::unique_ptr<IBucketGenerator> generator;
    switch (type) {
    case 0:
        generator = std::make_unique<BucketGen>(settings.bucketSize);
        break;
    case 1:
        generator = std::make_unique<BucketGenStripeHoriz>(settings.bucketSize);
        break;
    case 2:
        generator = std::make_unique<BucketGenSquare>(settings.bucketSize);
        break;
    default:
        owner_.Assert("Unknown kind of bucket.");
        return false;
    }
    generator->Setup(image_.width, image_.height);
    bucketGen_ = std::move(generator);
    return true;
}

int HRendBuf::RenderLocked(int x, int y, const char* title) {
    TRACE_SCOPE("RenderBucket");
    const HRendSettings& settings = owner_.Settings();
    ReleaseIdleBuckets();
    const uint32_t start = settings.tick();
    fieldSelect_ = mode_ == HRM_IMAGE ? FieldSelect(owner_.RenderParams()) : 0;
    drawn_ = {};
    if (owner_.Aborted()) return 0;
    if (mode_ == HRM_SHADOW && !settings.hairShadows) return 0;

    int x0, y0, w, h;
    bucketGen_->GetBucketRect(x, y, x0, y0, w, h);
    if (w <= 0 || h <= 0) return 0;
    StartBucket({x0, y0, x0 + w, y0 + h});
    for (IHairSource* source : CountWork(title)) RenderSource(*source);
    rasterisers_.clear();
    FinishBucket(bucketGen_->GetBucketIndex(x, y));

    const uint32_t now = settings.tick();
    const uint32_t elapsed = now < start ? now + (HRendBucket::kNever - start) : now - start;
    return elapsed == 0 ? 1 : int(elapsed);
}

void HRendBuf::StartBucket(const PixelRect& rect) {
    const HRendSettings& settings = owner_.Settings();
    current_ = std::make_unique<HRendBucket>(mode_, rect);
    current_->Touch(settings.tick());
    threadCount_ = std::clamp(settings.threadCount, 1, OrderedInserter::kMaxThreads);
    ordered_.Setup(rect, threadCount_, settings.batchBytes);
    inLists_ = false;
    const RasterTarget target{rect, settings.filter, settings.filterSize, &fallbackFilter_};
    rasterisers_.clear();
    for (int i = 0; i < threadCount_; ++i) {
        rasterisers_.push_back(std::make_unique<HRB_Thick>(i, ordered_.Writer(i)));
        rasterisers_.back()->SetTarget(target);
    }
}

/// The sources that draw in this pass; titles the progress and sets its total.
std::vector<IHairSource*> HRendBuf::CountWork(const char* title) {
    std::vector<IHairSource*> renderable;
    int total = 0;
    for (IHairSource* source : owner_.HairSources()) {
        if (!source->Update(time_)) continue;
        renderable.push_back(source);
        total += source->StrandCount();
    }
    SetTitle(title, total);
    return renderable;
}

void HRendBuf::SetTitle(const char* title, int total) {
    progressDone_ = 0;
    progressTotal_ = total;
    if (!progress_) return;
    if (title)
        progress_->SetObject(title, total);
    else if (view_.cameraNode)
        progress_->SetObject(std::string("View From ") + view_.cameraNode->GetName(), total);
    else
        progress_->SetObject("Camera View", total);
    progress_->SetObjectProgress(0);
}

bool HRendBuf::Advance(int strands) {
    progressDone_ += strands;
    if (!progress_) return true;
    progress_->SetObjectProgress(progressDone_);
    return !progress_->IsCancelled();
}

void HRendBuf::RenderSource(IHairSource& source) {
    float q = source.MinHairDist();
    if (!(q > 0.001f)) q = mode_ == HRM_SHADOW ? shadowQuality_ : owner_.Settings().quality;
    q = std::clamp(q, 0.0f, 10.0f);
    depthTolerance_ = HairMath::Pow(10.0f, -q) * (view_.farRange - view_.nearRange);
    ordered_.EndBatch(0);
    drawn_.strands += source.Render(*this);
    // What the source has drawn but not merged still belongs to its own tolerance.
    if (ordered_.SampleBytes() > 0) MergeTiles(0);
    ordered_.EndBatch(0);
}

void HRendBuf::FinishBucket(int index) {
    HRendBucket& bucket = *current_;
    ordered_.ReleaseSamples();
    if (bucket.HasLists())
        EnsureLists();
    else
        bucket.TakeTiles(ordered_.ImageTiles(), ordered_.ShadowTiles());
    ordered_.Release();
    drawn_.fragments = mode_ == HRM_SHADOW ? 0 : int64_t(bucket.FragmentCount());
    if (mode_ == HRM_SHADOW && !shadowMap_.IsBuilt() && !owner_.MemoryIsTight() && shadowMap_.Build(bucket))
        bucket.Compacted();
    if (progress_) progress_->SetObjectProgress(progressTotal_);
    bucket.Touch(HRendBucket::kNever);

    const diag::ScopedLock guard(bucketListLock_);
    buckets_[size_t(index)].bucket.store(current_.release());
    UpdateMemory();
    const size_t live = size_t(LiveBuckets());
    if (seenLiveCounts_[live])
        owner_.Settings().idleTimeout += 1000;
    else
        seenLiveCounts_[live] = true;
}

void HRendBuf::UpdateMemory() {
    size_t bytes = shadowMap_.Memory();
    for (const BucketSlot& slot : buckets_)
        if (const HRendBucket* bucket = slot.bucket.load()) bytes += bucket->Memory();
    memoryBytes_ = bytes;
}

int HRendBuf::LiveBuckets() const {
    return int(std::count_if(buckets_.begin(), buckets_.end(),
                             [](const BucketSlot& slot) { return slot.bucket.load() != nullptr; }));
}

void HRendBuf::ReleaseIdleBuckets() {
    const HRendSettings& settings = owner_.Settings();
    const diag::ScopedLock guard(bucketListLock_);
    if (buckets_.empty() && bucketGen_) {
        const size_t count = size_t(bucketGen_->GetBucketCount());
        std::vector<bool> seen(count + 1, false); // first: the two belong together, and memory may run out between
        buckets_ = std::vector<BucketSlot>(count);
        seenLiveCounts_.swap(seen);
        bucketsReady_.store(true, std::memory_order_release);
    }
    const uint32_t now = settings.tick();
    for (size_t i = 0; i < buckets_.size(); ++i) {
        HRendBucket* bucket = buckets_[i].bucket.load();
        if (!bucket) continue;
        if (bucket->MaxIdle() > peakIdle_) {
            peakIdle_ = bucket->MaxIdle();
            peakIdleBucket_ = int(i);
        }
        if (!bucket->IsIdle(now, settings.idleTimeout)) continue;
        buckets_[i].touched.store(HRendBucket::kNever, std::memory_order_release);
        buckets_[i].bucket.store(nullptr);
        delete bucket;
    }
}
