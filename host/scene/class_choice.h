#pragma once
// Classes of the host and of plug-ins that a scene names.

#include "scene/load_context.h"

namespace host {

/// The class of super class `sid` whose class name or internal name is `name`, letter case aside and an underscore
/// being a space. `what` ("effect") is for messages. Throws Error at the line of `key` with the classes there are.
ClassDesc& ClassNamed(const LoadContext& context, const SectionReader& reader, const char* key, SClass_ID sid,
                      const char* what);

/// Throws Error at the line of `key`: the class is known but makes no object.
[[noreturn]] void FailNotMade(const SectionReader& reader, const char* key, const char* what);

/// Sets the parameters of a table by their own names; null is no table.
void SetParameters(LoadContext& context, Animatable* object, const std::string& name, const TomlValue* table);

} // namespace host
