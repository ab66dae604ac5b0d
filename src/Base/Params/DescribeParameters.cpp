// The parameter reference in Markdown.

#include <charconv>
#include <initializer_list>

#include "Base/ParamBlocks.h"
#include "Base/ParamDefs.h"
#include "HairDLL/StringTable.h"

namespace {

const char* TypeName(ParamType2 type) {
    switch (type) {
    case TYPE_FLOAT:
        return "float";
    case TYPE_INT:
        return "int";
    case TYPE_BOOL:
        return "bool";
    case TYPE_RGBA:
        return "colour";
    case TYPE_TIMEVALUE:
        return "time";
    case TYPE_STRING:
        return "string";
    case TYPE_INODE_TAB:
        return "node list";
    default:
        return "reference";
    }
}

/// Shortest text that reads back the same.
std::string Number(float v) {
    char text[64];
    return std::string(text, std::to_chars(text, text + sizeof text, v, std::chars_format::fixed).ptr);
}

/// The texts with `between` between them.
std::string Join(std::initializer_list<std::string> texts, const char* between) {
    std::string joined;
    for (const std::string& t : texts) {
        if (&t != texts.begin()) joined += between;
        joined += t;
    }
    return joined;
}

std::string DefaultText(const ParamDef& p) {
    if (p.flags & P_TRANSIENT) return "held by the object";
    switch (p.type) {
    case TYPE_FLOAT:
        return Number(p.def.f);
    case TYPE_BOOL:
        return p.def.i ? "on" : "off";
    case TYPE_INT:
    case TYPE_TIMEVALUE:
        return std::to_string(p.def.i);
    case TYPE_RGBA:
        return Join({Number(p.def.p.x), Number(p.def.p.y), Number(p.def.p.z)}, ", ");
    default:
        return "-";
    }
}

/// Section and key in settings files, "-" for none.
std::string FileText(int pid) {
    if (pid < kNumScalarPids) {
        const ParamDefRecord& r = ParamDefTable[size_t(pid)];
        return r.section ? std::string(FindString(r.section)) + " / " + FindString(r.key) : "-";
    }
    if (pid < kFirstCurvePid) return "-";
    return FindString(VariationSectionId(pid));
}

std::string GroupText(int groups) {
    std::string text;
    if (groups & GROUP_SHAPE) text += " shape";
    if (groups & GROUP_DYNAMICS) text += " dynamics";
    if (groups & GROUP_RENDER) text += " render";
    if (groups & GROUP_VIEW) text += " view";
    return text.empty() ? "-" : text.substr(1);
}

std::string Row(const ParamDef& p) {
    const std::string none = "-";
    return Join({"", std::to_string(p.id), p.intName, p.name.empty() ? none : p.name,
                 p.worldUnits ? "float, world units" : TypeName(p.type), DefaultText(p),
                 p.hasRange ? Join({Number(p.rangeLow), Number(p.rangeHigh)}, " .. ") : none,
                 (p.flags & P_ANIMATABLE) ? "yes" : "no", FileText(p.id), GroupText(ChangeGroupsOf(p.id)), "\n"},
                "|");
}

} // namespace

std::string DescribeParameters(bool fur) {
    std::string text = fur ? "# Parameters of the fur object\n" : "# Parameters of the hair object\n";
    for (int b = 0; b < kNumHairBlocks; ++b) {
        const ParamBlockDesc2* block = GetObjectBlock(fur, b);
        if (!block) continue;
        text += Join({"\n## ", block->title, " (block ", std::to_string(b), ", `", block->intName, "`)\n\n"}, "");
        text += "|id|internal name|script name|type|default|range|animatable|file section / key|changes|\n";
        text += "|---|---|---|---|---|---|---|---|---|\n";
        for (const ParamDef& p : block->params) text += Row(p);
    }
    return text;
}
