// Writing: reads the text by its type, puts the prefixes before it and keeps the size limit.
#include "DebugTools/platform/Thread.h"
#include "LogState.h"
#include "platform/Utf.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

constexpr const char* kTooBig = "log string too big!";
constexpr const char* kLimitNotice = "\n\nLog file limit reached, logging disabled!\n";

// The bytes of one write: a prefix of at most 22 characters and 64 tabs, a text, the end of the line.
struct Piece {
    char bytes[128 + kLogLineBuffer];
    size_t length = 0;

    void Add(const char* text, size_t size) {
        std::memcpy(bytes + length, text, size);
        length += size;
        bytes[length] = '\0';
    }
    void Add(char c) { Add(&c, 1); }
};

template <class T>
T ValueAt(const void* address) {
    T value;
    std::memcpy(&value, address, sizeof value);
    return value;
}

int DecimalsOf(uint32_t flags) {
    constexpr int decimals[4] = {1, 2, 4, 6};
    return decimals[(flags >> 6) & 3];
}

void AddText(Piece& piece, const void* text, uint32_t flags) {
    char converted[kLogLineBuffer];
    const char* bytes = converted;
    size_t length = 0;
    auto print = [&](const char* format, auto... values) {
        length = static_cast<size_t>(std::snprintf(converted, sizeof converted, format, values...));
    };
    switch (flags & kLogTypeMask) {
    case 0:
    case kLogText:
        bytes = static_cast<const char*>(text);
        length = strnlen(bytes, kLogLineBuffer);
        break;
    case kLogText16: {
        bool fits = true;
        length = diag::Utf16ToUtf8(static_cast<const char16_t*>(text), converted, kLogLineBuffer - 1, &fits);
        if (!fits) length = kLogLineBuffer;
        break;
    }
    case kLogInt32:
    case kLogInt32B:
    case kLogInt32C:
        print("%d", ValueAt<int32_t>(text));
        break;
    case kLogHex32:
        print("%x", ValueAt<uint32_t>(text));
        break;
    case kLogInt16:
        print("%d", int{ValueAt<int16_t>(text)});
        break;
    case kLogFloat:
        print("%.*f", DecimalsOf(flags), double{ValueAt<float>(text)});
        break;
    default: // no such type: the flags take effect, nothing is written
        break;
    }
    if (length >= kLogLineBuffer) {
        bytes = kTooBig;
        length = std::strlen(kTooBig);
    }
    piece.Add(bytes, length);
}

void AddPrefixes(Piece& piece, const Log& log, uint32_t flags) {
    char text[32];
    if (flags & kLogThreadId)
        piece.Add(text, static_cast<size_t>(std::snprintf(text, sizeof text, "[%08x] ", diag::CurrentThreadId())));
    if (flags & kLogTimeStamp) {
        const uint32_t ticks = LogTicks();
        piece.Add(text, static_cast<size_t>(std::snprintf(text, sizeof text, "%6u.%03u ", ticks / 1000, ticks % 1000)));
    }
    for (int i = 0; i < log.indent; ++i) piece.Add('\t');
}

bool OpenFile(Log& log) {
    if (!log.file) {
        log.file = log.files->open(log.fileName, log.truncateOnOpen);
        if (log.file) log.truncateOnOpen = false;
    }
    return log.file != nullptr;
}

// Writes the notice, once, when the limit is reached.
void CheckLimit(Log& log) {
    if (log.silent || log.bytesWritten < log.sizeLimit || !OpenFile(log)) return;
    log.files->write(log.file, kLimitNotice);
    log.silent = true;
}

void Send(Log& log, const Piece& piece) {
    CheckLimit(log);
    if (log.silent || !OpenFile(log)) return;
    const size_t sent = log.files->write(log.file, piece.bytes);
    log.bytesWritten =
        sent > UINT32_MAX - log.bytesWritten ? UINT32_MAX : log.bytesWritten + static_cast<uint32_t>(sent);
    log.atLineStart = piece.bytes[piece.length - 1] == '\n';
    CheckLimit(log);
}

} // namespace

void LogWrite(Log* target, const void* text, uint32_t flags) {
    LogHold hold(target);
    Log* log = hold.Get();
    if (!log) return;
    if ((flags & kLogChannels) && !(flags & kLogChannels & log->defaultFlags)) return;
    flags |= flags & kLogTypeMask ? log->defaultFlags & ~uint32_t{kLogTypeMask} : log->defaultFlags;

    Piece piece;
    // A bare line end gets no indentation, so that empty lines are empty.
    if (log->atLineStart && (text || (flags & (kLogThreadId | kLogTimeStamp)))) AddPrefixes(piece, *log, flags);
    if (text) AddText(piece, text, flags);
    if (flags & kLogEndLine) piece.Add('\n');
    if (piece.length > 0) Send(*log, piece);
}

void LogPrintf(Log* log, uint32_t flags, const char* format, ...) {
    char text[kLogLineBuffer];
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const bool fits = length >= 0 && static_cast<size_t>(length) < sizeof text;
    LogWrite(log, fits ? text : kTooBig, (flags & ~uint32_t{kLogTypeMask}) | kLogText);
}

void LogHeader(Log* target, const char* file, int line, const char* text, uint32_t flags) {
    LogHold hold(target); // the pieces stay together
    Log* log = hold.Get();
    if (!log) return;
    const uint32_t inner = (flags & ~uint32_t{kLogTypeMask | kLogEndLine}) | kLogText;
    const uint32_t last = inner | (flags & kLogEndLine);
    LogWrite(log, file ? file : "unknown file", inner);
    LogPrintf(log, text ? inner : last, text ? "(%d): " : "(%d)", line);
    if (text) LogWrite(log, text, last);
}

void LogFlush(Log* target) {
    LogHold hold(target);
    if (Log* log = hold.Get(); log && log->file) log->files->flush(log->file);
}
