// Machine, process and time on Windows.
#include "DebugTools/platform/System.h"

#include "Win32.h"
#include "platform/WindowsNames.h"

namespace diag {

int ProcessorCount() {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwNumberOfProcessors > 0 ? static_cast<int>(info.dwNumberOfProcessors) : 1;
}

uint32_t TickMs() {
    return GetTickCount();
}

bool PerformanceCounter(uint64_t& ticks, uint64_t& ticksPerSecond) {
    LARGE_INTEGER count, frequency;
    ticks = ticksPerSecond = 0;
    if (!QueryPerformanceFrequency(&frequency) || !QueryPerformanceCounter(&count)) return false;
    ticks = static_cast<uint64_t>(count.QuadPart);
    ticksPerSecond = static_cast<uint64_t>(frequency.QuadPart);
    return true;
}

MemoryAmounts GetMemoryAmounts() {
    MEMORYSTATUSEX status = {};
    status.dwLength = sizeof status;
    if (!GlobalMemoryStatusEx(&status)) return {};
    return {status.ullTotalPhys, status.ullAvailPhys, status.ullTotalPageFile, status.ullAvailPageFile};
}

MachineDescription DescribeMachine() {
    MachineDescription machine;
    OSVERSIONINFOA version = {};
    version.dwOSVersionInfoSize = sizeof version;
    if (GetVersionExA(&version)) {
        const bool nt = version.dwPlatformId == VER_PLATFORM_WIN32_NT;
        machine.versionMajor = static_cast<int>(version.dwMajorVersion);
        machine.versionMinor = static_cast<int>(version.dwMinorVersion);
        machine.build = static_cast<int>(nt ? version.dwBuildNumber : version.dwBuildNumber & 0xFFFF);
        machine.servicePack = version.szCSDVersion;
        machine.systemName = WindowsName(nt, machine.versionMajor, machine.versionMinor);
    }
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    machine.processorType = static_cast<int>(info.dwProcessorType);
    machine.architecture = info.wProcessorArchitecture;
    machine.processorLevel = info.wProcessorLevel;
    machine.processorRevision = info.wProcessorRevision;
    return machine;
}

CalendarTime LocalCalendarTime() {
    SYSTEMTIME now;
    GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

std::string ModulePath(const void* address) {
    HMODULE module = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExA(flags, static_cast<const char*>(address), &module)) return {};
    char path[1024];
    const DWORD length = GetModuleFileNameA(module, path, sizeof path);
    return length > 0 && length < sizeof path ? std::string(path, length) : std::string();
}

bool GetEnvironment(const char* name, std::string& value) {
    if (!name) return false;
    const DWORD needed = GetEnvironmentVariableA(name, nullptr, 0);
    if (needed == 0) return false;
    std::string found(needed, '\0');
    const DWORD length = GetEnvironmentVariableA(name, found.data(), needed);
    if (length >= needed) return false;
    found.resize(length);
    value = found;
    return true;
}

void SystemExceptionText(uint32_t code, char* text, size_t size) {
    if (size == 0) return;
    text[0] = '\0';
    const DWORD flags = FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_HMODULE;
    FormatMessageA(flags, GetModuleHandleA("NTDLL.DLL"), code, 0, text, static_cast<DWORD>(size), nullptr);
}

void DebuggerOutput(const char* text) {
    OutputDebugStringA(text);
}

bool AskYesNo(const char* title, const char* text) {
    return MessageBoxA(nullptr, text, title, MB_YESNO | MB_ICONWARNING) == IDYES;
}

} // namespace diag
