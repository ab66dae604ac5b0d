#include "core/render_evaluation.h"

#include <atomic>

namespace host {

namespace {
std::atomic<int> running{0};
}

RenderEvaluation::RenderEvaluation() {
    running.fetch_add(1, std::memory_order_relaxed);
}

RenderEvaluation::~RenderEvaluation() {
    running.fetch_sub(1, std::memory_order_relaxed);
}

bool RenderEvaluation::Running() {
    return running.load(std::memory_order_relaxed) > 0;
}

} // namespace host
