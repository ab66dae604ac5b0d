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

// The tangent of a key in the host's unit: the value's change in a tick.
template <class T>
T PerTick(const T& perSecond) {
    return perSecond / float(TIME_TICKSPERSEC);
}

template <class Control, class T>
void SetKeys(Control* control, const Track<T>& track) {
    const TangentType type = track.kind == TrackKind::kStep     ? TangentType::Step
                             : track.kind == TrackKind::kLinear ? TangentType::Linear
                                                                : TangentType::Custom;
    for (const TrackKey<T>& from : track.keys) {
        typename Control::Key key;
        key.time = TicksOf(from.time);
        key.val = from.value;
        key.in = key.out = type;
        if (type == TangentType::Custom) {
            key.intan = PerTick(from.in);
            key.outtan = PerTick(from.out);
        }
        control->SetKey(key);
    }
}

Quat Scaled(const Quat& q, float f) {
    return {q.x * f, q.y * f, q.z * f, q.w * f};
}
Quat Sum(const Quat& a, const Quat& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w};
}

// A rotation and its turning (axis x radians a second) on the file's curve: Hermite by components, then made unit.
struct RotationPoint {
    Quat value;
    Point3 turning;
};
RotationPoint OnCurve(const TrackKey<Quat>& a, const TrackKey<Quat>& b, float u) {
    const float dt = float(b.time - a.time), u2 = u * u, u3 = u2 * u;
    const auto blend = [&](float wa, float la, float wb, float lb) {
        return Sum(Sum(Scaled(a.value, wa), Scaled(a.out, la)), Sum(Scaled(b.value, wb), Scaled(b.in, lb)));
    };
    const Quat q = blend(2 * u3 - 3 * u2 + 1, (u3 - 2 * u2 + u) * dt, 3 * u2 - 2 * u3, (u3 - u2) * dt);
    const Quat d =
        dt > 0 ? Scaled(blend(6 * u2 - 6 * u, (3 * u2 - 4 * u + 1) * dt, 6 * u - 6 * u2, (3 * u2 - 2 * u) * dt), 1 / dt)
               : Quat(0, 0, 0, 0);
    const float length = std::sqrt(DotProd(q, q));
    if (!(length > 1e-6f)) return {Normalize(a.value), {}};
    const Quat unit = Scaled(q, 1 / length);
    // Twice the vector part of conjugate(q) x q', of what does not change the length.
    const Quat turn = Quat(-unit.x, -unit.y, -unit.z, unit.w) * Scaled(d, 1 / length);
    return {unit, {2 * turn.x, 2 * turn.y, 2 * turn.z}};
}

// Rotations by components are no curve of the host's: keys in between keep close to it.
constexpr int kRotationSteps = 4;

Track<Quat> Unit(Track<Quat> track) {
    for (auto& key : track.keys) key.value = Normalize(key.value);
    return track;
}

void SetRotationKeys(RotationControl* control, const Track<Quat>& track) {
    if (track.kind != TrackKind::kCubic || track.keys.size() < 2) {
        Track<Quat> plain = Unit(track);
        const TangentType type = track.kind == TrackKind::kStep ? TangentType::Step : TangentType::Linear;
        for (const auto& key : plain.keys) control->SetKey(TicksOf(key.time), key.value, type);
        return;
    }
    for (size_t i = 0; i + 1 < track.keys.size(); ++i)
        for (int step = 0; step <= kRotationSteps; ++step) {
            const auto &a = track.keys[i], &b = track.keys[i + 1];
            const float u = float(step) / kRotationSteps;
            const RotationPoint at = OnCurve(a, b, u);
            RotationControl::Key key;
            key.time = TicksOf(a.time + (b.time - a.time) * double(u));
            key.val = at.value;
            key.in = key.out = TangentType::Custom;
            key.intan = key.outtan = PerTick(at.turning);
            // Where two curves meet, each has its own tangent.
            const int known = step == 0 && i > 0 ? control->GetKeyIndex(key.time) : -1;
            if (known >= 0) key.intan = control->Keys()[size_t(known)].intan;
            control->SetKey(key);
        }
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
