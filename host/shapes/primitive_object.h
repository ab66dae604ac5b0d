#pragma once
// Simple shapes with parameters.

#include <mutex>
#include <vector>

#include "core/block_class.h"
#include "core/block_holder.h"
#include "sdk/object.h"

namespace host {

inline constexpr Class_ID PLANE_CLASS_ID{0x3101, 0}, SPHERE_CLASS_ID{0x3102, 0}, BOX_CLASS_ID{0x3103, 0};

/// A mesh that is made from parameters (shapes/primitives.h), made anew when they change. In a stack, modifiers work on
/// a plain mesh.
class PrimitiveObject : public BlockHolder<TriObject> {
public:
    ObjectState Eval(TimeValue t) override;
    Interval ObjectValidity(TimeValue t) override { return ParamValidity(t); }
    /// All channels live as long as the parameters stay.
    Interval ChannelValidity(TimeValue t, int) override { return ParamValidity(t); }
    Object* PipelineCopy(TimeValue t) override;
    Object* ConvertToType(TimeValue t, Class_ID id) override;
    Mesh* GetRenderMesh(TimeValue t, INode* node, bool& needDelete) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override;

protected:
    virtual Mesh Build(TimeValue t) = 0;

private:
    void Update(TimeValue t);

    std::mutex mutex_; ///< nodes that share the object may ask from several threads
    Interval built_ = NEVER;
};

class PlaneObject : public PrimitiveObject {
public:
    enum { kWidth, kLength, kSegments };
    PlaneObject();
    Class_ID ClassID() override { return PLANE_CLASS_ID; }
    const char* GetObjectName() override { return "Plane"; }
    RefTargetHandle Clone(RemapDir& remap) override;

protected:
    Mesh Build(TimeValue t) override;
};

class SphereObject : public PrimitiveObject {
public:
    enum { kRadius, kSegments };
    SphereObject();
    Class_ID ClassID() override { return SPHERE_CLASS_ID; }
    const char* GetObjectName() override { return "Sphere"; }
    RefTargetHandle Clone(RemapDir& remap) override;

protected:
    Mesh Build(TimeValue t) override;
};

class BoxObject : public PrimitiveObject {
public:
    enum { kSize, kSegments };
    BoxObject();
    Class_ID ClassID() override { return BOX_CLASS_ID; }
    const char* GetObjectName() override { return "Box"; }
    RefTargetHandle Clone(RemapDir& remap) override;

protected:
    Mesh Build(TimeValue t) override;
};

/// Descriptors of all of them.
const std::vector<ClassDesc*>& PrimitiveClasses();

} // namespace host
