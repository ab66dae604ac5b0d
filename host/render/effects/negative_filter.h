#pragma once
// The negative: an image filter.

#include "sdk/filter.h"
#include "sdk/plugapi.h"

namespace host {

/// Mixes the picture with its negative, 1 - colour. Its configuration is one int32: percent of the negative, 0..100.
class NegativeFilter : public ImageFilter {
public:
    static constexpr Class_ID kClassId{0x5b1c22f5, 0x4a0e6d37};
    bool Render(Bitmap* bitmap, IFilterWindow* window) override;
    int EvaluateConfigure() override { return sizeof(int32_t); }
    bool SaveConfigure(void* data) override;
    bool LoadConfigure(const void* data) override;

private:
    int32_t percent_ = 100;
};

ClassDesc* NegativeFilterDesc();

} // namespace host
