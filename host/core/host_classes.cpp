#include "core/host_classes.h"

#include "core/camera.h"
#include "core/controllers.h"
#include "core/light.h"
#include "sdk/object.h"

namespace host {

const std::vector<ClassDesc*>& HostClasses() {
    static SimpleClassDesc<TriObject> triObject("Triangle Mesh", GEOMOBJECT_CLASS_ID, TRIOBJ_CLASS_ID);
    static SimpleClassDesc<FloatControl> number("Linear Float", CTRL_FLOAT_CLASS_ID, LINEAR_FLOAT_CLASS_ID);
    static SimpleClassDesc<Point3Control> point3("Linear Point3", CTRL_POINT3_CLASS_ID, LINEAR_POINT3_CLASS_ID);
    static SimpleClassDesc<PositionControl> position("Linear Position", CTRL_POSITION_CLASS_ID,
                                                     LINEAR_POSITION_CLASS_ID);
    static SimpleClassDesc<RotationControl> rotation("Linear Rotation", CTRL_ROTATION_CLASS_ID,
                                                     LINEAR_ROTATION_CLASS_ID);
    static SimpleClassDesc<ScaleControl> scale("Linear Scale", CTRL_SCALE_CLASS_ID, LINEAR_SCALE_CLASS_ID);
    static SimpleClassDesc<MatrixControl> matrix("Matrix", CTRL_MATRIX3_CLASS_ID, MATRIX_CLASS_ID);
    static SimpleClassDesc<PrsControl> prs("Position/Rotation/Scale", CTRL_MATRIX3_CLASS_ID, PRS_CLASS_ID);
    static const std::vector<ClassDesc*> classes{&triObject,
                                                 &number,
                                                 &point3,
                                                 &position,
                                                 &rotation,
                                                 &scale,
                                                 &matrix,
                                                 &prs,
                                                 TargetCameraDesc(),
                                                 FreeCameraDesc(),
                                                 LightDescOf(OMNI_LGT),
                                                 LightDescOf(SPOT_LGT),
                                                 LightDescOf(DIRECT_LGT)};
    return classes;
}

} // namespace host
