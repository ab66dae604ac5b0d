#pragma once
// Tells modifier stacks whether a render asks or a view.

namespace host {

/// While one exists, stacks are evaluated for a render. Scopes may nest; any thread may ask.
class RenderEvaluation {
public:
    RenderEvaluation();
    ~RenderEvaluation();
    RenderEvaluation(const RenderEvaluation&) = delete;
    RenderEvaluation& operator=(const RenderEvaluation&) = delete;
    static bool Running();
};

} // namespace host
