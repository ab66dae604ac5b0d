// What both realisations of the profile functions check alike.
#pragma once

#include <cstring>
#include <string>

namespace diag {

/// A text with a line break would come back as other lines.
inline bool HoldsLineBreak(const char* text) {
    return text && std::strpbrk(text, "\r\n") != nullptr;
}

/// The default as it is handed out: trailing blanks are dropped.
inline std::string ProfileDefault(const char* text) {
    std::string result = text ? text : "";
    const size_t last = result.find_last_not_of(" \t");
    result.erase(last == std::string::npos ? 0 : last + 1);
    return result;
}

} // namespace diag
