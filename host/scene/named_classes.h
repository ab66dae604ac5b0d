#pragma once
// Objects of classes that scenes name: the host's and those of plug-ins, known by their descriptors alone.

#include <string>
#include <vector>

#include "scene/load_context.h"

namespace host {

/// The registered classes of some super classes by the names that scenes use.
class NamedClasses {
public:
    /// `without` are left out.
    NamedClasses(Core& core, std::initializer_list<SClass_ID> kinds, const std::vector<ClassDesc*>& without = {});
    /// By internal name or class name, as parameters are named (SameParamName); of several the one registered last.
    /// Null when there is none.
    ClassDesc* Find(const std::string& name) const;
    /// The internal names; class names where there is none.
    std::vector<std::string> Names() const;

private:
    std::vector<ClassDesc*> classes_;
};

/// The class that `key` of a table names; `what` ("effect") is for messages. Throws Error with file and line when there
/// is no such class, with those there are.
ClassDesc& RequireClass(const SectionReader& reader, const NamedClasses& classes, const char* key,
                        const std::string& what);
/// Throws Error with file and line: the class is known but makes no object.
[[noreturn]] void FailNotMade(const SectionReader& reader, const char* key, const std::string& what);
/// A new object of the class that `key` of a table names. Throws as both of these do.
ReferenceTarget* MakeNamedObject(LoadContext& context, const SectionReader& reader, const NamedClasses& classes,
                                 const char* key, const std::string& what);

} // namespace host
