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

// What cubic curves are made of.
float Scaled(float v, float f) {
    return v * f;
}
Point3 Scaled(const Point3& v, float f) {
    return v * f;
}
Quat Scaled(const Quat& q, float f) {
    return {q.x * f, q.y * f, q.z * f, q.w * f};
}
float Sum(float a, float b) {
    return a + b;
}
Point3 Sum(const Point3& a, const Point3& b) {
    return a + b;
}
Quat Sum(const Quat& a, const Quat& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w};
}

// Keys of the host go straight: so many of them stand for a piece of a cubic curve.
constexpr int kPieces = 16;

template <class T>
Track<T> Straightened(const Track<T>& track) {
    if (track.kind != TrackKind::kCubic) return track;
    Track<T> out;
    for (size_t i = 0; i < track.keys.size(); ++i) {
        const TrackKey<T>& a = track.keys[i];
        out.keys.push_back({a.time, a.value, {}, {}});
        if (i + 1 == track.keys.size()) break;
        const TrackKey<T>& b = track.keys[i + 1];
        const float dt = float(b.time - a.time);
        for (int k = 1; k < kPieces; ++k) {
            const float u = float(k) / kPieces, u2 = u * u, u3 = u2 * u;
            const T leave = Sum(Scaled(a.value, 2 * u3 - 3 * u2 + 1), Scaled(a.out, (u3 - 2 * u2 + u) * dt));
            const T come = Sum(Scaled(b.value, 3 * u2 - 2 * u3), Scaled(b.in, (u3 - u2) * dt));
            out.keys.push_back({a.time + (b.time - a.time) * double(u), Sum(leave, come), {}, {}});
        }
    }
    return out;
}

template <class Control, class T>
void SetKeys(Control* control, const Track<T>& track) {
    const KeyKind kind = track.kind == TrackKind::kStep ? KeyKind::Constant : KeyKind::Linear;
    for (const TrackKey<T>& key : Straightened(track).keys) control->SetKey(TicksOf(key.time), key.value, kind);
}

void SetRotationKeys(RotationControl* control, const Track<Quat>& track) {
    Track<Quat> unit = Straightened(track);
    for (auto& key : unit.keys) key.value = Normalize(key.value);
    SetKeys(control, unit);
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
