// Objects of the pipeline: copies, channels, conversion, deformation.

#include "sdk/object.h"

Object* Object::PipelineCopy(TimeValue t) {
    // A class may have a form of its own for being deformed.
    Object* const form = CanConvertToType(defObjectClassID) ? ConvertToType(t, defObjectClassID) : nullptr;
    if (form && form != this) return form;
    RemapDir remap;
    return static_cast<Object*>(Clone(remap));
}

void Object::Deform(Deformer* deformer, bool useSel) {
    if (!IsDeformable()) return;
    for (int i = 0; i < NumPoints(); ++i) {
        const float share = useSel ? PointSelection(i) : 1.0f;
        if (share == 0.0f) continue;
        const Point3 p = GetPoint(i), moved = deformer->Map(i, p);
        SetPoint(i, share == 1.0f ? moved : p + (moved - p) * share);
    }
    PointsWereChanged();
}

Box3 Object::GetDeformBBox(bool useSel) {
    Box3 box;
    for (int i = 0; i < NumPoints(); ++i)
        if (!useSel || PointSelection(i) > 0.0f) box += GetPoint(i);
    return box;
}

Object* TriObject::PipelineCopy(TimeValue) {
    auto* const copy = new TriObject;
    copy->mesh = mesh;
    copy->valid_ = valid_;
    return copy;
}

bool TriObject::CopyChannels(Object* from, ChannelMask mask) {
    auto* const source = dynamic_cast<TriObject*>(from);
    if (!source) return false;
    mesh.CopyChannels(source->mesh, mask);
    return true;
}

bool TriObject::CanConvertToType(Class_ID id) {
    return id == triObjectClassID || id == defObjectClassID || id == mapObjectClassID || id == ClassID();
}

void TriObject::PointsWereChanged() {
    mesh.specNormals.Clear();
    mesh.VerticesMoved();
}

Object* ShapeObject::PipelineCopy(TimeValue) {
    auto* const copy = new ShapeObject;
    copy->shape = shape;
    copy->valid_ = valid_;
    return copy;
}

bool ShapeObject::CopyChannels(Object* from, ChannelMask mask) {
    auto* const source = dynamic_cast<ShapeObject*>(from);
    if (!source) return false;
    if (mask & (TOPO_CHANNEL | GEOM_CHANNEL)) shape = source->shape;
    return true;
}
