#pragma once
// Simple shapes with parameters.

#include <vector>

#include "core/block_class.h"
#include "core/block_holder.h"
#include "shapes/made_object.h"

namespace host {

inline constexpr Class_ID PLANE_CLASS_ID{0x3101, 0}, SPHERE_CLASS_ID{0x3102, 0}, BOX_CLASS_ID{0x3103, 0};

/// A mesh that is made from parameters (shapes/primitives.h), made anew when they change.
class PrimitiveObject : public BlockHolder<MadeObject<TriObject>> {
public:
    Interval ObjectValidity(TimeValue t) override { return ParamValidity(t); }
    /// All channels live as long as the parameters stay.
    Interval ChannelValidity(TimeValue t, int) override { return ParamValidity(t); }
    Mesh* GetRenderMesh(TimeValue t, INode* node, bool& needDelete) override;
    RefResult NotifyRefChanged(const Interval& changeInt, RefTargetHandle target, PartID& partID,
                               RefMessage message) override;

protected:
    virtual Mesh Build(TimeValue t) = 0;

private:
    Interval Make(TimeValue t) override;
};

class PlaneObject : public NamedHolder<PlaneObject, PrimitiveObject> {
public:
    static constexpr Class_ID kClass = PLANE_CLASS_ID;
    static constexpr const char* kName = "Plane";
    enum { kWidth, kLength, kSegments };
    PlaneObject();

protected:
    Mesh Build(TimeValue t) override;
};

class SphereObject : public NamedHolder<SphereObject, PrimitiveObject> {
public:
    static constexpr Class_ID kClass = SPHERE_CLASS_ID;
    static constexpr const char* kName = "Sphere";
    enum { kRadius, kSegments };
    SphereObject();

protected:
    Mesh Build(TimeValue t) override;
};

class BoxObject : public NamedHolder<BoxObject, PrimitiveObject> {
public:
    static constexpr Class_ID kClass = BOX_CLASS_ID;
    static constexpr const char* kName = "Box";
    enum { kSize, kSegments };
    BoxObject();

protected:
    Mesh Build(TimeValue t) override;
};

/// Descriptors of all of them.
const std::vector<ClassDesc*>& PrimitiveClasses();

} // namespace host
