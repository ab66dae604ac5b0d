#pragma once
// The bitmap map.

#include <memory>
#include <string>

#include "image/load_image.h"
#include "materials/block_owner.h"
#include "materials/map_coords.h"
#include "sdk/mtl.h"

namespace host {

// Parameters of the bitmap map, beside MapCoordParam.
enum BitmapParam : ParamID {
    kBitmapFile,
    kBitmapRaw,    ///< numbers as they stand in the file: no decoding of sRGB
    kBitmapRepeat, ///< the picture repeats; else its border goes on
};

/// A picture file as a map: bilinear between pixel centres, u to the right, v up. The file is read when the parameter
/// changes and kept; evaluation only reads.
class BitmapMap : public BlockOwner<Texmap, 0> {
public:
    BitmapMap();
    ~BitmapMap() override { DeleteAllRefs(); }
    Class_ID ClassID() override { return BMTEX_CLASS_ID; }
    void GetClassName(TSTR& s) override { s = "Bitmap"; }
    /// Black without a picture.
    AColor EvalColor(ShadeContext& sc) override;
    /// Why there is no picture; empty when it was read or no file is named.
    const std::string& LoadError() const { return error_; }
    RefTargetHandle Clone(RemapDir& remap) override;

private:
    void Refresh() override;
    void Load(const std::string& file, bool raw);

    std::shared_ptr<const Image> image_;
    std::string file_, error_;
    bool raw_ = false, repeat_ = true;
    MapCoords coords_;
};

ClassDesc* BitmapMapDesc();

} // namespace host
