// Reading rendered buckets. No pixel is locked: a bucket is complete before anyone can find it.

#include <algorithm>

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

/// Moves on to the first fragment that reaches into the range; false when there is none.
bool FindInside(FragmentReader<HairFragment>& f, float zNear, float zFar) {
    for (; !f.Done() && f.Get().zMax > zFar; f.Next())
        if (f.Get().zMin <= zNear) return true;
    return false;
}

void Report(SamplerRecord& sampler, float nearClip) {
    sampler.hit = 1;
    sampler.distance = (sampler.zNear - nearClip) * sampler.scale / (sampler.zNear - sampler.zFar);
}

} // namespace

HRendBucket* HRendBuf::Find(int x, int y) const {
    if (!bucketsReady_.load(std::memory_order_acquire) || x < 0 || y < 0) return nullptr;
    const BucketSlot& slot = buckets_[size_t(bucketGen_->GetBucketIndex(x, y))];
    HRendBucket* bucket = slot.bucket.load(std::memory_order_acquire);
    return bucket && bucket->Rect().Contains(x, y) ? bucket : nullptr;
}

bool HRendBuf::HasBucket(int x, int y) {
    const std::lock_guard guard(bucketListLock_);
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

FragmentReader<HairFragment> HRendBuf::ReadImage(int x, int y) {
    HRendBucket* bucket = FindTouched(x, y);
    return bucket ? bucket->ReadImage(x, y) : FragmentReader<HairFragment>();
}

FragmentReader<ShadowFragment> HRendBuf::ReadShadow(int x, int y) {
    HRendBucket* bucket = FindTouched(x, y);
    return bucket ? bucket->ReadShadow(x, y) : FragmentReader<ShadowFragment>();
}

void HRendBuf::SampleVolume(int x, int y, SamplerRecord& sampler) {
    HRendBucket* bucket = FindTouched(x, y);
    if (!bucket || bucket->Mode() != HRM_IMAGE) return;
    sampler.flags = sampler.current ? 0 : 0x747;
    sampler.hit = 0;
    auto reader = bucket->ReadImage(x, y, sampler.current);
    if (!FindInside(reader, sampler.zNear, sampler.zFar)) return;
    const HairFragment& f = reader.Get();
    const float nearClip = std::min(sampler.zNear, f.zMax);
    const float w = PartInside(f, sampler.zNear, sampler.zFar);
    const float coverage = UnpackFraction(f.coverage);
    const float t = 1.0f - UnpackFraction(f.opacity) * coverage * w;
    sampler.color = UnpackRealPixel(f.color) * coverage * w;
    sampler.transparency = Color(t, t, t);
    sampler.current = reader.Place();
    Report(sampler, nearClip);
    if (sampler.flags & 1) sampler.remainingDepth = sampler.zNear - nearClip;
}

void HRendBuf::SampleRay(int x, int y, SamplerRecord& sampler) {
    HRendBucket* bucket = FindTouched(x, y);
    if (!bucket || bucket->Mode() != HRM_IMAGE) return;
    sampler.hit = 0;
    auto reader = bucket->ReadImage(x, y, sampler.current);
    if (FindInside(reader, sampler.zNear, sampler.zFar)) Report(sampler, std::min(reader.Get().zMax, sampler.zNear));
}

void HRendBuf::Composite(int x, int y, float zNear, float zFar, Color& color, float& transmittance) {
    for (auto reader = ReadImage(x, y); FindInside(reader, zNear, zFar); reader.Next()) {
        const HairFragment& f = reader.Get();
        const float w = PartInside(f, zNear, zFar), coverage = UnpackFraction(f.coverage);
        color += UnpackRealPixel(f.color) * coverage * w * transmittance;
        transmittance *= 1.0f - UnpackFraction(f.opacity) * coverage * w;
    }
}
