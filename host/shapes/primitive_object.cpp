#include "shapes/primitive_object.h"

#include "shapes/primitives.h"

namespace host {

namespace {

constexpr int kMostSegments = 4096;
constexpr float kLeastSize = 1e-12f;

BlockClassDesc<PlaneObject>& PlaneDesc() {
    static BlockClassDesc<PlaneObject> desc(PlaneObject::kName, "plane", GEOMOBJECT_CLASS_ID, PlaneObject::kClass,
                                            {FloatParam(PlaneObject::kWidth, "width", 1, kLeastSize, kHuge),
                                             FloatParam(PlaneObject::kLength, "length", 1, kLeastSize, kHuge),
                                             IntParam(PlaneObject::kSegments, "segments", 16, 1, kMostSegments)});
    return desc;
}

BlockClassDesc<SphereObject>& SphereDesc() {
    static BlockClassDesc<SphereObject> desc(SphereObject::kName, "sphere", GEOMOBJECT_CLASS_ID, SphereObject::kClass,
                                             {FloatParam(SphereObject::kRadius, "radius", 1, kLeastSize, kHuge),
                                              IntParam(SphereObject::kSegments, "segments", 16, 1, kMostSegments)});
    return desc;
}

BlockClassDesc<BoxObject>& BoxDesc() {
    static BlockClassDesc<BoxObject> desc(BoxObject::kName, "box", GEOMOBJECT_CLASS_ID, BoxObject::kClass,
                                          {PointParam(BoxObject::kSize, "size", {1, 1, 1}),
                                           IntParam(BoxObject::kSegments, "segments", 16, 1, kMostSegments)});
    return desc;
}

} // namespace

const std::vector<ClassDesc*>& PrimitiveClasses() {
    static const std::vector<ClassDesc*> classes{&PlaneDesc(), &SphereDesc(), &BoxDesc()};
    return classes;
}

Interval PrimitiveObject::Make(TimeValue t) {
    mesh = Build(t);
    return ParamValidity(t);
}

Mesh* PrimitiveObject::GetRenderMesh(TimeValue t, INode* node, bool& needDelete) {
    Update(t);
    return TriObject::GetRenderMesh(t, node, needDelete);
}

RefResult PrimitiveObject::NotifyRefChanged(const Interval&, RefTargetHandle, PartID&, RefMessage message) {
    if (message == REFMSG_CHANGE) MakeAnew();
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

} // namespace host
