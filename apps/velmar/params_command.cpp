// velmar params.

#include <algorithm>
#include <array>
#include <cstdio>

#include "commands.h"

namespace velmar {

namespace {

using Row = std::array<std::string, 6>;

void PrintTable(const std::vector<Row>& rows) {
    std::array<size_t, 6> widths{};
    for (const Row& row : rows)
        for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    for (const Row& row : rows) {
        std::string line;
        for (size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            if (i + 1 < row.size()) line += std::string(widths[i] - row[i].size() + 2, ' ');
        }
        line.erase(line.find_last_not_of(' ') + 1);
        std::printf("%s\n", line.c_str());
    }
}

void PrintObject(Session& session, const std::string& name, ReferenceTarget* object) {
    TSTR className;
    object->GetClassName(className);
    std::printf("%s (%s)\n", name.c_str(), className.c_str());
    std::vector<Row> rows{{"name", "script name", "type", "value", "default", "range"}};
    const int ticks = session.core.GetTicksPerFrame();
    for (const host::ParamPlace& p : host::ListParams(object))
        rows.push_back({p.def->intName, p.def->name.empty() ? "-" : p.def->name, host::ParamTypeText(p.def->type),
                        host::ParamValueText(p, session.core.GetTime(), ticks), host::ParamDefaultText(*p.def, ticks),
                        host::ParamRangeText(*p.def)});
    PrintTable(rows);
}

} // namespace

int RunParams(const ParamsOptions& options) {
    Session session(options.open);
    if (!options.object.empty()) {
        PrintObject(session, options.object, host::FindObject(session.scene, options.object));
        return 0;
    }
    for (const auto& [name, object] : session.scene.objects) PrintObject(session, name, object);
    return 0;
}

} // namespace velmar
