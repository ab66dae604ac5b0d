// Compiled for processors with AVX2, and only called on them.

#include "Base/HUtil/Simd8.h"
#include "MergeKernelLoop.h"

#ifdef __AVX2__
MergeKernel MergeKernel8() {
    return HasFloat8() ? RunMergeKernel<Float8> : nullptr;
}
#else
MergeKernel MergeKernel8() {
    return nullptr;
}
#endif
