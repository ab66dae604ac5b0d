#include "scene/param_access.h"

#include <algorithm>
#include <cctype>
#include <cmath>

#include "core/nearest_name.h"
#include "import/file_error.h"
#include "import/text_scan.h"
#include "scene/key_check.h"
#include "scene/section_reader.h"
#include "sdk/inode.h"
#include "sdk/mtl.h"

namespace host {

namespace {

char Folded(char c) {
    return c == '_' ? ' ' : char(std::tolower(static_cast<unsigned char>(c)));
}

// Sets one parameter; every failure says what was expected.
class ParamSetter {
public:
    ParamSetter(const ParamPlace& place, TimeValue t, int ticksPerFrame, SceneNames& names)
        : block_(*place.block), def_(*place.def), t_(t), ticksPerFrame_(ticksPerFrame), names_(names) {}

    void Set(const TomlValue& v) {
        switch (def_.type) {
        case TYPE_FLOAT:
            return SetFloat(v);
        case TYPE_INT:
            return SetInt(v);
        case TYPE_BOOL:
            if (v.kind != TomlValue::kBool) Fail(v, "true or false");
            return Done(block_.SetValue(def_.id, t_, v.flag ? 1 : 0), v);
        case TYPE_RGBA:
        case TYPE_POINT3:
            return SetPoint(v);
        case TYPE_TIMEVALUE:
            return SetTime(v);
        case TYPE_STRING:
            if (v.kind != TomlValue::kText) Fail(v, "text");
            return Done(block_.SetValue(def_.id, t_, v.text), v);
        case TYPE_INODE:
            if (v.kind != TomlValue::kText) Fail(v, "the name of a node");
            return Done(block_.SetValue(def_.id, t_, names_.NodeNamed(v.text)), v);
        case TYPE_TEXMAP:
            if (v.kind != TomlValue::kText) Fail(v, "the name of a map");
            return Done(block_.SetValue(def_.id, t_, AsTarget(names_.MapNamed(v.text))), v);
        case TYPE_INODE_TAB:
            return SetNodes(v);
        case TYPE_REFTARG:
            break;
        }
        throw Error(Quoted(def_.intName) + " is an object, expected its values in a table of curve, surface or random");
    }

private:
    static ReferenceTarget* AsTarget(Texmap* map) { return map; }
    [[noreturn]] void Fail(const TomlValue& v, const std::string& expected) const {
        throw Error(Quoted(def_.intName) + " is " + DescribeToml(v) + ", expected " + expected);
    }
    void Done(bool taken, const TomlValue& v) const {
        if (!taken) Fail(v, "a value that the object accepts");
    }

    void CheckRange(const TomlValue& v, const char* what) const {
        if (def_.hasRange && (v.number < double(def_.rangeLow) || v.number > double(def_.rangeHigh)))
            Fail(v, std::string(what) + " in " + ParamRangeText(def_));
    }
    void SetFloat(const TomlValue& v) {
        if (!v.IsNumber() || !FitsFloat(v.number)) Fail(v, "a number");
        CheckRange(v, "a number");
        Done(block_.SetValue(def_.id, t_, float(v.number)), v);
    }
    void SetInt(const TomlValue& v) {
        if (v.kind != TomlValue::kInteger || std::abs(v.number) > 2147483647.0) Fail(v, "a whole number");
        CheckRange(v, "a whole number");
        Done(block_.SetValue(def_.id, t_, int(v.integer)), v);
    }
    void SetTime(const TomlValue& v) {
        const double ticks = v.number * ticksPerFrame_;
        if (!v.IsNumber() || !(std::abs(ticks) < 2147483647.0)) Fail(v, "a frame number");
        Done(block_.SetValue(def_.id, t_, int(std::lround(ticks))), v);
    }
    void SetPoint(const TomlValue& v) {
        if (!IsNumberList(v, 3))
            Fail(v, def_.type == TYPE_RGBA ? "a list of 3 numbers (red, green, blue)" : "a list of 3 numbers");
        Done(block_.SetValue(def_.id, t_,
                             Point3(float(v.items[0].number), float(v.items[1].number), float(v.items[2].number))),
             v);
    }
    void SetNodes(const TomlValue& v) {
        if (v.kind != TomlValue::kArray) Fail(v, "a list of names of nodes");
        std::vector<INode*> nodes;
        for (const TomlValue& item : v.items) {
            if (item.kind != TomlValue::kText) Fail(item, "names of nodes");
            nodes.push_back(names_.NodeNamed(item.text));
        }
        block_.SetCount(def_.id, 0);
        for (INode* const node : nodes)
            if (!block_.Append(def_.id, node))
                throw Error("node " + Quoted(node->GetName()) + " does not suit " + Quoted(def_.intName) +
                            ", expected another kind of object");
    }

    IParamBlock2& block_;
    const ParamDef& def_;
    TimeValue t_;
    int ticksPerFrame_;
    SceneNames& names_;
};

std::string PointText(const Point3& p) {
    std::string out;
    for (int i = 0; i < 3; ++i) out.append(i == 0 ? "[" : ", ").append(NumberText(double(p[i])));
    return out.append("]");
}

std::string NodesText(const ParamPlace& place, TimeValue t) {
    std::string out("[");
    for (int i = 0; i < place.block->Count(place.def->id); ++i) {
        INode* const node = place.block->GetINode(place.def->id, t, i);
        if (i > 0) out.append(", ");
        out.append(node ? node->GetName() : "-");
    }
    return out.append("]");
}

// A plain value, or "-" for references.
std::string PlainText(ParamType2 type, const PB2Value& v, int ticksPerFrame) {
    switch (type) {
    case TYPE_FLOAT:
        return NumberText(double(v.f));
    case TYPE_INT:
        return std::to_string(v.i);
    case TYPE_BOOL:
        return v.i ? "true" : "false";
    case TYPE_RGBA:
    case TYPE_POINT3:
        return PointText(v.p);
    case TYPE_TIMEVALUE:
        return NumberText(double(v.i) / ticksPerFrame);
    case TYPE_STRING:
        return "\"" + v.s + "\"";
    default:
        return "-";
    }
}

} // namespace

std::vector<ParamPlace> ListParams(Animatable* object) {
    std::vector<ParamPlace> out;
    for (int i = 0; object && i < object->NumParamBlocks(); ++i) {
        IParamBlock2* const block = object->GetParamBlock(i);
        if (!block) continue;
        for (const ParamDef& def : block->GetDesc()->params) out.push_back({block, &def});
    }
    return out;
}

bool SameParamName(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return Folded(x) == Folded(y); });
}

ParamPlace FindParam(Animatable* object, const std::string& objectName, const std::string& name) {
    const std::vector<ParamPlace> all = ListParams(object);
    for (const ParamPlace& p : all)
        if (SameParamName(p.def->intName, name)) return p;
    std::vector<ParamPlace> found;
    std::vector<std::string> known, same;
    for (const ParamPlace& p : all) {
        known.push_back(p.def->intName);
        if (!p.def->name.empty() && p.def->name != p.def->intName) known.push_back(p.def->name);
        if (p.def->name.empty() || !SameParamName(p.def->name, name)) continue;
        found.push_back(p);
        same.push_back(p.def->intName);
    }
    if (found.size() == 1) return found[0];
    if (found.size() > 1)
        throw Error(Quoted(name) + " is the name of several parameters of " + Quoted(objectName) + ", expected " +
                    JoinChoices(same));
    const std::string near = NearestNames(name.substr(0, 100), known);
    throw Error("unknown parameter " + Quoted(name) + " of " + Quoted(objectName) + ", expected " +
                (near.empty() ? "none, it has no parameters" : "one like " + near));
}

void SetParam(const ParamPlace& place, const TomlValue& value, TimeValue t, int ticksPerFrame, SceneNames& names) {
    ParamSetter(place, t, ticksPerFrame, names).Set(value);
}

std::string ParamValueText(const ParamPlace& place, TimeValue t, int ticksPerFrame) {
    const ParamID id = place.def->id;
    Interval valid = FOREVER;
    PB2Value v;
    switch (place.def->type) {
    case TYPE_FLOAT:
        v.f = place.block->GetFloat(id, t, valid);
        break;
    case TYPE_INT:
    case TYPE_BOOL:
    case TYPE_TIMEVALUE:
        v.i = place.block->GetInt(id, t, valid);
        break;
    case TYPE_RGBA:
    case TYPE_POINT3:
        v.p = place.block->GetPoint3(id, t, valid);
        break;
    case TYPE_STRING:
        v.s = place.block->GetStr(id, t, valid);
        break;
    case TYPE_INODE_TAB:
        return NodesText(place, t);
    case TYPE_INODE:
        if (INode* const node = place.block->GetINode(id, t, valid)) return node->GetName();
        return "-";
    default: {
        TSTR name("-");
        if (ReferenceTarget* const target = place.block->GetReferenceTarget(id, t, valid)) target->GetClassName(name);
        return name;
    }
    }
    return PlainText(place.def->type, v, ticksPerFrame);
}

std::string ParamDefaultText(const ParamDef& def, int ticksPerFrame) {
    return PlainText(def.type, def.def, ticksPerFrame);
}

std::string ParamRangeText(const ParamDef& def) {
    if (!def.hasRange) return "-";
    return NumberText(double(def.rangeLow)) + " .. " + NumberText(double(def.rangeHigh));
}

const char* ParamTypeText(ParamType2 type) {
    switch (type) {
    case TYPE_FLOAT:
        return "float";
    case TYPE_INT:
        return "int";
    case TYPE_BOOL:
        return "bool";
    case TYPE_RGBA:
        return "colour";
    case TYPE_POINT3:
        return "point";
    case TYPE_TIMEVALUE:
        return "frame";
    case TYPE_STRING:
        return "text";
    case TYPE_INODE:
        return "node";
    case TYPE_TEXMAP:
        return "map";
    case TYPE_INODE_TAB:
        return "nodes";
    default:
        return "object";
    }
}

} // namespace host
