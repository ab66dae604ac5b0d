// Keys of transforms, reduction, default controllers.

#include <algorithm>

#include "core/controllers.h"
#include "sdk/hold.h"

namespace host {

namespace {

template <class F>
void ForEachPart(PrsControl& prs, F&& f) {
    for (Control* const c : {prs.Position(), prs.Rotation(), prs.Scale()})
        if (c) f(*c);
}

template <class F>
bool AnyPart(PrsControl& prs, F&& f) {
    const HoldGroup group;
    bool any = false;
    ForEachPart(prs, [&](Control& c) { any = f(c) || any; });
    return any;
}

} // namespace

std::vector<TimeValue> PrsControl::KeyTimes() {
    std::vector<TimeValue> times;
    ForEachPart(*this, [&](Control& c) {
        for (int i = 0; i < c.NumKeys(); ++i) times.push_back(c.GetKeyTime(i));
    });
    std::sort(times.begin(), times.end());
    times.erase(std::unique(times.begin(), times.end()), times.end());
    return times;
}

TimeValue PrsControl::GetKeyTime(int i) {
    const std::vector<TimeValue> times = KeyTimes();
    return i >= 0 && size_t(i) < times.size() ? times[size_t(i)] : 0;
}

int PrsControl::GetKeyIndex(TimeValue t) {
    const std::vector<TimeValue> times = KeyTimes();
    const auto at = std::lower_bound(times.begin(), times.end(), t);
    return at != times.end() && *at == t ? int(at - times.begin()) : -1;
}

void PrsControl::AddNewKey(TimeValue t) {
    ForEachPart(*this, [t](Control& c) { c.AddNewKey(t); });
}

bool PrsControl::DeleteKeyAtTime(TimeValue t) {
    return AnyPart(*this, [t](Control& c) { return c.DeleteKeyAtTime(t); });
}

void PrsControl::DeleteKeys() {
    ForEachPart(*this, [](Control& c) { c.DeleteKeys(); });
}

bool PrsControl::MoveKey(TimeValue from, TimeValue to) {
    return AnyPart(*this, [&](Control& c) { return c.MoveKey(from, to); });
}

bool PrsControl::CopyKey(TimeValue from, TimeValue to) {
    return AnyPart(*this, [&](Control& c) { return c.CopyKey(from, to); });
}

void PrsControl::MapKeys(TimeMap* map) {
    ForEachPart(*this, [map](Control& c) { c.MapKeys(map); });
}

Interval PrsControl::GetTimeRange() {
    Interval all = NEVER;
    ForEachPart(*this, [&](Control& c) {
        const Interval own = c.GetTimeRange();
        all = {std::min(all.Start(), own.Start()), std::max(all.End(), own.End())};
    });
    return all;
}

void PrsControl::EditTimeRange(const Interval& range) {
    ForEachPart(*this, [&](Control& c) { c.EditTimeRange(range); });
}

void PrsControl::SetORT(int type, int which) {
    ForEachPart(*this, [&](Control& c) { c.SetORT(type, which); });
}

int PrsControl::ReduceKeys(const Interval& range, float threshold, TimeValue step, KeyReduceStatus* status) {
    int removed = 0;
    ForEachPart(*this, [&](Control& c) {
        const int own = removed < 0 ? -1 : c.ReduceKeys(range, threshold, step, status);
        removed = own < 0 ? -1 : removed + own;
    });
    return removed;
}

} // namespace host

bool Control::GetNextKeyTime(TimeValue t, bool forward, TimeValue& next) {
    bool found = false;
    for (int i = 0; i < NumKeys(); ++i) {
        const TimeValue key = GetKeyTime(i);
        if (forward ? key <= t : key >= t) continue;
        if (!found || (forward ? key < next : key > next)) next = key;
        found = true;
    }
    return found;
}

bool ApplyKeyReduction(Control* control, const Interval& range, float threshold, TimeValue step,
                       KeyReduceStatus* status) {
    return control && control->ReduceKeys(range, threshold, step, status) >= 0;
}

Control* NewDefaultFloatController() {
    return new host::FloatControl(host::KeyClass::Bezier);
}
Control* NewDefaultPoint3Controller() {
    return new host::Point3Control(host::KeyClass::Bezier);
}
Control* NewDefaultColorController() {
    return NewDefaultPoint3Controller();
}
Control* NewDefaultPoint4Controller() {
    return new host::Point4Control(host::KeyClass::Bezier);
}
Control* NewDefaultPositionController() {
    return new host::PositionControl(host::KeyClass::Bezier);
}
Control* NewDefaultRotationController() {
    return new host::RotationControl(host::KeyClass::Bezier);
}
Control* NewDefaultScaleController() {
    return new host::ScaleControl(host::KeyClass::Bezier);
}
Control* NewDefaultMatrix3Controller() {
    auto* const prs = new host::PrsControl;
    for (Control* const part : {prs->Position(), prs->Rotation(), prs->Scale()})
        static_cast<host::KeyedControl*>(part)->SetKeyClass(host::KeyClass::Bezier);
    return prs;
}
