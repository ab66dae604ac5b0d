// The parameters that the object holds itself: its face selection and the update switch.

#include "Base/ParamBlocks.h"

namespace {

constexpr int kLastFaceSelType = 4;

class FaceSelectionAccessor : public PBAccessor {
public:
    // The values hold at all times: `valid` is not narrowed.
    void Get(PB2Value& v, ReferenceMaker* owner, ParamID id, int, TimeValue, Interval&) override {
        IFaceSelectionOwner* object = dynamic_cast<IFaceSelectionOwner*>(owner);
        if (!object) return;
        const FaceSelection& selection = object->GetFaceSelection();
        switch (id) {
        case pid_updateOnChange:
            v.i = object->GetUpdateOnChange();
            break;
        case pid_faceSel_type:
            v.i = selection.type;
            break;
        case pid_faceSel_mtlID:
            v.i = selection.mtlId;
            break;
        case pid_faceSel_mtlIDs:
            v.s = selection.mtlIds;
            break;
        case pid_faceSel_namedSet:
            v.s = selection.namedSet;
            break;
        default:
            break;
        }
    }

    void Set(PB2Value& v, ReferenceMaker* owner, ParamID id, int, TimeValue) override {
        IFaceSelectionOwner* object = dynamic_cast<IFaceSelectionOwner*>(owner);
        if (object && Store(*object, id, v)) object->ParametersChanged();
    }

private:
    /// False when the value is not taken.
    static bool Store(IFaceSelectionOwner& object, ParamID id, const PB2Value& v) {
        FaceSelection& selection = object.GetFaceSelection();
        switch (id) {
        case pid_updateOnChange:
            object.GetUpdateOnChange() = v.i != 0;
            return true;
        case pid_faceSel_type:
            if (v.i < 0 || v.i > kLastFaceSelType) return false;
            selection.type = v.i;
            return true;
        case pid_faceSel_mtlID:
            selection.mtlId = v.i;
            return true;
        case pid_faceSel_mtlIDs:
            selection.mtlIds = v.s;
            return true;
        case pid_faceSel_namedSet:
            selection.namedSet = v.s;
            return true;
        default:
            return false;
        }
    }
};

} // namespace

PBAccessor* GetFaceSelectionAccessor() {
    static FaceSelectionAccessor accessor;
    return &accessor;
}
