#include "materials/bitmap_map.h"

#include <algorithm>

#include "core/block_class.h"
#include "core/error.h"
#include "materials/map_wrap.h"

namespace host {

namespace {

BlockClassDesc<BitmapMap>& Desc() {
    static BlockClassDesc<BitmapMap> desc(
        "Bitmap", "bitmapMap", TEXMAP_CLASS_ID, BMTEX_CLASS_ID,
        HostMap::WithShared({NamedParam(kBitmapFile, "file", TYPE_STRING, 0), BoolParam(kBitmapRaw, "raw", false),
                             IntParam(kBitmapWrapU, "wrapU", kWrapRepeat, kWrapRepeat, kWrapClamp),
                             IntParam(kBitmapWrapV, "wrapV", kWrapRepeat, kWrapRepeat, kWrapClamp),
                             IntParam(kBitmapFilter, "filter", kFilterPyramid, kFilterNone, kFilterSummedArea),
                             IntParam(kBitmapMono, "mono", kMonoIntensity, kMonoIntensity, kMonoAlpha)}));
    return desc;
}

} // namespace

ClassDesc* BitmapMapDesc() {
    return &Desc();
}

BitmapMap::BitmapMap() {
    Desc().MakeAutoParamBlocks(this);
    Refresh();
}

void BitmapMap::ReadParams(IParamBlock2& block) {
    wrap_ = {block.GetInt(kBitmapWrapU, Time()), block.GetInt(kBitmapWrapV, Time())};
    filter_ = block.GetInt(kBitmapFilter, Time());
    alphaCounts_ = block.GetInt(kBitmapMono, Time()) == kMonoAlpha;
    const std::string file = block.GetStr(kBitmapFile);
    const bool raw = block.GetInt(kBitmapRaw, Time()) != 0;
    if (file != file_ || raw != raw_) Load(file, raw);
    PrepareFilter();
}

void BitmapMap::Load(const std::string& file, bool raw) {
    file_ = file;
    raw_ = raw;
    image_.reset();
    pyramid_.reset();
    sums_.reset();
    error_.clear();
    if (file.empty()) return;
    try {
        image_ = std::make_shared<const Image>(LoadImage(file, raw));
    } catch (const Error& e) {
        error_ = e.what();
    }
}

void BitmapMap::PrepareFilter() {
    if (!image_) return;
    error_.clear();
    if (filter_ == kFilterPyramid && !pyramid_) pyramid_ = std::make_shared<const ImagePyramid>(*image_);
    if (filter_ != kFilterSummedArea || sums_) return;
    if (int64_t(image_->Width()) * image_->Height() > SummedArea::kMostPixels)
        error_ = file_ + ": the picture is too large for the summed area filter, expected the pyramid filter";
    else
        sums_ = std::make_shared<const SummedArea>(*image_);
}

AColor BitmapMap::Evaluate(ShadeContext&, const MapPoint& p) const {
    if (!image_) return AColor(0, 0, 0, 1);
    const bool region = p.across.x > 0.0f || p.across.y > 0.0f;
    if (region && filter_ == kFilterPyramid) return pyramid_->At(*image_, p.at.x, p.at.y, p.across, wrap_);
    if (region && filter_ == kFilterSummedArea && sums_) return sums_->At(p.at.x, p.at.y, p.across, wrap_);
    return Bilinear(*image_, p.at.x, p.at.y, wrap_);
}

float BitmapMap::Grain() const {
    return image_ ? 1.0f / float(std::max(image_->Width(), image_->Height())) : 1.0f;
}

RefTargetHandle BitmapMap::Clone(RemapDir& remap) {
    auto* const copy = new BitmapMap;
    // The copy shares the picture that was read.
    copy->image_ = image_;
    copy->pyramid_ = pyramid_;
    copy->sums_ = sums_;
    copy->file_ = file_;
    copy->raw_ = raw_;
    copy->error_ = error_;
    return Copied(copy, remap);
}

} // namespace host
