#pragma once
// Selections and modifiers of scene files.

#include <string>

#include "modifiers/selection_rule.h"
#include "scene/toml_value.h"

namespace host {

/// A table of the section "selection". Throws Error with file and line.
SelectionRule ReadSelection(const std::string& file, const TomlValue& table);

} // namespace host
