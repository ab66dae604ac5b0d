#pragma once
// Merging many samples into fragments at once: where most samples of dense hair end. A kernel uses the widest vectors
// of the processor; all make the same bits as merging each sample into its link.

#include "HRendBuf/PackedFragment.h"

/// So many samples at a time.
inline constexpr int kMergeSamples = 16;

/// Merges sample i into fragments[at[i]], the kMergeSamples fragments being different ones; their depths stay. Returns
/// flags of those that may have become opaque.
using MergeKernel = unsigned (*)(PackedFragment<HairFragment>* fragments, const uint32_t* at,
                                 const ImagePoint* const* samples);

/// The kernels of so many lanes, which are null where the processor or the build has none.
MergeKernel MergeKernel4();
MergeKernel MergeKernel8();
MergeKernel MergeKernel16();
/// The fastest one.
MergeKernel BestMergeKernel();
