#pragma once
// Types and ranges of scene values.

#include <string>

#include "scene/key_table.h"
#include "scene/toml_value.h"

namespace host {

/// Throws Error with file and line when the value does not fit the key.
void CheckKeyValue(const std::string& file, const SceneKey& key, const TomlValue& value);
/// True for a list of `count` finite numbers.
bool IsNumberList(const TomlValue& value, size_t count);
/// The shortest text that reads back as the number (as a 32-bit float where it is one).
std::string NumberText(double v);

} // namespace host
