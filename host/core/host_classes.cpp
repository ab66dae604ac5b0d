#include "core/host_classes.h"

#include <array>

#include "core/camera.h"
#include "core/controllers.h"
#include "core/edit_tri_object.h"
#include "core/light.h"
#include "sdk/object.h"

namespace host {

namespace {

/// A keyed controller with a class of keys.
template <class T>
class KeyClassDesc : public SimpleClassDesc<T> {
public:
    explicit KeyClassDesc(KeyClass keyClass)
        : SimpleClassDesc<T>("", T().SuperClassID(), T(keyClass).ClassID()), keyClass_(keyClass) {
        T(keyClass).GetClassName(text_);
    }
    void* Create(bool) override { return new T(keyClass_); }
    const char* ClassName() override { return text_.c_str(); }

private:
    KeyClass keyClass_;
    TSTR text_;
};

template <class T>
void AddKeyClasses(std::vector<ClassDesc*>& classes) {
    static std::array<KeyClassDesc<T>, 2> descs{KeyClassDesc<T>(KeyClass::Linear), KeyClassDesc<T>(KeyClass::Bezier)};
    for (ClassDesc& d : descs) classes.push_back(&d);
}

std::vector<ClassDesc*> MakeList() {
    static SimpleClassDesc<TriObject> triObject("Triangle Mesh", GEOMOBJECT_CLASS_ID, TRIOBJ_CLASS_ID);
    static SimpleClassDesc<EditTriObject> editMesh("Editable Mesh", GEOMOBJECT_CLASS_ID, EDITTRIOBJ_CLASS_ID);
    static SimpleClassDesc<ShapeObject> shape("Editable Spline", SHAPE_CLASS_ID, splineShapeClassID);
    static SimpleClassDesc<MatrixControl> matrix("Matrix", CTRL_MATRIX3_CLASS_ID, MATRIX_CLASS_ID);
    static SimpleClassDesc<PrsControl> prs("Position/Rotation/Scale", CTRL_MATRIX3_CLASS_ID, PRS_CLASS_ID);
    std::vector<ClassDesc*> classes{&triObject, &editMesh, &shape};
    AddKeyClasses<FloatControl>(classes);
    AddKeyClasses<Point3Control>(classes);
    AddKeyClasses<Point4Control>(classes);
    AddKeyClasses<PositionControl>(classes);
    AddKeyClasses<RotationControl>(classes);
    AddKeyClasses<ScaleControl>(classes);
    classes.insert(classes.end(), {&matrix, &prs, TargetCameraDesc(), LightDescOf(OMNI_LGT), LightDescOf(SPOT_LGT),
                                   LightDescOf(DIRECT_LGT)});
    return classes;
}

} // namespace

const std::vector<ClassDesc*>& HostClasses() {
    static const std::vector<ClassDesc*> classes = MakeList();
    return classes;
}

} // namespace host
