#include "shapes/primitive_object.h"

#include "shapes/primitives.h"

namespace host {

namespace {

constexpr int kMostSegments = 4096;
constexpr float kLeastSize = 1e-12f;

BlockClassDesc<PlaneObject>& PlaneDesc() {
    static BlockClassDesc<PlaneObject> desc("Plane", "plane", GEOMOBJECT_CLASS_ID, PLANE_CLASS_ID,
                                            {FloatParam(PlaneObject::kWidth, "width", 1, kLeastSize, kHuge),
                                             FloatParam(PlaneObject::kLength, "length", 1, kLeastSize, kHuge),
                                             IntParam(PlaneObject::kSegments, "segments", 16, 1, kMostSegments)});
    return desc;
}

BlockClassDesc<SphereObject>& SphereDesc() {
    static BlockClassDesc<SphereObject> desc("Sphere", "sphere", GEOMOBJECT_CLASS_ID, SPHERE_CLASS_ID,
                                             {FloatParam(SphereObject::kRadius, "radius", 1, kLeastSize, kHuge),
                                              IntParam(SphereObject::kSegments, "segments", 16, 1, kMostSegments)});
    return desc;
}

BlockClassDesc<BoxObject>& BoxDesc() {
    static BlockClassDesc<BoxObject> desc("Box", "box", GEOMOBJECT_CLASS_ID, BOX_CLASS_ID,
                                          {PointParam(BoxObject::kSize, "size", {1, 1, 1}),
                                           IntParam(BoxObject::kSegments, "segments", 16, 1, kMostSegments)});
    return desc;
}

} // namespace

const std::vector<ClassDesc*>& PrimitiveClasses() {
    static const std::vector<ClassDesc*> classes{&PlaneDesc(), &SphereDesc(), &BoxDesc()};
    return classes;
}

void PrimitiveObject::Update(TimeValue t) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (built_.InInterval(t)) return;
    mesh = Build(t);
    built_ = ParamValidity(t);
}

ObjectState PrimitiveObject::Eval(TimeValue t) {
    Update(t);
    return {this, ParamValidity(t)};
}

Object* PrimitiveObject::PipelineCopy(TimeValue t) {
    Update(t);
    auto* const copy = new TriObject;
    copy->mesh = mesh;
    return copy;
}

Object* PrimitiveObject::ConvertToType(TimeValue t, Class_ID id) {
    Update(t);
    return TriObject::ConvertToType(t, id);
}

Mesh* PrimitiveObject::GetRenderMesh(TimeValue t, INode* node, bool& needDelete) {
    Update(t);
    return TriObject::GetRenderMesh(t, node, needDelete);
}

RefResult PrimitiveObject::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage message) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (message == REFMSG_CHANGE) built_ = NEVER;
    return REF_SUCCEED;
}

PlaneObject::PlaneObject() {
    PlaneDesc().MakeAutoParamBlocks(this);
}

Mesh PlaneObject::Build(TimeValue t) {
    return MakePlane(Float(kWidth, t), Float(kLength, t), Int(kSegments, t));
}

SphereObject::SphereObject() {
    SphereDesc().MakeAutoParamBlocks(this);
}

Mesh SphereObject::Build(TimeValue t) {
    return MakeSphere(Float(kRadius, t), Int(kSegments, t));
}

BoxObject::BoxObject() {
    BoxDesc().MakeAutoParamBlocks(this);
}

Mesh BoxObject::Build(TimeValue t) {
    return MakeBox(Point(kSize, t), Int(kSegments, t));
}

RefTargetHandle PlaneObject::Clone(RemapDir& remap) {
    auto* const copy = new PlaneObject;
    CopyBlock(*copy, remap);
    return copy;
}

RefTargetHandle SphereObject::Clone(RemapDir& remap) {
    auto* const copy = new SphereObject;
    CopyBlock(*copy, remap);
    return copy;
}

RefTargetHandle BoxObject::Clone(RemapDir& remap) {
    auto* const copy = new BoxObject;
    CopyBlock(*copy, remap);
    return copy;
}

} // namespace host
