// Source file names as the log shows them.
#pragma once

#include <string_view>

namespace diag {

/// Cuts a compiler's file name to the part below the tree's own folder ("src/Base/HUtil.cpp"), so that logs do not
/// depend on where the tree was built. A name outside the tree stays whole.
constexpr const char* SourceName(const char* file) {
    // This header's own name tells the tree's folder.
    constexpr std::string_view here = __FILE__;
    constexpr std::string_view below = "DebugTools/include/DebugTools/SourceName.h";
    constexpr std::string_view root = here.ends_with(below) ? here.substr(0, here.size() - below.size()) : "";
    return std::string_view(file).starts_with(root) ? file + root.size() : file;
}

} // namespace diag
