#include "SymbolValue.h"

#include "platform/Utf.h"

#include <cstring>

namespace diag {

namespace {

// Tags and basic types of the symbol library's type information.
enum Tag : DWORD { kTagEnum = 11, kTagPointer = 14, kTagArray = 15, kTagBase = 16, kTagTypedef = 17 };
enum Basic : DWORD { kChar = 2, kWideChar = 3, kFloat = 8, kChar16 = 32 };
// Register numbers of 64-bit x86 in symbols, and where frames keep them.
constexpr ULONG kFirstRegister = 328; // rax, rbx, rcx, rdx, rsi, rdi, rbp, rsp, r8 to r15
constexpr int kRegisterPlace[kFrameRegisters] = {0, 3, 2, 1, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr size_t kShownText = 31;

class Types {
public:
    Types(const DbgHelp& help, uint64_t module) : help_(help), module_(module) {}

    DWORD Get(ULONG type, IMAGEHLP_SYMBOL_TYPE_INFO what) const {
        DWORD value = 0;
        help_.typeInfo(GetCurrentProcess(), module_, type, what, &value);
        return value;
    }
    uint64_t Length(ULONG type) const {
        ULONG64 value = 0;
        help_.typeInfo(GetCurrentProcess(), module_, type, TI_GET_LENGTH, &value);
        return value;
    }
    /// Through names of types to the type itself.
    ULONG Peel(ULONG type) const {
        while (Get(type, TI_GET_SYMTAG) == kTagTypedef) type = Get(type, TI_GET_TYPEID);
        return type;
    }
    /// 1 or 2: the size of a character type; 0: it is none.
    size_t CharacterSize(ULONG type) const {
        if (Get(type, TI_GET_SYMTAG) != kTagBase) return 0;
        const DWORD basic = Get(type, TI_GET_BASETYPE);
        return basic == kChar ? 1 : basic == kWideChar || basic == kChar16 ? 2 : 0;
    }

private:
    const DbgHelp& help_;
    uint64_t module_;
};

bool Read(uint64_t address, void* target, size_t size) {
    SIZE_T got = 0;
    return ReadProcessMemory(GetCurrentProcess(), reinterpret_cast<const void*>(address), target, size, &got) &&
           got == size;
}

bool RegisterOf(ULONG number, const StackFrame& frame, uint64_t& value) {
    if (number < kFirstRegister || number >= kFirstRegister + kFrameRegisters) return false;
    value = frame.registers[kRegisterPlace[number - kFirstRegister]];
    return true;
}

// The variable's address, or its value when it lives in a register.
bool Locate(const SYMBOL_INFO& symbol, const StackFrame& frame, bool& inRegister, uint64_t& value) {
    inRegister = (symbol.Flags & SYMFLAG_REGISTER) != 0;
    if (inRegister) return RegisterOf(symbol.Register, frame, value);
    if (symbol.Flags & SYMFLAG_REGREL) {
        if (!RegisterOf(symbol.Register, frame, value)) return false;
        value += symbol.Address;
        return true;
    }
    if (symbol.Flags & SYMFLAG_FRAMEREL) {
        value = frame.frame + symbol.Address;
        return true;
    }
    return false;
}

bool ReadCharacters(uint64_t address, size_t size, FrameVariable& variable) {
    char16_t wide[kShownText + 1] = {};
    size_t length = 0;
    if (size == 0) return false;
    for (; length < kShownText; ++length) {
        char16_t next = 0;
        if (!Read(address + size * length, &next, size)) break;
        if (size == 1)
            variable.text[length] = static_cast<char>(next);
        else
            wide[length] = next;
        if (next == 0) break;
    }
    char probe[2];
    if (length == 0 && !Read(address, probe, size)) return false;
    variable.type = size == 1 ? FrameVariable::Type::kText8 : FrameVariable::Type::kText16;
    if (size == 2) length = Utf16ToUtf8(wide, variable.text, sizeof variable.text - 1);
    variable.text[length] = '\0';
    return true;
}

void SetNumber(uint64_t bits, size_t size, bool isFloat, FrameVariable& variable) {
    if (!isFloat) {
        variable.type = size == 8 ? FrameVariable::Type::kInteger64 : FrameVariable::Type::kInteger;
        variable.bits = bits;
        return;
    }
    float single;
    std::memcpy(&single, &bits, sizeof single);
    variable.type = size == 4 ? FrameVariable::Type::kFloat : FrameVariable::Type::kDouble;
    variable.number = double{single};
    if (size == 8) std::memcpy(&variable.number, &bits, sizeof bits);
}

} // namespace

void ReadSymbolValue(const DbgHelp& help, const SYMBOL_INFO& symbol, const StackFrame& frame, FrameVariable& variable) {
    const Types types(help, symbol.ModBase);
    const ULONG type = types.Peel(symbol.TypeIndex);
    const DWORD tag = types.Get(type, TI_GET_SYMTAG);
    bool inRegister = false;
    uint64_t value = 0;
    if (!Locate(symbol, frame, inRegister, value)) return;
    const ULONG element = tag == kTagArray || tag == kTagPointer ? types.Peel(types.Get(type, TI_GET_TYPEID)) : 0;
    if (tag == kTagArray) {
        if (!inRegister) ReadCharacters(value, types.CharacterSize(element), variable);
        return;
    }
    uint64_t bits = 0;
    const size_t size = types.Length(type);
    if ((tag != kTagBase && tag != kTagPointer && tag != kTagEnum) || size == 0 || size > sizeof bits) return;
    if (inRegister)
        std::memcpy(&bits, &value, size);
    else if (!Read(value, &bits, size))
        return;
    if (tag == kTagPointer && ReadCharacters(bits, types.CharacterSize(element), variable)) return;
    SetNumber(bits, size, tag == kTagBase && types.Get(type, TI_GET_BASETYPE) == kFloat, variable);
}

} // namespace diag
