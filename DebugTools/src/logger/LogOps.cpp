// The file operation sets and the lock operation set.
#include "DebugTools/Log.h"
#include "DebugTools/platform/File.h"
#include "DebugTools/platform/System.h"
#include "DebugTools/platform/Thread.h"

#include <cstdio>
#include <cstring>

namespace {

void* OsOpen(const char* name, bool truncate) {
    return diag::OutputFile::Open(name, truncate);
}
void OsClose(void* file) {
    auto* output = static_cast<diag::OutputFile*>(file);
    output->Flush();
    delete output;
}
void OsFlush(void* file) {
    static_cast<diag::OutputFile*>(file)->Flush();
}
bool OsCopy(const char* from, const char* to) {
    return diag::FileCopy(from, to);
}

// One call of the operating system for an ordinary line, so that a reader never sees half of it.
size_t OsWrite(void* file, const char* text) {
    char piece[4 * kLogLineBuffer];
    size_t sent = 0;
    bool good = true;
    char previous = '\0';
    while (good && *text) {
        size_t length = 0;
        for (; *text && length + 3 <= sizeof piece; ++text) {
            if (*text == '\n' && previous != '\r') piece[length++] = '\r';
            piece[length++] = previous = *text;
        }
        piece[length] = '\0';
        good = static_cast<diag::OutputFile*>(file)->Write(piece, length);
        diag::DebuggerOutput(piece);
        if (good) sent += length;
    }
    return sent;
}

void* StdOpen(const char* name, bool truncate) {
    return std::fopen(name, truncate ? "wb" : "a+t");
}
void StdClose(void* file) {
    std::fclose(static_cast<FILE*>(file));
}
void StdFlush(void* file) {
    std::fflush(static_cast<FILE*>(file));
}
size_t StdWrite(void* file, const char* text) {
    std::fputs(text, static_cast<FILE*>(file));
    return std::strlen(text);
}

void* CreateLock() {
    return new diag::CriticalSection;
}
void DestroyLock(void* lock) {
    delete static_cast<diag::CriticalSection*>(lock);
}
void Lock(void* lock) {
    static_cast<diag::CriticalSection*>(lock)->Enter();
}
void Unlock(void* lock) {
    static_cast<diag::CriticalSection*>(lock)->Leave();
}

} // namespace

const LogFileOps* LogOsFileOps() {
    static constexpr LogFileOps ops = {OsOpen, OsClose, OsWrite, OsFlush, OsCopy};
    return &ops;
}

const LogFileOps* LogStdFileOps() {
    static constexpr LogFileOps ops = {StdOpen, StdClose, StdWrite, StdFlush, nullptr};
    return &ops;
}

const LogLockOps* LogOsLockOps() {
    static constexpr LogLockOps ops = {CreateLock, DestroyLock, Lock, Unlock};
    return &ops;
}
