#pragma once
// What the parts of the scene loader share.

#include <map>
#include <string>
#include <vector>

#include "scene/loader.h"
#include "scene/section_reader.h"
#include "sdk/mtl.h"

namespace host {

/// A scene on its way from the file into the core.
class LoadContext : public SceneNames {
public:
    LoadContext(Core& core, LoadedScene& scene, const TomlValue& file) : core(core), scene(scene), root(file) {}

    Core& core;
    LoadedScene& scene;
    const TomlValue& root;
    float unit = 1;                        ///< metres in a scene unit
    std::vector<std::string> search;       ///< folders, absolute or relative to the scene's
    std::map<std::string, INode*> aliases; ///< further names of nodes
    std::map<std::string, Mtl*> materials;
    std::map<std::string, Texmap*> maps;
    Mtl* unnamedMaterials[2] = {}; ///< of imported faces without a material; second: in vertex colours

    /// Reads every table of the list `[[key]]`.
    template <class Read>
    void ForEach(const char* key, const char* section, Read&& read) {
        const TomlValue* const list = root.Find(key);
        if (!list) return;
        for (const TomlValue& table : list->items) {
            const SectionReader reader(scene.file, *FindSceneSection(section), table);
            read(reader);
        }
    }

    /// The path of a file that the scene names; throws Error with the line when there is none.
    std::string FindFile(const std::string& name, int line) const;
    /// The same for a mesh file (IsMeshFile) or, where `scenes` may be, a file with a scene.
    std::string FindMeshFile(const std::string& name, int line, bool scenes = false) const;
    /// Where such a file may stand: beside the scene, in the search folders, in those of VELMAR_PATH.
    std::vector<std::string> PlacesOf(const std::string& name) const;
    [[noreturn]] void FailNoFile(const std::string& name, int line) const;

    // Things by name; these throw Error without a place.
    INode* NodeNamed(const std::string& name) override;
    Texmap* MapNamed(const std::string& name) override;
    Mtl* MaterialNamed(const std::string& name) const;

    /// Calls `f`; an Error of it gets the scene's file and `line` in front.
    template <class F>
    auto At(int line, F&& f) const {
        try {
            return f();
        } catch (const Error& e) {
            FailAt(scene.file, line, e.what());
        }
    }

    /// Remembers an object under a name; the name must be free.
    void AddObject(const SectionReader& reader, const std::string& name, ReferenceTarget* object);
    /// Sets parameters of an object by their own names, as a table has them; nothing for a null table. `name` is for
    /// messages.
    void SetParams(const TomlValue* table, Animatable* object, const std::string& name);
    /// Ticks of a frame number.
    TimeValue Ticks(double frame) const;
};

// The parts, in the order in which they run.
void LoadSettings(LoadContext& context);     ///< [scene], [render]
void LoadMaps(LoadContext& context);         ///< [[map]]
void LoadMaterials(LoadContext& context);    ///< [[material]]
void LoadMeshes(LoadContext& context);       ///< scene.import
void LoadShapes(LoadContext& context);       ///< [[shape]]
void LoadNodes(LoadContext& context);        ///< [[node]]
void LoadCameras(LoadContext& context);      ///< [[camera]]
void LoadLights(LoadContext& context);       ///< [[light]]
void LoadModifiers(LoadContext& context);    ///< node.modifiers
void LoadHairObjects(LoadContext& context);  ///< [[fur]], [[hair]]
void LoadHairRenderer(LoadContext& context); ///< [render.hair]
void LoadEffects(LoadContext& context);      ///< [[effect]], [[image_filter]]
void LoadKeys(LoadContext& context);         ///< [[keys]]

/// Position, rotation and scale of a table, where it has any of them.
void SetTransform(LoadContext& context, const SectionReader& reader, INode* node);
/// The parent that a table names.
class Node;
void SetParent(LoadContext& context, const SectionReader& reader, Node* node);
/// The keyed controllers of a node's transform; made when it has others.
class PrsControl;
PrsControl* TransformOf(LoadContext& context, INode* node);

} // namespace host
