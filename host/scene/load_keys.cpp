// [[keys]].

#include <algorithm>
#include <numbers>

#include "core/controllers.h"
#include "core/euler.h"
#include "scene/load_context.h"

namespace host {

namespace {

enum Interpolation { kLinear, kBezier, kStep };
constexpr OutOfRangeType kBeyond[] = {ORT_CONSTANT, ORT_CYCLE, ORT_LOOP, ORT_OSCILLATE, ORT_LINEAR};

// A key's numbers behind its frame, and behind them the tangents' where it has own ones.
struct Row {
    TimeValue time;
    const float* value;
    const float *in = nullptr, *out = nullptr;
};

// What a table says of all its keys.
class KeySettings {
public:
    KeySettings(LoadContext& context, const SectionReader& reader) : context_(context), reader_(reader) {
        interpolation_ = Interpolation(std::min(reader.Choice("interpolation"), int(kStep))); // kStep has two words
        constexpr TangentType kTypes[] = {TangentType::Linear, TangentType::Auto, TangentType::Step};
        type_ = kTypes[interpolation_];
        if (interpolation_ == kBezier && reader.Choice("tangents") == 1) type_ = TangentType::Smooth;
    }

    /// Makes the keys of the list `key`, checked: a frame, `width` numbers, and in Bezier lists perhaps twice as many
    /// for the tangents. False when there is no such list.
    template <class Control, class ValueOf, class TangentOf>
    bool Make(Control& control, const char* key, size_t width, ValueOf&& valueOf, TangentOf&& tangentOf) const {
        const std::vector<std::vector<float>> rows = reader_.Rows(key);
        if (rows.empty()) return false;
        if (interpolation_ == kBezier) control.SetKeyClass(KeyClass::Bezier);
        for (const std::vector<float>& numbers : rows) {
            const Row row = Check(numbers, key, width);
            typename Control::Key made;
            made.time = row.time;
            made.in = made.out = row.in ? TangentType::Custom : type_;
            made.val = valueOf(row.value);
            if (row.in) made.intan = tangentOf(row.in), made.outtan = tangentOf(row.out);
            control.SetKey(made);
        }
        SetEnds(control);
        return true;
    }

private:
    Row Check(const std::vector<float>& numbers, const char* key, size_t width) const {
        const bool tangents = interpolation_ == kBezier && numbers.size() == 3 * width + 1;
        if (numbers.size() != width + 1 && !tangents)
            reader_.FailAtKey(
                key, "a key of " + Quoted(key) + " has " + std::to_string(numbers.size()) + " numbers, expected " +
                         std::to_string(width + 1) + " with the frame first" +
                         (interpolation_ == kBezier ? ", or " + std::to_string(3 * width + 1) + " with tangents" : ""));
        Row row{context_.At(reader_.LineOf(key), [&] { return context_.Ticks(double(numbers[0])); }),
                numbers.data() + 1};
        if (tangents) row.in = row.value + width, row.out = row.in + width;
        return row;
    }
    void SetEnds(Control& control) const {
        const OutOfRangeType after = kBeyond[reader_.Choice("out_of_range")];
        control.SetORT(after, ORT_AFTER);
        control.SetORT(reader_.Has("before_range") ? kBeyond[reader_.Choice("before_range")] : after, ORT_BEFORE);
        if (!reader_.Has("range")) return;
        const auto range = reader_.Pair("range");
        const auto ticks = [&](float frame) {
            return context_.At(reader_.LineOf("range"), [&] { return context_.Ticks(double(frame)); });
        };
        if (!(range[0] < range[1])) reader_.FailAtKey("range", "'range' is empty, expected its later frame second");
        control.EditTimeRange({ticks(range[0]), ticks(range[1])});
    }

    LoadContext& context_;
    const SectionReader& reader_;
    Interpolation interpolation_;
    TangentType type_;
};

Point3 PointAt(const float* numbers) {
    return {numbers[0], numbers[1], numbers[2]};
}

template <class C>
void MakePartKeys(const KeySettings& settings, Control* part, const char* key, float perFrame) {
    if (auto* const control = dynamic_cast<C*>(part))
        settings.Make(*control, key, 3, PointAt, [perFrame](const float* n) { return PointAt(n) * perFrame; });
}

void LoadNodeKeys(LoadContext& context, const SectionReader& reader) {
    INode* const node = context.At(reader.LineOf("node"), [&] { return context.NodeNamed(reader.Required("node")); });
    PrsControl* const tm = TransformOf(context, node);
    const KeySettings settings(context, reader);
    const float perFrame = 1.0f / float(context.core.GetTicksPerFrame());
    MakePartKeys<PositionControl>(settings, tm->Position(), "position", perFrame);
    MakePartKeys<ScaleControl>(settings, tm->Scale(), "scale", perFrame);
    auto* const rotation = dynamic_cast<RotationControl*>(tm->Rotation());
    if (!rotation) return;
    // Scene files turn counter-clockwise, quaternions the other way.
    const float radians = -float(std::numbers::pi / 180) * perFrame;
    settings.Make(
        *rotation, "rotation", 3, [](const float* n) { return QuatFromMatrix(EulerMatrix(PointAt(n))); },
        [radians](const float* n) { return PointAt(n) * radians; });
}

template <class C, class ValueOf>
void MakeParamKeys(LoadContext& context, const SectionReader& reader, const ParamPlace& place, size_t width,
                   ValueOf&& valueOf) {
    auto* const control = context.core.Adopt(new C);
    const float perFrame = 1.0f / float(context.core.GetTicksPerFrame());
    const KeySettings settings(context, reader);
    if (!settings.Make(*control, "values", width, valueOf, [&](const float* n) { return valueOf(n) * perFrame; }))
        reader.Fail("no 'values', expected keys of the parameter");
    if (!place.block->SetController(place.def->id, control))
        reader.FailAtKey("parameter",
                         Quoted(place.def->intName) + " cannot change over time, expected another parameter");
}

void LoadParamKeys(LoadContext& context, const SectionReader& reader) {
    const std::string object = reader.Required("object"), param = reader.Required("parameter");
    ReferenceTarget* const target =
        context.At(reader.LineOf("object"), [&] { return FindObject(context.scene, object); });
    const ParamPlace place = context.At(reader.LineOf("parameter"), [&] { return FindParam(target, object, param); });
    if (place.def->type == TYPE_RGBA || place.def->type == TYPE_POINT3)
        return MakeParamKeys<Point3Control>(context, reader, place, 3, PointAt);
    MakeParamKeys<FloatControl>(context, reader, place, 1, [](const float* n) { return *n; });
}

} // namespace

void LoadKeys(LoadContext& context) {
    context.ForEach("keys", "keys", [&](const SectionReader& reader) {
        const bool node = reader.Has("node"), object = reader.Has("object");
        if (node == object) reader.Fail("expected either 'node' or 'object' in [[keys]]");
        if (node) {
            LoadNodeKeys(context, reader);
        } else {
            LoadParamKeys(context, reader);
        }
    });
}

} // namespace host
