#include "MergeKernelLoop.h"

MergeKernel MergeKernel4() {
    return RunMergeKernel<Float4>;
}

MergeKernel BestMergeKernel() {
    static const MergeKernel best = MergeKernel16()  ? MergeKernel16()
                                    : MergeKernel8() ? MergeKernel8()
                                                     : MergeKernel4();
    return best;
}
