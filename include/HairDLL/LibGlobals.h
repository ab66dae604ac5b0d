#pragma once
// What the library's front door offers to the rest of it: texts, messages, globals.

#include <string>

struct Log;

/// The library's module handle, set when it is attached; null before.
void* GetModuleHandle();
/// Directory of the library's own file with its trailing separator; empty when unknown.
const std::string& GetPluginDirectory();
/// Path of the settings file "velmar.ini" beside the library; empty when unknown.
const std::string& GetSettingsPath();

/// Text of string-table entry `id` in one shared buffer of 256 characters, good until the next call; null when the
/// module handle is not known yet or there is no such entry. Main thread only.
const char* GetString(int id);

/// Kinds of message.
enum MessageKind { MSG_WARNING = 1, MSG_ERROR = 2, MSG_QUESTION = 3, MSG_INFORMATION = 4 };

/// Tells the user something in a box titled "velmar"; in the host's quiet mode the text goes to the host's log. True
/// only for the answer Yes, and in quiet mode.
bool ShowMessage(const char* text, int kind);

/// Shows an exception as an error, with advice; `message` may be null.
void ReportException(const char* message);

/// Writes host release and version into a log.
void WriteVersionInfo(Log* log);
