// Compiled for processors with AVX2, and only called on them.

#include "Base/HUtil/Simd8.h"
#include "WideKernelLoop.h"

namespace RasterDetail {

#ifdef __AVX2__
WideKernel WideKernel8() {
    return HasFloat8() ? RunWideKernel<Float8> : nullptr;
}
#else
WideKernel WideKernel8() {
    return nullptr;
}
#endif

} // namespace RasterDetail
