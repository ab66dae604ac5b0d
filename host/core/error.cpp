#include "core/error.h"

#include <cstdint>

namespace host {

std::string OneLine(std::string_view text) {
    std::string line;
    bool gap = false;
    for (const char c : text) {
        if (uint8_t(c) < 0x20 || c == 0x7f) {
            gap = true;
            continue;
        }
        if (gap && !line.empty()) line += ' ';
        gap = false;
        line += c;
    }
    return line;
}

} // namespace host
