// Compiled for processors with AVX-512, and only called on them.

#include "Base/HUtil/Simd16.h"
#include "MergeKernelLoop.h"

#ifdef __AVX512F__
MergeKernel MergeKernel16() {
    return HasFloat16() ? RunMergeKernel<Float16> : nullptr;
}
#else
MergeKernel MergeKernel16() {
    return nullptr;
}
#endif
