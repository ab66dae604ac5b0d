// Texts and messages for the rest of the library.

#include "HairDLL/LibGlobals.h"

#include <cstdio>

#include "Attach.h"
#include "DebugTools/Log.h"
#include "LibState.h"
#include "StringTable.h"
#include "sdk/core.h"
#include "sdk/plugapi.h"

namespace {

constexpr const char* kTitle = "velmar";
constexpr const char* kAdvice =
    "It is highly recommended that you save your work and quit.\n\nTo help the developers fix this problem, please "
    "look "
    "for recent files named velmar*.log in the installation folder and send them to support@velmar.example\n\n";

int LogTypeOf(int kind) {
    switch (kind) {
    case MSG_WARNING:
        return SYSLOG_WARN;
    case MSG_ERROR:
    case MSG_QUESTION:
        return SYSLOG_ERROR;
    default:
        return SYSLOG_INFO;
    }
}

MessageBoxKind BoxOf(int kind) {
    switch (kind) {
    case MSG_WARNING:
        return MB_WARNING;
    case MSG_ERROR:
        return MB_ERROR;
    case MSG_QUESTION:
        return MB_QUESTION;
    default:
        return MB_INFORMATION;
    }
}

} // namespace

LibState& GetLibState() {
    static LibState state;
    return state;
}

void* GetModuleHandle() {
    return GetLibState().module;
}

const std::string& GetPluginDirectory() {
    return GetLibState().directory;
}

const std::string& GetSettingsPath() {
    return GetLibState().settings;
}

const char* GetString(int id) {
    LibState& state = GetLibState();
    const char* text = state.module ? FindString(id) : nullptr;
    if (!text) return nullptr;
    std::snprintf(state.text, sizeof state.text, "%s", text);
    return state.text;
}

bool ShowMessage(const char* text, int kind) {
    Interface* host = GetCOREInterface();
    if (!host) {
        LogPrintf(LogDefault(), kLogEndLine, "message without a host: %s", text);
        return false;
    }
    if (host->GetQuietMode()) {
        host->Log()->LogEntry(LogTypeOf(kind), true, kTitle, text);
        return true;
    }
    return host->MessageBox(text, kTitle, BoxOf(kind)) && kind == MSG_QUESTION;
}

void ReportException(const char* message) {
    std::string text = "velmar exception occurred!\n";
    if (message) text += message;
    text += "\n\n";
    ShowMessage((text + kAdvice).c_str(), MSG_ERROR);
}

bool AssertPrompt(const char* text) {
    return ShowMessage((std::string("Assert failed!\n\n") + kAdvice + text).c_str(), MSG_QUESTION);
}

void WriteVersionInfo(Log* log) {
    Interface* host = GetCOREInterface();
    const char* edition = host && host->ApplicationID() == 2 ? "VIZ" : "MAX";
    const uint32_t release = (host ? host->VersionWord() : SDK_VERSION_WORD) >> 16;
    LogPrintf(log, 0, "%s Release: %d\n", edition, int(release));
    LogPrintf(log, 0, "Version: %s\n", kVersionText);
}
