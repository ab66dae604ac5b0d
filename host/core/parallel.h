#pragma once
// Work on ranges, on several threads when it is large.

#include <algorithm>
#include <cstddef>
#include <thread>
#include <vector>

namespace host {

/// Calls `work(begin, end)` for parts of 0..count that together cover it, at the same time from at most `threads`
/// threads (0: as many as there are processors). A part has at least `least` items. `work` must not throw.
template <class Work>
void ParallelRanges(size_t count, size_t least, int threads, Work&& work) {
    const size_t wanted = threads > 0 ? size_t(threads) : std::max(1u, std::thread::hardware_concurrency());
    const size_t parts = std::max<size_t>(1, std::min(wanted, count / std::max<size_t>(least, 1)));
    std::vector<std::thread> others;
    others.reserve(parts);
    for (size_t i = 1; i < parts; ++i)
        others.emplace_back([&, i] { work(count * i / parts, count * (i + 1) / parts); });
    work(size_t(0), count / parts);
    for (std::thread& t : others) t.join();
}

} // namespace host
