// The log: a text file written piece by piece, with optional thread tags, time stamps and indentation. Up to four logs
// exist at once. Any thread may write to any log; a log must not be closed while another thread uses it.
#pragma once

#include <cstddef>
#include <cstdint>

#if defined(__GNUC__)
#define DIAG_PRINTF_LIKE(text, first) __attribute__((format(printf, text, first)))
#else
#define DIAG_PRINTF_LIKE(text, first)
#endif

struct Log;

/// How a log reaches its file. `open` gives null when the file cannot be opened. `write` takes a terminated text and
/// gives the number of bytes that went to the file. `copy` may be null: then no crash copy is made.
struct LogFileOps {
    void* (*open)(const char* name, bool truncate);
    void (*close)(void* file);
    size_t (*write)(void* file, const char* text);
    void (*flush)(void* file);
    bool (*copy)(const char* from, const char* to);
};

/// How a log makes and takes its lock, which must be recursive.
struct LogLockOps {
    void* (*create)();
    void (*destroy)(void* lock);
    void (*lock)(void* lock);
    void (*unlock)(void* lock);
};

/// The operating-system set: the file may be read meanwhile, a "\n" without "\r" before it becomes "\r\n", and a
/// debugger gets the same text.
const LogFileOps* LogOsFileOps();
/// The standard-library set: text as it stands, no crash copy.
const LogFileOps* LogStdFileOps();
/// The operating system's locks.
const LogLockOps* LogOsLockOps();

/// Flags of LogWrite.
enum LogFlags : uint32_t {
    kLogChannels = 0x3F,    ///< bits 0 to 5: write only if the log's default flags share one of those given
    kLogDecimals1 = 0x00,   ///< decimals of a floating-point number
    kLogDecimals2 = 0x40,   //
    kLogDecimals4 = 0x80,   //
    kLogDecimals6 = 0xC0,   //
    kLogTypeMask = 0xF00,   ///< how the text is to be read; 0 takes the log's default flags in whole
    kLogText = 0x100,       ///< 8-bit text, as 0 is
    kLogText16 = 0x200,     ///< 16-bit text (char16_t), written as UTF-8
    kLogInt32 = 0x400,      ///< address of a signed 32-bit integer, decimal
    kLogHex32 = 0x500,      ///< the same, hexadecimal
    kLogInt32B = 0x600,     ///< the same, decimal
    kLogInt16 = 0x700,      ///< address of a signed 16-bit integer, decimal
    kLogInt32C = 0x800,     ///< as kLogInt32
    kLogFloat = 0xB00,      ///< address of a 32-bit floating-point number
    kLogThreadId = 0x2000,  ///< at the start of a line: "[0000abcd] "
    kLogTimeStamp = 0x4000, ///< at the start of a line: seconds in 6 places, ".", 3 digits of milliseconds, " "
    kLogEndLine = 0x8000    ///< end the line after the text
};

/// Flags of a new log.
constexpr uint32_t kLogInitialFlags = 0x13F;
/// Longest formatted piece, in characters, with its terminator. A longer one becomes "log string too big!".
constexpr size_t kLogLineBuffer = 1024;

/// Makes a log. Null sets mean the standard-library file set and the operating system's locks. Null when four logs
/// exist. `mode` is only stored.
Log* LogOpen(const LogFileOps* files = nullptr, const LogLockOps* locks = nullptr, uint32_t mode = 0);
/// The log of this process: made on first use, with the operating-system set and mode 3; closed when the process ends,
/// and null from then on. Every function below takes null for it.
Log* LogDefault();
/// Flushes and closes the file, copies it to the crash-copy name when `copyOnClose` is set, and gives the table slot
/// back.
void LogClose(Log* log);

/// The primitive that all others end in. `text` may be null: then the flags alone take effect, and a call that asks for
/// no prefix only ends the line. The file is opened by the first write; one that cannot be opened swallows all writes.
void LogWrite(Log* log, const void* text, uint32_t flags);
/// Formats at most 1023 characters and writes them as 8-bit text.
void LogPrintf(Log* log, uint32_t flags, const char* format, ...) DIAG_PRINTF_LIKE(3, 4);
/// Writes "file(line): text", or "file(line)" when `text` is null; a null file is "unknown file".
void LogHeader(Log* log, const char* file, int line, const char* text, uint32_t flags);
void LogFlush(Log* log);

/// Sets the file name (at most 511 characters; null restores "Log.txt"). A different name closes the file that is open,
/// and the next write starts the new file empty.
void LogSetFileName(Log* log, const char* name);
const char* LogGetFileName(Log* log);
/// Sets the crash copy's name (at most 511 characters; null restores "LogCrash.txt").
void LogSetCrashCopyName(Log* log, const char* name);
const char* LogGetCrashCopyName(Log* log);
void LogSetDefaultFlags(Log* log, uint32_t flags);
uint32_t LogGetDefaultFlags(Log* log);
/// Bytes after which the log falls silent; the write that reaches the limit still goes out whole.
void LogSetSizeLimit(Log* log, uint32_t bytes);
void LogSetCopyOnClose(Log* log, bool on);
bool LogGetCopyOnClose(Log* log);
uint32_t LogGetMode(Log* log);
/// Two words that the log keeps for its users, initially -6 and 16.
void LogSetFirstWord(Log* log, int32_t word);
int32_t LogGetFirstWord(Log* log);
void LogSetSecondWord(Log* log, int32_t word);
int32_t LogGetSecondWord(Log* log);
/// One more tab at the start of every line; stops at 64.
void LogIndent(Log* log);
/// One tab less. Below 0 is an internal assertion.
void LogUnindent(Log* log);
int LogGetIndent(Log* log);

/// Milliseconds since the first log was made; 0 before that and on machines without a high-resolution counter.
uint32_t LogTicks();
/// Replaces the source of the tick counter; null restores the machine's. For tests.
void LogSetTickSource(uint32_t (*source)());

/// Failed checks of this library itself, so far.
int LogInternalAssertCount();
