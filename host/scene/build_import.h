#pragma once
// Imported scenes become nodes.

#include <string>
#include <vector>

#include "import/imported_scene.h"
#include "scene/load_context.h"

namespace host {

/// Makes nodes, objects, materials and keys of what a file holds; `scene` has been placed. The nodes of its meshes are
/// added to the loaded scene's, with `options`. Returns the nodes in the file's order.
std::vector<Node*> BuildImport(LoadContext& context, const std::string& path, const ImportOptions& options,
                               ImportedScene& scene);

// Parts of it.

/// Materials by their numbers; those whose names are free can be used by the rest of the scene too.
std::vector<Mtl*> BuildImportMaterials(LoadContext& context, const std::string& path, ImportedScene& scene);
/// For faces without a material: a matt white one, or one in the colours of the mesh's vertices.
Mtl* UnnamedMaterial(LoadContext& context, bool vertexColors);
/// Place and keys of a node.
void SetImportedPlace(LoadContext& context, Node* node, const ImportedNode& from);
/// A float controller with the keys of a track.
Control* MakeWeightControl(LoadContext& context, const Track<float>& track);

} // namespace host
