// What happens when the host loads and unloads the library.

#include "Attach.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <string_view>

#include "DebugTools/Assert.h"
#include "DebugTools/MemMgr.h"
#include "DebugTools/Platform.h"
#include "DebugTools/platform/Symbols.h"
#include "HRendAtm/HairRender.h"
#include "HairDLL/LibGlobals.h"
#include "LibState.h"
#include "StringTable.h"

namespace {

constexpr std::string_view kLibraryFile = "velmar.dlu";
constexpr int kOutOfMemoryText = 40602;

#ifdef _WIN32
constexpr const char* kSeparators = "\\/";
constexpr const char* kSeparator = "\\";
constexpr const char* kTempVariables[] = {"TEMP"};
constexpr const char* kHomeVariables[] = {"USERPROFILE"};
#else
constexpr const char* kSeparators = "/";
constexpr const char* kSeparator = "/";
constexpr const char* kTempVariables[] = {"TEMP", "TMPDIR"};
constexpr const char* kHomeVariables[] = {"USERPROFILE", "HOME"};
#endif

struct SettingRow {
    const char *section, *key, *fallback;
};
constexpr SettingRow kSettings[] = {{"Test", "TraceMode", "1"}, {"Test", "TraceAllocID", "0"}};

bool SameName(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
    });
}

/// Directory of the library's file with its trailing separator; empty when the file has another name.
std::string DirectoryOf(const std::string& file) {
    const size_t cut = file.find_last_of(kSeparators);
    const size_t name = cut == std::string::npos ? 0 : cut + 1;
    return SameName(std::string_view(file).substr(name), kLibraryFile) ? file.substr(0, name) : std::string();
}

bool CanWrite(const std::string& directory) {
    const std::string probe = directory + "testfile";
    if (!diag::FileCreate(probe)) return false;
    diag::FileDelete(probe);
    return true;
}

/// The first of the variables that is set, as a directory; false when none is.
template <size_t N>
bool DirectoryFrom(const char* const (&variables)[N], std::string& directory) {
    for (const char* name : variables) {
        std::string value;
        if (!diag::GetEnvironment(name, value) || value.empty()) continue;
        directory = value + kSeparator;
        return true;
    }
    return false;
}

/// Where log files go: beside the library, else the folder for temporary files, else the user's own, untested.
std::string LogDirectory(const std::string& pluginDirectory) {
    if (CanWrite(pluginDirectory)) return pluginDirectory;
    std::string directory;
    if (DirectoryFrom(kTempVariables, directory) && CanWrite(directory)) return directory;
    directory.clear();
    DirectoryFrom(kHomeVariables, directory);
    return directory;
}

void WriteCrashInfo(Log* log) {
    WriteVersionInfo(log);
    const HairRender* renderer = HairRender::Existing();
    LogPrintf(log, 0, "Render threads: %d\n", renderer ? renderer->ThreadCount() : 0);
}

// May be called on any thread, so the shared buffer of GetString stays out of it.
void ShowOutOfMemory() {
    ShowMessage(FindString(kOutOfMemoryText), MSG_ERROR);
}

void SetUpFiles(const std::string& directory) {
    LibState& state = GetLibState();
    state.directory = directory;
    state.settings.clear();
    if (directory.empty()) return;
    diag::SetSymbolFolder(directory);
    DiagSystem* diagnostics = GetDiagSystem();
    const std::string logs = LogDirectory(directory);
    LogSetFileName(LogDefault(), (logs + "velmar.log").c_str());
    SetCrashCopyPattern(diagnostics, (logs + "velmarCrash_%d-%02d-%02d_%02d-%02d-%02d.log").c_str());
    state.settings = directory + "velmar.ini";
    diagnostics->crashInfoCallback = WriteCrashInfo;
    diagnostics->assertCallback = AssertPrompt;
}

void WriteLogBegin() {
    Log* log = LogDefault();
    LogWrite(log, "velmar log begin", kLogEndLine);
    const diag::CalendarTime now = diag::LocalCalendarTime();
    LogPrintf(log, 0, "Time: %d:%02d:%02d\r\n", now.hour, now.minute, now.second);
    WriteSystemInfo(GetDiagSystem());
    WriteVersionInfo(log);
    LogWrite(log, nullptr, kLogEndLine);
}

void SetUpTracker() {
    MemSettings& settings = TrackerSettings();
    int id = 0;
    if (ReadSetting(SETTING_TRACE_ALLOC_ID, id) && id >= 1) settings.breakAtAllocation = uint32_t(id);
    settings.mode = 4;
}

} // namespace

const char* LibraryDescription() {
    static const std::string text = std::string("velmar ") + kVersionText + " , written by the velmar developers";
    return text.c_str();
}

bool ReadSetting(Setting which, int& value) {
    const SettingRow& row = kSettings[which];
    char text[100];
    diag::ReadProfileString(row.section, row.key, row.fallback, text, sizeof text, GetSettingsPath().c_str());
    int parsed = 0;
    if (std::sscanf(text, "%d", &parsed) != 1) return false;
    value = parsed;
    return true;
}

void AttachLibrary(void* module, const std::string& file) {
    GetLibState().module = module;
    GetDiagSystem();
    GetMemTracker();
    SetUpFiles(DirectoryOf(file));
    SetAllocFailureCallback(ShowOutOfMemory);
    WriteLogBegin();
    SetUpTracker();
    LogFlush(LogDefault());
    // Through the descriptor, which must be made first so that it outlives the renderer's parameter block.
    GetHairRenderClassDesc()->Create(false);
}

void DetachLibrary() {
    SetAllocFailureCallback(nullptr);
    LogWrite(LogDefault(), "velmar log end", kLogEndLine);
}
