#include "core/plugin_loader.h"

#include <cstdio>
#include <filesystem>
#include <set>

#include "core/dynlib.h"
#include "core/error.h"
#include "core/host_log.h"

namespace host {

namespace {

template <class Fn>
bool Find(const DynLib& library, const char* name, Fn& fn, std::string& problem) {
    fn = reinterpret_cast<Fn>(library.Symbol(name));
    if (!fn) problem = std::string("entry point '") + name + "' is missing";
    return fn != nullptr;
}

std::string Ids(ClassDesc* desc) {
    char text[80];
    std::snprintf(text, sizeof text, "super class 0x%x, class id (0x%08x, 0x%08x)", desc->SuperClassID(),
                  desc->ClassID().PartA(), desc->ClassID().PartB());
    return text;
}

const char* NameOf(ClassDesc* desc) {
    const char* const name = desc->ClassName();
    return name ? name : "";
}

} // namespace

PluginLoader::PluginLoader(ClassDirectory& classes) : classes_(classes) {}

PluginLoader::~PluginLoader() {
    for (const Plugin& plugin : plugins_)
        for (ClassDesc* const desc : plugin.classes) classes_.Unregister(desc);
}

bool PluginLoader::Load(const std::string& path, std::string& error) {
    std::string problem;
    Plugin plugin;
    plugin.path = path;
    plugin.library = std::make_unique<DynLib>();
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) {
        problem = "no such file";
    } else if (!std::filesystem::is_regular_file(path, ignored)) {
        problem = "not a file";
    } else if (std::string reason; !plugin.library->Open(path, reason)) {
        problem = "not a loadable library (" + OneLine(reason) + ")";
    } else if (ReadEntryPoints(plugin, problem) && RegisterClasses(plugin, problem)) {
        plugins_.push_back(std::move(plugin));
        return true;
    }
    error = path + ": " + problem;
    return false;
}

bool PluginLoader::ReadEntryPoints(Plugin& plugin, std::string& problem) const {
    LibDescriptionFn description = nullptr;
    LibNumberClassesFn count = nullptr;
    LibClassDescFn classDesc = nullptr;
    LibVersionFn version = nullptr;
    CanAutoDeferFn canDefer = nullptr;
    const DynLib& library = *plugin.library;
    if (!Find(library, "LibDescription", description, problem) || !Find(library, "LibNumberClasses", count, problem) ||
        !Find(library, "LibClassDesc", classDesc, problem) || !Find(library, "LibVersion", version, problem) ||
        !Find(library, "CanAutoDefer", canDefer, problem))
        return false;
    plugin.version = version();
    // Plug-ins of one release fit together; the lower half of the word is the interface's revision.
    if (plugin.version >> 16 != SDK_VERSION_WORD >> 16) {
        problem = "built for release " + std::to_string(plugin.version >> 16) + ", this host is release " +
                  std::to_string(SDK_VERSION_WORD >> 16);
        return false;
    }
    const char* const text = description();
    plugin.description = text ? text : "";
    plugin.canDefer = canDefer() != 0;
    for (int i = 0, n = count(); i < n; ++i) {
        plugin.classes.push_back(classDesc(i));
        if (plugin.classes.back()) continue;
        problem = "class " + std::to_string(i) + " has no descriptor";
        return false;
    }
    return true;
}

// Where the identity of a class is taken: "'name'" with its plug-in; empty when it is free.
std::string PluginLoader::Taken(ClassDesc* desc) const {
    ClassDesc* const other = classes_.Find(desc->SuperClassID(), desc->ClassID());
    if (!other) return {};
    for (const Plugin& plugin : plugins_)
        for (ClassDesc* const known : plugin.classes)
            if (known == other) return std::string("'") + NameOf(other) + "' of " + plugin.path;
    return std::string("'") + NameOf(other) + "' of the host";
}

bool PluginLoader::RegisterClasses(Plugin& plugin, std::string& problem) {
    std::set<std::pair<SClass_ID, Class_ID>> own;
    for (ClassDesc* const desc : plugin.classes) {
        std::string taken = Taken(desc);
        if (taken.empty() && !own.insert({desc->SuperClassID(), desc->ClassID()}).second)
            taken = "another class of the same library";
        if (taken.empty()) continue;
        problem = std::string("class '") + NameOf(desc) + "' (" + Ids(desc) + ") is taken by " + taken;
        return false;
    }
    for (ClassDesc* const desc : plugin.classes) classes_.Register(desc);
    return true;
}

} // namespace host
