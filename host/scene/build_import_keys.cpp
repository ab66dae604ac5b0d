// Places and keys of imported nodes.

#include <algorithm>
#include <cmath>

#include "core/controllers.h"
#include "scene/build_import.h"

namespace host {

namespace {

TimeValue TicksOf(double seconds) {
    return TimeValue(std::lround(seconds * TIME_TICKSPERSEC));
}

template <class Control, class T>
void SetKeys(Control* control, const Track<T>& track) {
    const KeyKind kind = track.kind == TrackKind::kStep ? KeyKind::Constant : KeyKind::Linear;
    for (const TrackKey<T>& key : track.keys) control->SetKey(TicksOf(key.time), key.value, kind);
}

void SetRotationKeys(RotationControl* control, Track<Quat> track) {
    for (auto& key : track.keys) key.value = Normalize(key.value);
    SetKeys(control, track);
}

bool HasKeys(const ImportedNode& node) {
    return !node.positions.IsEmpty() || !node.rotations.IsEmpty() || !node.scales.IsEmpty();
}

} // namespace

void SetImportedPlace(LoadContext& context, Node* node, const ImportedNode& from) {
    const Matrix3 rest = LocalMatrix(from);
    if (!HasKeys(from)) {
        node->GetTMController()->SetValue(0, &rest);
        return;
    }
    PrsControl* const tm = TransformOf(context, node);
    AffineParts parts{from.position, from.rotation, from.scale};
    if (from.matrix) parts = Decompose(rest);
    tm->Position()->SetValue(0, &parts.translation);
    tm->Rotation()->SetValue(0, &parts.rotation);
    tm->Scale()->SetValue(0, &parts.scale);
    SetKeys(static_cast<PositionControl*>(tm->Position()), from.positions);
    SetRotationKeys(static_cast<RotationControl*>(tm->Rotation()), from.rotations);
    SetKeys(static_cast<ScaleControl*>(tm->Scale()), from.scales);
}

Control* MakeWeightControl(LoadContext& context, const Track<float>& track) {
    auto* const control = context.core.Adopt(new FloatControl);
    SetKeys(control, track);
    return control;
}

} // namespace host
