#pragma once
// Assimp with its failures turned into texts.

#include <string>

struct aiScene;

namespace Assimp {
class Importer;
}

namespace host {

/// Reads a file of the form that `extension` names out of memory. The scene is the importer's own; null with a reason
/// in `error` (may be empty) when there is none.
const aiScene* ReadByAssimp(Assimp::Importer& importer, const std::string& content, const char* extension,
                            std::string& error);

} // namespace host
