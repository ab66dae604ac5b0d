// Facts about the machine, the process and the time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace diag {

/// Processors this process may use; at least 1.
int ProcessorCount();

/// Milliseconds of the system timer. Wraps after 49.7 days: compare by unsigned difference.
uint32_t TickMs();

/// The high-resolution counter. False, with both values 0, when the machine has none.
bool PerformanceCounter(uint64_t& ticks, uint64_t& ticksPerSecond);

/// Memory in bytes; all 0 when unknown. The page file amounts count physical memory and swap space together.
struct MemoryAmounts {
    uint64_t physicalTotal = 0;
    uint64_t physicalAvailable = 0;
    uint64_t pageFileTotal = 0;
    uint64_t pageFileAvailable = 0;
};
MemoryAmounts GetMemoryAmounts();

/// What the system information block of the log tells about operating system and processor.
struct MachineDescription {
    std::string systemName; ///< "Linux", "Microsoft Windows 7" ...
    int versionMajor = 0;
    int versionMinor = 0;
    int build = 0;
    std::string servicePack;   ///< the release text where there are no service packs
    int processorType = 0;     ///< 8664 for a 64-bit x86 processor
    int architecture = 0xFFFF; ///< 9 for 64-bit x86; 0xFFFF unknown
    int processorLevel = 0;    ///< family
    int processorRevision = 0; ///< model in the high byte, stepping in the low one
};
MachineDescription DescribeMachine();

/// Local calendar time, month and day counted from 1.
struct CalendarTime {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};
CalendarTime LocalCalendarTime();

/// Full path of the library or program file that holds `address`; empty when none does.
std::string ModulePath(const void* address);

/// Reads an environment variable. False, with `value` untouched, when it does not exist.
bool GetEnvironment(const char* name, std::string& value);

/// The operating system's text for an exception code, at most `size` - 1 characters; empty when it has none.
void SystemExceptionText(uint32_t code, char* text, size_t size);

/// Sends text to an attached debugger where the operating system offers that.
void DebuggerOutput(const char* text);

/// Asks the user to choose Yes or No in a warning box. Where there is no such box the text goes to standard error and
/// the answer is Yes.
bool AskYesNo(const char* title, const char* text);

} // namespace diag
