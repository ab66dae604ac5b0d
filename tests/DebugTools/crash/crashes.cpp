// This file is compiled without optimisation and with debug information.
#include "crashes.h"

#include <cfenv>
#include <cstdio>
#include <sys/mman.h>
#include <unistd.h>

// Sanitizers answer such accesses themselves, before the processor can.
#define CRASHES __attribute__((noinline, no_sanitize("address", "undefined", "thread")))

namespace crash_test {

namespace {

volatile int sink = 0;

CRASHES void ReadFromHigh() {
    sink = *reinterpret_cast<volatile int*>(uintptr_t{0x7000000000});
}
CRASHES void ReadOutsideAllAddresses() {
    sink = *reinterpret_cast<volatile int*>(uintptr_t{0x8000000000000000});
}
CRASHES void ExecuteNothing() {
    void (*volatile function)() = nullptr;
    function();
}
CRASHES void DivideIntegers() {
    asm volatile("xorl %%ecx, %%ecx\n\tmovl $1, %%eax\n\tcltd\n\tidivl %%ecx" ::: "eax", "ecx", "edx");
}
CRASHES void DivideFloats() {
    volatile double one = 1.0, zero = 0.0;
    feclearexcept(FE_ALL_EXCEPT);
    feenableexcept(FE_DIVBYZERO);
    one = one / zero;
}
CRASHES void OverflowFloats() {
    volatile double large = 1e308;
    feclearexcept(FE_ALL_EXCEPT);
    feenableexcept(FE_OVERFLOW);
    large = large * large;
}
CRASHES void InvalidFloats() {
    volatile double zero = 0.0;
    feclearexcept(FE_ALL_EXCEPT);
    feenableexcept(FE_INVALID);
    zero = zero / zero;
}
CRASHES void IllegalInstruction() {
    asm volatile("ud2");
}
CRASHES void PrivilegedInstruction() {
    asm volatile("hlt");
}
CRASHES void Breakpoint() {
    asm volatile("int3");
}
CRASHES void ReadMisaligned() {
    asm volatile("leaq -64(%%rsp), %%rax\n\tpushfq\n\torq $0x40000, (%%rsp)\n\tpopfq\n\tmovl 1(%%rax), %%ecx\n\t"
                 "pushfq\n\tandq $~0x40000, (%%rsp)\n\tpopfq" ::
                     : "rax", "rcx", "memory");
}
CRASHES void ReadBehindTheFile() {
    FILE* file = tmpfile();
    void* page = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, fileno(file), 0);
    fclose(file);
    sink = *static_cast<volatile int*>(page);
}
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winfinite-recursion"
CRASHES int Recurse(int depth) {
    volatile char room[1000];
    room[0] = static_cast<char>(depth);
    return Recurse(depth + 1) + room[0];
}
#pragma GCC diagnostic pop
CRASHES void OverflowStack() {
    sink = Recurse(0);
}

} // namespace

CRASHES void WriteToAddress16() {
    *reinterpret_cast<volatile int*>(uintptr_t{0x10}) = 1;
}

constexpr int kFailingLine = __LINE__ + 12;
CRASHES void CrashWithVariables(int count, const char* label, float weight) {
    const double half = double{weight} / 2;
    const int64_t large = -2;
    const char16_t* wide = u"w\u00e4";
    char buffer[8] = "inside";
    static int calls = 7;
    struct {
        int a[4];
    } pack = {};
    sink =
        calls + count + pack.a[0] + label[0] + wide[0] + buffer[0] + static_cast<int>(half) + static_cast<int>(large);
    *reinterpret_cast<volatile int*>(uintptr_t{0x10}) = count;
}

int CrashLine() {
    return kFailingLine;
}

CRASHES void CrashDeep(int depth) {
    if (depth > 0)
        CrashDeep(depth - 1);
    else
        WriteToAddress16();
    sink = depth;
}

const std::vector<Crash>& Crashes() {
    static const std::vector<Crash> crashes = {
        {"WriteLow", WriteToAddress16, 0xC0000005, "ACCESS_VIOLATION", "Write to address 00000010\r\n"},
        {"ReadHigh", ReadFromHigh, 0xC0000005, "ACCESS_VIOLATION", "Read from address 7000000000\r\n"},
        {"ReadOutside", ReadOutsideAllAddresses, 0xC0000005, "ACCESS_VIOLATION",
         "Read from address ffffffffffffffff\r\n"},
        {"ExecuteNothing", ExecuteNothing, 0xC0000005, "ACCESS_VIOLATION", "Read from address 00000000\r\n"},
        {"DivideIntegers", DivideIntegers, 0xC0000094, "INT_DIVIDE_BY_ZERO", ""},
        {"DivideFloats", DivideFloats, 0xC000008E, "FLT_DIVIDE_BY_ZERO", ""},
        {"OverflowFloats", OverflowFloats, 0xC0000091, "FLT_OVERFLOW", ""},
        {"InvalidFloats", InvalidFloats, 0xC0000090, "FLT_INVALID_OPERATION", ""},
        {"IllegalInstruction", IllegalInstruction, 0xC000001D, "ILLEGAL_INSTRUCTION", ""},
        {"PrivilegedInstruction", PrivilegedInstruction, 0xC0000096, "PRIV_INSTRUCTION", ""},
        {"Breakpoint", Breakpoint, 0x80000003, "BREAKPOINT", ""},
        {"ReadMisaligned", ReadMisaligned, 0x80000002, "DATATYPE_MISALIGNMENT", ""},
        {"ReadBehindTheFile", ReadBehindTheFile, 0xC0000006, "IN_PAGE_ERROR", ""},
        {"OverflowStack", OverflowStack, 0xC00000FD, "STACK_OVERFLOW", ""},
    };
    return crashes;
}

} // namespace crash_test
