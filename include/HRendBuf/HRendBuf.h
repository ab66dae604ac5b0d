#pragma once
// The render buffer: all hair of one view, in buckets that are drawn when first asked for and freed when idle.

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "HRB_Thick/HRB_Thick.h"
#include "HRendBuf/BucketGen.h"
#include "HRendBuf/CompactShadowMap.h"
#include "HRendBuf/HRendBucket.h"
#include "HRendBuf/HRendOwner.h"
#include "HRendBuf/HairImageInfo.h"
#include "HRendBuf/OrderedInserter.h"
#include "HRendBuf/ViewParamsEx.h"
#include "sdk/progress.h"

struct SamplerRecord;

class HRendBuf {
public:
    explicit HRendBuf(IHRendOwner& owner);
    ~HRendBuf();
    HRendBuf(const HRendBuf&) = delete;
    HRendBuf& operator=(const HRendBuf&) = delete;

    // For the owner. Any thread.

    /// Sees to it that the bucket of pixel (x, y) exists, drawing it when it does not; in the shadow pass that is the
    /// whole map. Answers the elapsed milliseconds, at least 1, or 0 when nothing was drawn: the bucket was there, the
    /// render is aborted, shadows are off, or the settings name an unknown kind of bucket. `progress`, `title` and
    /// `context` may be null. `image`'s scales must be computed.
    int RenderBucket(HRendMode mode, TimeValue time, const HairImageInfo& image, const ViewParamsEx& view, int x, int y,
                     IProgressIndicator* progress, const char* title, RenderGlobalContext* context);
    /// Depth precision of the shadow pass for hair without its own: the light's parameter, 0..10.
    void SetShadowQuality(float quality) { shadowQuality_ = quality; }
    bool HasBucket(int x, int y);

    // Reads of pixels whose bucket RenderBucket has seen to, within the idle timeout. Elsewhere there is no hair.

    /// The next hit of a depth range, with colour and transparency; starts at the pixel's front when the record has no
    /// current fragment. The record names the pixel (x, y).
    void SampleVolume(int x, int y, SamplerRecord& sampler);
    /// The first hit of a depth range, without colour.
    void SampleRay(int x, int y, SamplerRecord& sampler);
    /// All hair of a pixel between the depths zNear > zFar, front to back: adds to `color` what the hair sends, and
    /// multiplies `transmittance` by what it lets through.
    void Composite(int x, int y, float zNear, float zFar, Color& color, float& transmittance);

    /// Frees buckets that were not used for longer than the owner's timeout.
    void ReleaseIdleBuckets();
    size_t MemoryInUse() const { return memoryBytes_; }
    /// Strands drawn by the last RenderBucket.
    int RenderedStrands() const { return renderedStrands_; }
    /// Fragments that the last RenderBucket made.
    int64_t MadeFragments() const { return madeFragments_; }
    TimeValue Time() const { return time_; }
    /// The shadow pass's result; not built when memory was tight, and ReadShadow answers instead.
    const CompactShadowMap& ShadowMap() const { return shadowMap_; }
    /// A pixel's fragments; none when not rendered. They hold until their bucket is freed.
    FragmentReader<HairFragment> ReadImage(int x, int y);
    FragmentReader<ShadowFragment> ReadShadow(int x, int y);
    /// Longest idle gap of any bucket so far, and its number.
    uint32_t PeakIdle() const { return peakIdle_; }
    int PeakIdleBucket() const { return peakIdleBucket_; }

    // For hair sources while they draw (IHairSource::Render).

    HRendMode Mode() const { return mode_; }
    const HairImageInfo& Image() const { return image_; }
    const ViewParamsEx& View() const { return view_; }
    RenderGlobalContext* Context() const { return context_; }
    const HRendSettings& Settings() { return owner_.Settings(); }
    /// The bucket being drawn.
    const PixelRect& Bucket() const { return current_->Rect(); }
    int ThreadCount() const { return threadCount_; }
    float DepthTolerance() const { return depthTolerance_; }
    bool Aborted() { return owner_.Aborted(); }
    /// Adds to the strands done; false when the user wants to stop. On the thread that called RenderBucket.
    bool Advance(int strands);

    /// The rasteriser of a thread. What it draws enters the lists by the ordered path; see OrderedInserter for the
    /// protocol, of which the following four are the calls. Units start at 0 for every source.
    HRB_Thick& Rasteriser(int thread) { return *rasterisers_[size_t(thread)]; }
    void BeginUnit(int thread, uint32_t unit) { ordered_.BeginUnit(thread, unit); }
    bool BatchFull(int thread, uint32_t nextUnit) { return ordered_.Full(thread, nextUnit); }
    void MergeTiles(int thread);
    void EndBatch(uint32_t nextUnit) { ordered_.EndBatch(nextUnit); }

    /// Inserts one sample at a pixel of the current bucket. Not between a BeginUnit and its EndBatch. May be called
    /// from several threads at once: with two or more threads each pixel is locked, and the order in a list is that of
    /// the calls.
    void InsertImageSample(int thread, int x, int y, float z, const Color& color, float coverage, float opacity,
                           Point2 velocity);
    void InsertShadowSample(int thread, int x, int y, float z, float opacity, float coverage);

private:
    static constexpr int kPixelLocks = 199;
    class PixelLock;

    int RenderLocked(int x, int y, const char* title);
    bool CreateGenerator();
    void StartBucket(const PixelRect& rect);
    std::vector<IHairSource*> CountWork(const char* title);
    void SetTitle(const char* title, int total);
    void RenderSource(IHairSource& source);
    void FinishBucket(int index);
    void UpdateMemory();
    int LiveBuckets() const;
    HRendBucket* Find(int x, int y) const;
    HRendBucket* FindTouched(int x, int y);
    bool TouchBucket(int x, int y);
    FragmentStore Store(int thread, bool recycle);
    void TilesToLists(int thread);
    void EnsureLists();

    IHRendOwner& owner_;
    HRendMode mode_ = HRM_IMAGE;
    HairImageInfo image_;
    ViewParamsEx view_;
    RenderGlobalContext* context_ = nullptr;
    TimeValue time_ = 0;
    int fieldSelect_ = 0;
    float shadowQuality_ = 5.0f;

    struct BucketSlot {
        std::atomic<HRendBucket*> bucket{nullptr};          ///< null: not rendered, or freed
        std::atomic<uint32_t> touched{HRendBucket::kNever}; ///< last tick at which RenderBucket found it
    };
    std::vector<BucketSlot> buckets_;
    std::atomic<bool> bucketsReady_{false}; ///< buckets_ has its final size
    std::vector<bool> seenLiveCounts_;      ///< one entry more than there are buckets
    std::unique_ptr<HRendBucket> current_;
    uint32_t peakIdle_ = 0;
    int peakIdleBucket_ = -1;
    int renderedStrands_ = 0;
    int64_t madeFragments_ = 0;
    std::atomic<size_t> memoryBytes_{0};
    IProgressIndicator* progress_ = nullptr;
    int progressDone_ = 0, progressTotal_ = 0;
    float depthTolerance_ = 0;

    CompactShadowMap shadowMap_;
    std::unique_ptr<IBucketGenerator> bucketGen_;
    int threadCount_ = 1;
    LineFilterCone fallbackFilter_{1.0f};
    OrderedInserter ordered_;
    std::atomic<bool> inLists_{false}; ///< the current bucket's fragments are in its lists, none in ordered_'s tiles
    std::vector<std::unique_ptr<HRB_Thick>> rasterisers_;

    std::mutex bucketListLock_;
    std::mutex renderLock_;
    std::mutex listFormLock_;
    std::unique_ptr<std::mutex[]> pixelLocks_;
};

/// Which scan lines a pass may write when fields are rendered: 0 all, else only lines whose (y & 1) + 1 shares no bit.
int FieldSelect(const RendParams& params);
