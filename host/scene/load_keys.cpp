// [[keys]].

#include "core/controllers.h"
#include "core/euler.h"
#include "scene/load_context.h"

namespace host {

namespace {

// The keys of one list, checked: a frame and `width` numbers each, one key a frame at most.
class KeyRows {
public:
    KeyRows(LoadContext& context, const SectionReader& reader, const char* key, size_t width)
        : rows_(reader.Rows(key)), context_(context), line_(reader.LineOf(key)) {
        for (const std::vector<float>& row : rows_)
            if (row.size() != width + 1)
                reader.FailAtKey(key, "a key of " + Quoted(key) + " has " + std::to_string(row.size()) +
                                          " numbers, expected " + std::to_string(width + 1) + " with the frame first");
        kind_ = reader.Choice("interpolation") == 1 ? KeyKind::Constant : KeyKind::Linear;
    }
    bool Empty() const { return rows_.empty(); }
    template <class Control, class ValueOf>
    void Set(Control* control, ValueOf&& valueOf) const {
        for (const std::vector<float>& row : rows_) {
            const TimeValue t = context_.At(line_, [&] { return context_.Ticks(double(row[0])); });
            control->SetKey(t, valueOf(row), kind_);
        }
    }

private:
    std::vector<std::vector<float>> rows_;
    LoadContext& context_;
    int line_;
    KeyKind kind_;
};

Point3 RowPoint(const std::vector<float>& row) {
    return {row[1], row[2], row[3]};
}

template <class Control, class ValueOf>
void SetTransformKeys(LoadContext& context, const SectionReader& reader, const char* key, ::Control* part,
                      ValueOf&& valueOf) {
    const KeyRows rows(context, reader, key, 3);
    auto* const control = dynamic_cast<Control*>(part);
    if (control && !rows.Empty()) rows.Set(control, valueOf);
}

void LoadNodeKeys(LoadContext& context, const SectionReader& reader) {
    INode* const node = context.At(reader.LineOf("node"), [&] { return context.NodeNamed(reader.Required("node")); });
    PrsControl* const tm = TransformOf(context, node);
    SetTransformKeys<PositionControl>(context, reader, "position", tm->Position(), RowPoint);
    SetTransformKeys<RotationControl>(context, reader, "rotation", tm->Rotation(), [](const std::vector<float>& row) {
        return QuatFromMatrix(EulerMatrix(RowPoint(row)));
    });
    SetTransformKeys<ScaleControl>(context, reader, "scale", tm->Scale(), RowPoint);
}

template <class Control, class ValueOf>
void SetParamKeys(LoadContext& context, const SectionReader& reader, const ParamPlace& place, size_t width,
                  ValueOf&& valueOf) {
    const KeyRows rows(context, reader, "values", width);
    if (rows.Empty()) reader.Fail("no 'values', expected keys of the parameter");
    auto* const control = context.core.Adopt(new Control);
    rows.Set(control, valueOf);
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
        return SetParamKeys<Point3Control>(context, reader, place, 3, RowPoint);
    SetParamKeys<FloatControl>(context, reader, place, 1, [](const std::vector<float>& row) { return row[1]; });
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
