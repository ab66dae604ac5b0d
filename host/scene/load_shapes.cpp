// [[shape]].

#include <cmath>

#include "core/controllers.h"
#include "import/obj_lines.h"
#include "scene/key_check.h"
#include "scene/load_context.h"
#include "shapes/shape_builder.h"

namespace host {

namespace {

// Numbers of every row, all of one width.
std::vector<std::vector<float>> RowsOf(const SectionReader& reader, const char* key, size_t width) {
    std::vector<std::vector<float>> rows = reader.Rows(key);
    for (const std::vector<float>& row : rows)
        if (row.size() != width)
            reader.FailAtKey(key, "a row of " + Quoted(key) + " has " + std::to_string(row.size()) +
                                      " numbers, expected " + std::to_string(width));
    return rows;
}

int KnotNumber(const SectionReader& reader, const char* key, double number, int count) {
    if (!(number >= 0 && number < count && number == std::floor(number)))
        reader.FailAtKey(key, "knot " + NumberText(number) + " in " + Quoted(key) + ", expected 0 .. " +
                                  std::to_string(count - 1));
    return int(number);
}

Spline3D ReadSpline(const SectionReader& reader) {
    constexpr int kTypes[] = {KTYPE_CORNER, KTYPE_AUTO, KTYPE_BEZIER};
    std::vector<Point3> points;
    for (const std::vector<float>& row : RowsOf(reader, "points", 3)) points.push_back({row[0], row[1], row[2]});
    if (points.size() < 2) reader.FailAtKey("points", "a spline has less than two 'points', expected more");
    Spline3D spline = SplineFromPoints(points, reader.Flag("closed"), kTypes[reader.Choice("type")]);
    const std::vector<std::vector<float>> handles = RowsOf(reader, "handles", 6);
    if (!handles.empty() && (handles.size() != points.size() || reader.Choice("type") != 2))
        reader.FailAtKey("handles", "'handles' stand for " + std::to_string(handles.size()) +
                                        " knots, expected them for every knot of a bezier spline");
    for (size_t i = 0; i < handles.size(); ++i) {
        const std::vector<float>& h = handles[i];
        spline.knots[i].inVec = {h[0], h[1], h[2]};
        spline.knots[i].outVec = {h[3], h[4], h[5]};
    }
    for (const int i : reader.Integers("straight"))
        spline.knots[size_t(KnotNumber(reader, "straight", i, spline.KnotCount()))].ltype = LTYPE_LINE;
    return spline;
}

void ReadKnotKeys(LoadContext& context, const SectionReader& reader, KeyedShape* shape, int number) {
    std::map<int, PositionControl*> controls;
    for (const std::vector<float>& row : RowsOf(reader, "keys", 5)) {
        const int knot = KnotNumber(reader, "keys", double(row[0]), shape->Rest().splines[size_t(number)].KnotCount());
        PositionControl*& control = controls[knot];
        if (!control) control = context.core.Adopt(new PositionControl);
        const TimeValue t = context.At(reader.LineOf("keys"), [&] { return context.Ticks(double(row[1])); });
        control->SetKey(t, {row[2], row[3], row[4]});
    }
    for (const auto& [knot, control] : controls) shape->SetKnotController({number, knot}, control);
}

ShapeObject* MakeShape(LoadContext& context, const SectionReader& reader) {
    const std::string file = reader.Text("file");
    const TomlValue* const list = reader.Raw("splines");
    if (file.empty() == !list) reader.Fail("expected either 'file' or 'splines' in [[shape]]");
    if (!list) {
        const std::string path = context.FindFile(file, reader.LineOf("file"));
        const ObjLines lines = ImportObjLines(path, ReadWholeFile(path));
        auto* const object = context.core.Adopt(new ShapeObject);
        object->shape = ShapeFromLines(lines.points, lines.lines);
        return object;
    }
    BezierShape rest;
    for (const TomlValue& table : list->items)
        rest.splines.push_back(ReadSpline(SectionReader(reader.File(), *FindSceneSection("spline"), table)));
    auto* const shape = context.core.Adopt(new KeyedShape(std::move(rest)));
    for (size_t i = 0; i < list->items.size(); ++i)
        ReadKnotKeys(context, SectionReader(reader.File(), *FindSceneSection("spline"), list->items[i]), shape, int(i));
    return shape;
}

} // namespace

void LoadShapes(LoadContext& context) {
    context.ForEach("shape", "shape", [&](const SectionReader& reader) {
        const std::string name = reader.Required("name");
        if (context.core.GetINodeByName(name.c_str()))
            reader.FailAtKey("name", "second node " + Quoted(name) + ", expected a name of its own");
        Node* const node = context.core.CreateNode(name, MakeShape(context, reader));
        SetTransform(context, reader, node);
        SetParent(context, reader, node);
    });
}

} // namespace host
