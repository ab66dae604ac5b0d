// Reading rendered buckets. No pixel is locked: a bucket is complete before anyone can find it.

#include <algorithm>

#include "DebugTools/platform/Thread.h"
#include "HRendBuf/HRendBuf.h"
#include "sdk/atmos.h"

namespace {

/// Fragments thinner than this are taken whole, also when a bound cuts them.
constexpr float kThinDepth = 0.001f;

/// The part of a fragment's depth extent between zNear and zFar; 1 for a fragment that no bound cuts, or a thin one.
float PartInside(const HairFragment& f, float zNear, float zFar) {
    const bool isCut = zFar >= f.zMin || f.zMax >= zNear;
    if (!isCut || f.zMax - f.zMin < kThinDepth) return 1.0f;
    const float nearClip = std::min(zNear, f.zMax), farClip = std::max(zFar, f.zMin);
    return (nearClip - farClip) / (f.zMax - f.zMin);
}

/// The first fragment from `f` on that reaches into the range; null when there is none.
const HairFragment* FirstInside(const HairFragment* f, float zNear, float zFar) {
    for (; f && f->zMax > zFar; f = f->next)
        if (f->zMin <= zNear) return f;
    return nullptr;
}

void Report(SamplerRecord& sampler, float nearClip) {
    sampler.hit = 1;
    sampler.distance = (sampler.zNear - nearClip) * sampler.scale / (sampler.zNear - sampler.zFar);
}

} // namespace

HRendBucket* HRendBuf::Find(int x, int y) const {
    if (buckets_.empty() || x < 0 || y < 0) return nullptr;
    HRendBucket* bucket = buckets_[size_t(bucketGen_->GetBucketIndex(x, y))].load(std::memory_order_acquire);
    return bucket && bucket->Rect().Contains(x, y) ? bucket : nullptr;
}

bool HRendBuf::HasBucket(int x, int y) {
    const diag::ScopedLock guard(bucketListLock_);
    return Find(x, y) != nullptr;
}

/// The bucket of a pixel. Asking for it counts as a use, so that it stays for the reads that follow: these take no
/// lock, because RenderBucket has touched the bucket under the lock, and it is not freed before the idle timeout is
/// over.
HRendBucket* HRendBuf::FindTouched(int x, int y) {
    HRendBucket* bucket = Find(x, y);
    if (bucket) bucket->Touch(owner_.Settings().tick());
    return bucket;
}

const HairFragment* HRendBuf::ImageList(int x, int y) {
    HRendBucket* bucket = FindTouched(x, y);
    HairFragment** heads = bucket ? bucket->ImageHeads() : nullptr;
    return heads ? heads[bucket->PixelIndex(x, y)] : nullptr;
}

const ShadowFragment* HRendBuf::ShadowList(int x, int y) {
    HRendBucket* bucket = FindTouched(x, y);
    ShadowFragment** heads = bucket ? bucket->ShadowHeads() : nullptr;
    return heads ? heads[bucket->PixelIndex(x, y)] : nullptr;
}

void HRendBuf::SampleVolume(int x, int y, SamplerRecord& sampler) {
    HRendBucket* bucket = FindTouched(x, y);
    if (!bucket || !bucket->ImageHeads()) return;
    const bool isFirst = !sampler.current;
    const auto* from =
        isFirst ? bucket->ImageHeads()[bucket->PixelIndex(x, y)] : static_cast<const HairFragment*>(sampler.current);
    sampler.flags = isFirst ? 0x747 : 0;
    sampler.hit = 0;
    const HairFragment* f = FirstInside(from, sampler.zNear, sampler.zFar);
    if (!f) return;
    const float nearClip = std::min(sampler.zNear, f->zMax);
    const float w = PartInside(*f, sampler.zNear, sampler.zFar);
    const float coverage = UnpackFraction(f->coverage);
    const float t = 1.0f - UnpackFraction(f->opacity) * coverage * w;
    sampler.color = UnpackRealPixel(f->color) * coverage * w;
    sampler.transparency = Color(t, t, t);
    sampler.current = f;
    Report(sampler, nearClip);
    if (sampler.flags & 1) sampler.remainingDepth = sampler.zNear - nearClip;
}

void HRendBuf::SampleRay(int x, int y, SamplerRecord& sampler) {
    HRendBucket* bucket = FindTouched(x, y);
    if (!bucket || !bucket->ImageHeads()) return;
    const auto* from = sampler.current ? static_cast<const HairFragment*>(sampler.current)
                                       : bucket->ImageHeads()[bucket->PixelIndex(x, y)];
    sampler.hit = 0;
    if (const HairFragment* f = FirstInside(from, sampler.zNear, sampler.zFar))
        Report(sampler, std::min(f->zMax, sampler.zNear));
}

void HRendBuf::Composite(int x, int y, float zNear, float zFar, Color& color, float& transmittance) {
    for (const HairFragment* f = FirstInside(ImageList(x, y), zNear, zFar); f; f = FirstInside(f->next, zNear, zFar)) {
        const float w = PartInside(*f, zNear, zFar), coverage = UnpackFraction(f->coverage);
        color += UnpackRealPixel(f->color) * coverage * w * transmittance;
        transmittance *= 1.0f - UnpackFraction(f->opacity) * coverage * w;
    }
}
