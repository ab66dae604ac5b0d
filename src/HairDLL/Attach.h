#pragma once
// Attaching the library to the host process and detaching it.

#include <string>

/// Version text, as the description and the log show it.
inline constexpr const char* kVersionText = "1.7.0.82 For MAX 2010 (64 bit)";

/// Text of LibDescription().
const char* LibraryDescription();

/// Attaches the library: stores the module handle, finds directory, settings and log file from the library's own path
/// `file` (unknown when the file is not named velmar.dlu), registers the diagnostics' callbacks, writes the log's
/// beginning and makes the renderer. Never fails.
void AttachLibrary(void* module, const std::string& file);
/// Writes the log's last line.
void DetachLibrary();

/// Values of the settings file.
enum Setting { SETTING_TRACE_MODE = 0, SETTING_TRACE_ALLOC_ID = 1 };
/// Reads a setting. True when it is there (or has a default) and begins with a number; else `value` stays.
bool ReadSetting(Setting which, int& value);

/// Shows a failed check and asks whether to show further ones.
bool AssertPrompt(const char* text);
