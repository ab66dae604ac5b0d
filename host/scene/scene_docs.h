#pragma once
// The written reference of scene descriptions.

#include <string>

namespace host {

/// The reference as Markdown, made from the key table.
std::string SceneReference();

} // namespace host
