#pragma once
// What the scene refers to beside its nodes and effects.

#include "sdk/control.h"
#include "sdk/inode.h"
#include "sdk/mtl.h"
#include "sdk/render.h"

namespace host {

/// The scene's references: renderer, environment map, camera of the viewport, controllers of background and ambient
/// light. A deleted target leaves its slot empty.
class SceneRefs : public ReferenceMaker {
public:
    enum { kRenderer, kEnvironment, kCamera, kBackground, kAmbient, kCount };

    ~SceneRefs() override { DeleteAllRefs(); }
    Renderer* GetRenderer() const { return static_cast<Renderer*>(slots_[kRenderer]); }
    Texmap* GetEnvironment() const { return static_cast<Texmap*>(slots_[kEnvironment]); }
    INode* GetCamera() const { return static_cast<INode*>(slots_[kCamera]); }
    /// The colour of controller `slot` at `t`, or `constant` without one.
    Color ColorAt(int slot, const Color& constant, TimeValue t, Interval& valid) const;
    /// False when the controller gives no point or colour.
    bool SetColorController(int slot, Control* c);

    int NumRefs() override { return kCount; }
    RefTargetHandle GetReference(int i) override { return i >= 0 && i < kCount ? slots_[i] : nullptr; }
    void SetReference(int i, RefTargetHandle target) override {
        if (i >= 0 && i < kCount) slots_[i] = target;
    }

private:
    RefTargetHandle slots_[kCount] = {};
};

} // namespace host
