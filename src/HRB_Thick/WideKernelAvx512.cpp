// Compiled for processors with AVX-512, and only called on them.

#include "Base/HUtil/Simd16.h"
#include "WideKernelLoop.h"

namespace RasterDetail {

#ifdef __AVX512F__
WideKernel WideKernel16() {
    return HasFloat16() ? RunWideKernel<Float16> : nullptr;
}
#else
WideKernel WideKernel16() {
    return nullptr;
}
#endif

} // namespace RasterDetail
