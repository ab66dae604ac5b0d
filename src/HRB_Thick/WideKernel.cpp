#include "WideKernelLoop.h"

namespace RasterDetail {

WideKernel WideKernel4() {
    return RunWideKernel<Float4>;
}

WideKernel BestWideKernel() {
    static const WideKernel best = WideKernel16() ? WideKernel16() : WideKernel8() ? WideKernel8() : WideKernel4();
    return best;
}

} // namespace RasterDetail
