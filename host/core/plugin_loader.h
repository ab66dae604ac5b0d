#pragma once
// Loading of plug-in libraries.

#include <memory>
#include <string>
#include <vector>

#include "core/class_directory.h"

namespace host {

class DynLib;

/// Loads plug-in libraries and registers their classes. Libraries stay loaded until the loader is destroyed, which must
/// be after the last object whose code is in one.
class PluginLoader {
public:
    explicit PluginLoader(ClassDirectory& classes);
    ~PluginLoader();
    PluginLoader(const PluginLoader&) = delete;
    PluginLoader& operator=(const PluginLoader&) = delete;

    /// Loads one library and registers all of its classes, or none. False with a one-line reason in `error`, which
    /// begins with the path: no such file, not a loadable library, a missing entry point, another release, a class
    /// without descriptor, a pair of super class and class id that is taken.
    bool Load(const std::string& path, std::string& error);

    struct Plugin {
        std::string path, description;
        uint32_t version = 0;
        bool canDefer = false;
        std::vector<ClassDesc*> classes;
        std::unique_ptr<DynLib> library;
    };
    const std::vector<Plugin>& Loaded() const { return plugins_; }

private:
    bool ReadEntryPoints(Plugin& plugin, std::string& problem) const;
    bool RegisterClasses(Plugin& plugin, std::string& problem);
    std::string Taken(ClassDesc* desc) const;

    ClassDirectory& classes_;
    std::vector<Plugin> plugins_;
};

} // namespace host
