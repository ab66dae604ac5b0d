#pragma once
// Ways to crash, and what a report calls them.

#include <cstdint>
#include <string>
#include <vector>

namespace crash_test {

struct Crash {
    const char* name;
    void (*run)();
    uint32_t code;
    const char* exception; ///< its name in the report
    std::string access;    ///< the line about the access with its end; empty: none
};
const std::vector<Crash>& Crashes();

/// Fails at address 0x10 in a function with parameters and local variables of all kinds.
void CrashWithVariables(int count, const char* label, float weight);
/// Line of the failing statement in CrashWithVariables.
int CrashLine();
void WriteToAddress16();
/// Recurses `depth` times and then fails.
void CrashDeep(int depth);

} // namespace crash_test
