#pragma once
// The library's globals: one set per process.

#include <string>

struct LibState {
    void* module = nullptr; ///< null until the library is attached
    std::string directory;  ///< of the library's own file, with its trailing separator
    std::string settings;   ///< path of the settings file
    char text[256] = {};    ///< result of GetString
};

LibState& GetLibState();
