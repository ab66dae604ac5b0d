#include "render/effects/negative_filter.h"

#include <cstring>

#include "core/host_classes.h"
#include "render/effects/host_effect.h"

namespace host {

namespace {

bool Stopped(IFilterWindow& window) {
    int stopped = 0;
    window.SendMessage(FLT_CHECKABORT, 0, reinterpret_cast<intptr_t>(&stopped));
    return stopped != 0;
}

} // namespace

ClassDesc* NegativeFilterDesc() {
    static SimpleClassDesc<NegativeFilter> desc("Negative", FLT_CLASS_ID, NegativeFilter::kClassId);
    return &desc;
}

bool NegativeFilter::SaveConfigure(void* data) {
    std::memcpy(data, &percent_, sizeof percent_);
    return true;
}

bool NegativeFilter::LoadConfigure(const void* data) {
    int32_t percent = 0;
    std::memcpy(&percent, data, sizeof percent);
    if (percent < 0 || percent > 100) return false;
    percent_ = percent;
    return true;
}

bool NegativeFilter::Render(Bitmap* bitmap, IFilterWindow* window) {
    const float share = float(percent_) / 100.0f, factor = 1.0f - 2.0f * share;
    const Color f(factor, factor, factor), offset(share, share, share);
    window->SendMessage(FLT_TEXT, 0, reinterpret_cast<intptr_t>("Negative"));
    for (int y = 0; y < bitmap->Height() && !Stopped(*window); ++y) {
        window->SendMessage(FLT_PROGRESS, y, bitmap->Height());
        for (int x = 0; x < bitmap->Width(); ++x) {
            EffectPixel p = PixelAt(*bitmap, x, y);
            ScaleAndAdd(p, f, offset);
            PutPixel(*bitmap, x, y, p);
        }
    }
    return true;
}

} // namespace host
