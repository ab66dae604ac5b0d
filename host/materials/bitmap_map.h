#pragma once
// The bitmap map.

#include <memory>
#include <string>

#include "image/load_image.h"
#include "materials/host_map.h"
#include "materials/image_pyramid.h"
#include "materials/summed_area.h"

namespace host {

// Parameters of the bitmap map, beside MapCoordParam and MapOutputParam.
enum BitmapParam : ParamID {
    kBitmapFile,
    kBitmapRaw,    ///< numbers as they stand in the file: no decoding of sRGB
    kBitmapWrapU,  ///< MapWrap
    kBitmapWrapV,  ///< MapWrap
    kBitmapFilter, ///< BitmapFilter
    kBitmapMono,   ///< BitmapMono
};

/// What of a picture counts where one number is wanted.
enum BitmapMono { kMonoIntensity, kMonoAlpha };

/// What regions larger than a pixel of the picture look like.
enum BitmapFilter {
    kFilterNone,       ///< as their middle
    kFilterPyramid,    ///< from the picture in halves, quarters ...: as wide as it is high
    kFilterSummedArea, ///< the mean of the rectangle: more exact, and memory for 32 bytes a pixel
};

/// A picture file as a map: bilinear between pixel centres, u to the right, v up. The file is read when the parameter
/// changes and kept; evaluation only reads.
class BitmapMap : public HostMap {
public:
    BitmapMap();
    ~BitmapMap() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return BMTEX_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Bitmap"; }
    /// Why there is no picture; empty when it was read or no file is named.
    const std::string& LoadError() const { return error_; }
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    /// Black without a picture.
    AColor Evaluate(ShadeContext& sc, const MapPoint& p) const override;
    float Mono(const AColor& c) const override { return alphaCounts_ ? c.a : HostMap::Mono(c); }
    float Grain() const override;
    void ReadParams(IParamBlock2& block) override;
    void Load(const std::string& file, bool raw);
    void PrepareFilter();

    std::shared_ptr<const Image> image_;
    std::shared_ptr<const ImagePyramid> pyramid_;
    std::shared_ptr<const SummedArea> sums_;
    std::string file_, error_;
    bool raw_ = false, alphaCounts_ = false;
    int filter_ = kFilterPyramid;
    ImageWrap wrap_;
};

ClassDesc* BitmapMapDesc();

} // namespace host
