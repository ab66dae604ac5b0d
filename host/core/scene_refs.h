#pragma once
// What the scene refers to beside its nodes.

#include <vector>

#include "sdk/atmos.h"
#include "sdk/control.h"
#include "sdk/inode.h"
#include "sdk/mtl.h"
#include "sdk/render.h"

namespace host {

/// The scene's references: renderer, environment map, camera of the viewport, controllers of background and ambient
/// light, and the list of atmospheric effects. A deleted target leaves its slot empty; a deleted effect leaves the
/// list.
class SceneRefs : public ReferenceMaker {
public:
    enum { kRenderer, kEnvironment, kCamera, kBackground, kAmbient, kFixedRefs };

    ~SceneRefs() override { DeleteAllRefs(); }
    Renderer* GetRenderer() const { return static_cast<Renderer*>(slots_[kRenderer]); }
    Texmap* GetEnvironment() const { return static_cast<Texmap*>(slots_[kEnvironment]); }
    INode* GetCamera() const { return static_cast<INode*>(slots_[kCamera]); }
    /// The colour of controller `slot` at `t`, or `constant` without one.
    Color ColorAt(int slot, const Color& constant, TimeValue t, Interval& valid) const;
    /// False when the controller gives no point or colour.
    bool SetColorController(int slot, Control* c);

    const std::vector<Atmospheric*>& Atmospherics() const { return atmospherics_; }
    /// An effect that is in the list already is not added again.
    void AddAtmospheric(Atmospheric* a);
    void RemoveAtmospheric(int i);

    int NumRefs() override { return kFixedRefs + int(atmospherics_.size()); }
    RefTargetHandle GetReference(int i) override;
    void SetReference(int i, RefTargetHandle target) override;
    RefResult NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage message) override;

private:
    void HoldSlot(size_t i, bool present);
    void InsertSlot(size_t i);
    void EraseSlot(size_t i);

    RefTargetHandle slots_[kFixedRefs] = {};
    std::vector<Atmospheric*> atmospherics_;
};

} // namespace host
