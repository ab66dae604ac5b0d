#include "scene/key_report.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <set>

#include "core/controllers.h"
#include "core/error.h"
#include "core/euler.h"
#include "scene/key_check.h"

namespace host {

namespace {

class TrackWalk {
public:
    void Walk(Animatable* anim, const std::string& place) {
        if (!anim || !seen_.insert(anim).second) return;
        auto* const control = dynamic_cast<Control*>(anim);
        if (control && GetKeyControlInterface(control)) {
            if (control->NumKeys() > 0) tracks.push_back({place, control});
            return;
        }
        for (int i = 0; i < anim->NumSubs(); ++i) {
            const TSTR name = anim->SubAnimName(i);
            Walk(anim->SubAnim(i), name.empty() ? place : place + ", " + name);
        }
    }
    std::vector<KeyedTrack> tracks;

private:
    std::set<Animatable*> seen_;
};

const char* TangentText(TangentType type) {
    constexpr const char* kTexts[] = {"smooth", "linear", "step", "custom", "auto"};
    return kTexts[size_t(type)];
}

const char* BeyondText(int type) {
    constexpr const char* kTexts[] = {"constant", "cycle", "loop", "pingpong", "linear"};
    return kTexts[size_t(type - ORT_CONSTANT)];
}

template <class T>
std::string Numbers(const T& v, float factor = 1) {
    std::string text;
    for (int i = 0; i < kComponents<T>; ++i) text += (i ? ", " : "") + NumberText(double(Component(v, i) * factor));
    return text;
}

struct KeyRow {
    std::string frame, value, in, out;
};

template <class C, class ValueText>
bool AddRows(Control* control, int ticksPerFrame, float tangentFactor, ValueText&& valueText,
             std::vector<KeyRow>& rows) {
    auto* const keyed = dynamic_cast<C*>(control);
    if (!keyed) return false;
    const auto side = [&](TangentType type, const auto& tangent) {
        const float perFrame = float(ticksPerFrame) * tangentFactor;
        return type == TangentType::Custom ? Numbers(tangent, perFrame) : std::string(TangentText(type));
    };
    for (const auto& key : keyed->Keys())
        rows.push_back({NumberText(double(key.time) / ticksPerFrame), valueText(key.val), side(key.in, key.intan),
                        side(key.out, key.outtan)});
    return true;
}

std::vector<KeyRow> RowsOf(Control* c, int ticksPerFrame) {
    std::vector<KeyRow> rows;
    const auto plain = [](const auto& v) { return Numbers(v); };
    const auto turned = [](const Quat& q) {
        Point3 angles = EulerDegrees(q.ToMatrix());
        // Nobody set more digits than these.
        for (int i = 0; i < 3; ++i) angles[i] = std::round(angles[i] * 1e4f) / 1e4f + 0.0f;
        return Numbers(angles);
    };
    if (!AddRows<FloatControl>(c, ticksPerFrame, 1, plain, rows) &&
        !AddRows<Point3Control>(c, ticksPerFrame, 1, plain, rows) &&
        !AddRows<PositionControl>(c, ticksPerFrame, 1, plain, rows) &&
        !AddRows<ScaleControl>(c, ticksPerFrame, 1, plain, rows) &&
        !AddRows<Point4Control>(c, ticksPerFrame, 1, plain, rows))
        AddRows<RotationControl>(c, ticksPerFrame, -float(180 / std::numbers::pi), turned, rows);
    return rows;
}

} // namespace

std::vector<KeyedTrack> ListKeyedTracks(Core& core, const LoadedScene& scene) {
    TrackWalk walk;
    for (Node* const node : core.AllNodes()) walk.Walk(node, node->GetName());
    for (const auto& [name, object] : scene.objects) walk.Walk(object, name);
    return walk.tracks;
}

std::string KeyTableText(const KeyedTrack& track, int ticksPerFrame) {
    std::vector<KeyRow> rows{{"frame", "value", "in", "out"}};
    for (KeyRow& row : RowsOf(track.control, ticksPerFrame)) rows.push_back(std::move(row));
    TSTR name;
    track.control->GetClassName(name);
    const Interval range = track.control->GetTimeRange();
    std::string text =
        OneLine(track.place) + ": " + name + ", frames " + NumberText(double(range.Start()) / ticksPerFrame) + " to " +
        NumberText(double(range.End()) / ticksPerFrame) + ", " + BeyondText(track.control->GetORT(ORT_BEFORE)) +
        " before, " + BeyondText(track.control->GetORT(ORT_AFTER)) + " after\n";
    size_t widths[3] = {};
    for (const KeyRow& r : rows) {
        widths[0] = std::max(widths[0], r.frame.size());
        widths[1] = std::max(widths[1], r.value.size());
        widths[2] = std::max(widths[2], r.in.size());
    }
    for (const KeyRow& r : rows) {
        char line[512];
        std::snprintf(line, sizeof line, "  %*s  %-*s  %-*s  %s\n", int(widths[0]), r.frame.c_str(), int(widths[1]),
                      r.value.c_str(), int(widths[2]), r.in.c_str(), r.out.c_str());
        text += line;
    }
    return text;
}

} // namespace host
