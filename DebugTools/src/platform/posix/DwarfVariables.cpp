#include "DwarfVariables.h"

#include "DwarfLocation.h"
#include "Memory.h"
#include "platform/Utf.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace diag::dw {

namespace {

// Tags, attributes and encodings of debug information.
enum Tag {
    kArray = 0x01,
    kEnumeration = 0x04,
    kParameter = 0x05,
    kBlock = 0x0b,
    kPointer = 0x0f,
    kReference = 0x10,
    kInlined = 0x1d,
    kBaseType = 0x24,
    kFunction = 0x2e,
    kVariable = 0x34,
    kRvalueReference = 0x42
};
enum AttributeCode { kLocation = 0x02, kByteSize = 0x0b, kEncoding = 0x3e, kFrameBase = 0x40, kType = 0x49 };
enum Encoding { kEncFloat = 4, kEncSignedChar = 6, kEncUnsignedChar = 8, kEncUtf = 0x10 };

constexpr size_t kShownText = 31;

// Scopes that the library hands out in memory of the C library.
class Scopes {
public:
    ~Scopes() { std::free(list_); }
    Die** Target() { return &list_; }
    Die& operator[](int i) { return list_[i]; }
    int count = 0;

private:
    Die* list_ = nullptr;
};

class Reader {
public:
    Reader(const Library& library, const StackFrame& frame, uint64_t address, uint64_t bias)
        : library_(library), address_(address), base_{frame} {
        base_.loadOffset = bias;
    }

    void SetFrameBase(Die& function) {
        const Location location = LocationOf(function, kFrameBase);
        base_.frameBaseKnown = location.kind == Location::kMemory || location.kind == Location::kValue;
        base_.frameBase = location.value;
    }

    void VisitScope(Die& scope, void (*visit)(const FrameVariable&, void*), void* argument) {
        Die die;
        if (library_.child(&scope, &die) != 0) return;
        do {
            const int tag = library_.tag(&die);
            const char* name = tag == kParameter || tag == kVariable ? library_.nameOf(&die) : nullptr;
            if (!name) continue;
            FrameVariable variable;
            variable.name = name;
            variable.kind = tag == kParameter ? FrameVariable::Kind::kParameter : FrameVariable::Kind::kLocal;
            ReadValue(die, variable);
            visit(variable, argument);
        } while (library_.sibling(&die, &die) == 0);
    }

private:
    Location LocationOf(Die& die, unsigned code) {
        Attribute attribute;
        Operation* operations = nullptr;
        size_t count = 0;
        if (!library_.attribute(&die, code, &attribute) ||
            library_.locationAt(&attribute, address_, &operations, &count, 1) != 1)
            return {};
        return Evaluate(operations, count, base_);
    }

    bool TypeOf(Die& die, Die& type) {
        Attribute attribute;
        Die found;
        return library_.attribute(&die, kType, &attribute) && library_.referenced(&attribute, &found) &&
               library_.peelType(&found, &type) == 0;
    }

    uint64_t Number(Die& die, unsigned code) {
        Attribute attribute;
        uint64_t value = 0;
        if (library_.attribute(&die, code, &attribute)) library_.unsignedValue(&attribute, &value);
        return value;
    }

    // 1 or 2: the size of a character type; 0: it is none.
    size_t CharacterSize(Die& type) {
        if (library_.tag(&type) != kBaseType) return 0;
        const uint64_t encoding = Number(type, kEncoding), size = Number(type, kByteSize);
        if (size == 1 && (encoding == kEncSignedChar || encoding == kEncUnsignedChar || encoding == kEncUtf)) return 1;
        return size == 2 && encoding == kEncUtf ? 2 : 0;
    }

    void ReadValue(Die& die, FrameVariable& variable) {
        const Location location = LocationOf(die, kLocation);
        Die type;
        if (location.kind == Location::kStatic) {
            variable.kind = FrameVariable::Kind::kOther; // not of this frame
            return;
        }
        if (location.kind == Location::kUnknown || !TypeOf(die, type)) return;
        Die element;
        const int tag = library_.tag(&type);
        if (tag == kArray) {
            if (location.kind == Location::kMemory && TypeOf(type, element))
                ReadCharacters(location.value, CharacterSize(element), variable);
            return;
        }
        uint64_t bits = 0;
        size_t size = Number(type, kByteSize);
        const bool isPointer = tag == kPointer || tag == kReference || tag == kRvalueReference;
        if (isPointer) size = sizeof(void*);
        if ((!isPointer && tag != kBaseType && tag != kEnumeration) || size == 0 || size > sizeof bits) return;
        if (location.kind == Location::kValue)
            std::memcpy(&bits, &location.value, size); // the low bytes of the register
        else if (!ReadMemory(location.value, &bits, size))
            return;
        if (tag == kPointer && TypeOf(type, element) && ReadCharacters(bits, CharacterSize(element), variable)) return;
        SetNumber(type, tag, bits, size, variable);
    }

    void SetNumber(Die& type, int tag, uint64_t bits, size_t size, FrameVariable& variable) {
        if (tag == kBaseType && Number(type, kEncoding) == kEncFloat) {
            float single;
            std::memcpy(&single, &bits, sizeof single);
            variable.type = size == 4 ? FrameVariable::Type::kFloat : FrameVariable::Type::kDouble;
            if (size == 4)
                variable.number = double{single};
            else
                std::memcpy(&variable.number, &bits, sizeof bits);
            return;
        }
        variable.type = size == 8 ? FrameVariable::Type::kInteger64 : FrameVariable::Type::kInteger;
        variable.bits = bits;
    }

    bool ReadCharacters(uint64_t address, size_t characterSize, FrameVariable& variable) {
        if (characterSize == 1 && ReadText(address, variable.text, kShownText + 1)) {
            variable.type = FrameVariable::Type::kText8;
            return true;
        }
        char16_t wide[kShownText + 1] = {};
        size_t length = 0;
        if (characterSize != 2) return false;
        for (; length < kShownText; ++length)
            if (!ReadMemory(address + 2 * length, &wide[length], 2) || wide[length] == 0) break;
        wide[length] = 0;
        if (length == 0 && !ReadMemory(address, wide, 2)) return false;
        variable.text[Utf16ToUtf8(wide, variable.text, sizeof variable.text - 1)] = '\0';
        variable.type = FrameVariable::Type::kText16;
        return true;
    }

    const Library& library_;
    uint64_t address_;
    LocationBase base_;
};

} // namespace

void VisitVariables(const Library& library, DwflModule* module, uint64_t address, const StackFrame& frame,
                    void (*visit)(const FrameVariable&, void*), void* argument) {
    uint64_t bias = 0;
    Die* unit = library.unitOf(module, address, &bias);
    if (!unit) return;
    Scopes at, scopes;
    at.count = library.scopesAt(unit, address - bias, at.Target());
    if (at.count <= 0) return;
    // From the innermost scope outwards, as the machine code nests: an inlined function inside its caller.
    scopes.count = library.scopesOf(&at[0], scopes.Target());
    int function = 0;
    while (function < scopes.count && library.tag(&scopes[function]) != kFunction) ++function;
    if (function >= scopes.count) return;
    Reader reader(library, frame, address - bias, bias);
    reader.SetFrameBase(scopes[function]);
    for (int i = function; i >= 0; --i) reader.VisitScope(scopes[i], visit, argument);
}

} // namespace diag::dw
