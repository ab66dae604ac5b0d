#include "materials/bitmap_map.h"

#include <algorithm>
#include <cmath>

#include "core/block_class.h"
#include "core/error.h"

namespace host {

namespace {

BlockClassDesc<BitmapMap>& Desc() {
    static BlockClassDesc<BitmapMap> desc("Bitmap", "bitmapMap", TEXMAP_CLASS_ID, BMTEX_CLASS_ID, [] {
        std::vector<ParamDef> params = MapCoords::Params();
        params.push_back(NamedParam(kBitmapFile, "file", TYPE_STRING, 0));
        params.push_back(BoolParam(kBitmapRaw, "raw", false));
        params.push_back(BoolParam(kBitmapRepeat, "repeat", true));
        return params;
    }());
    return desc;
}

/// The two pixels around coordinate `c` (in pixels, centres at halves) of a side of `n`, and the weight of the second.
struct Neighbours {
    int a, b;
    float weight;
};
Neighbours Around(float c, int n, bool repeat) {
    // Far outside, floats have no fraction left: any pixel is as good.
    if (!(std::fabs(c) < 1e7f)) c = 0;
    const float low = std::floor(c - 0.5f);
    int a = int(low), b = a + 1;
    const float weight = c - 0.5f - low;
    if (repeat) {
        a = ((a % n) + n) % n;
        b = ((b % n) + n) % n;
    } else {
        a = std::clamp(a, 0, n - 1);
        b = std::clamp(b, 0, n - 1);
    }
    return {a, b, weight};
}

AColor Mix(const AColor& a, const AColor& b, float w) {
    return {a.r + (b.r - a.r) * w, a.g + (b.g - a.g) * w, a.b + (b.b - a.b) * w, a.a + (b.a - a.a) * w};
}

} // namespace

ClassDesc* BitmapMapDesc() {
    return &Desc();
}

BitmapMap::BitmapMap() {
    Desc().MakeAutoParamBlocks(this);
    Refresh();
}

void BitmapMap::Refresh() {
    IParamBlock2* const block = Params();
    if (!block) return;
    coords_.Read(*block, Time());
    repeat_ = block->GetInt(kBitmapRepeat, Time()) != 0;
    const std::string file = block->GetStr(kBitmapFile);
    const bool raw = block->GetInt(kBitmapRaw, Time()) != 0;
    if (file != file_ || raw != raw_) Load(file, raw);
}

void BitmapMap::Load(const std::string& file, bool raw) {
    file_ = file;
    raw_ = raw;
    image_.reset();
    error_.clear();
    if (file.empty()) return;
    try {
        image_ = std::make_shared<const Image>(LoadImage(file, raw));
    } catch (const Error& e) {
        error_ = e.what();
    }
}

AColor BitmapMap::EvalColor(ShadeContext& sc) {
    if (!image_) return AColor(0, 0, 0, 1);
    const Point2 uv = coords_.At(sc);
    // Whole repetitions are taken off before scaling up, which would cost precision.
    const float u = repeat_ ? uv.x - std::floor(uv.x) : uv.x, v = repeat_ ? uv.y - std::floor(uv.y) : uv.y;
    const Image& image = *image_;
    const Neighbours x = Around(u * float(image.Width()), image.Width(), repeat_);
    const Neighbours y = Around((1.0f - v) * float(image.Height()), image.Height(), repeat_);
    return Mix(Mix(image.At(x.a, y.a), image.At(x.b, y.a), x.weight),
               Mix(image.At(x.a, y.b), image.At(x.b, y.b), x.weight), y.weight);
}

RefTargetHandle BitmapMap::Clone(RemapDir& remap) {
    auto* const copy = new BitmapMap;
    // The copy shares the picture that was read.
    copy->image_ = image_;
    copy->file_ = file_;
    copy->raw_ = raw_;
    copy->error_ = error_;
    CopyReferences(*copy, remap);
    copy->Refresh();
    return copy;
}

} // namespace host
