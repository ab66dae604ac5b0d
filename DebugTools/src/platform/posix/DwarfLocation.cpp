#include "DwarfLocation.h"

#include "Memory.h"

namespace diag::dw {

namespace {

// Operation codes of debug information.
enum Code : uint8_t {
    kAddr = 0x03,
    kDeref = 0x06,
    kFirstConst = 0x08,
    kLastConst = 0x11,
    kAnd = 0x1a,
    kMinus = 0x1c,
    kPlus = 0x22,
    kPlusConst = 0x23,
    kLit0 = 0x30,
    kReg0 = 0x50,
    kBreg0 = 0x70,
    kRegX = 0x90,
    kFrameReg = 0x91,
    kBregX = 0x92,
    kFrameAddress = 0x9c,
    kStackValue = 0x9f
};

class Machine {
public:
    explicit Machine(const LocationBase& base) : base_(base) {}

    // False when the location cannot be known.
    bool Step(const Operation& operation) {
        const uint8_t code = operation.code;
        if (kind_ == Location::kValue) return false; // a value ends the description
        if (code >= kFirstConst && code <= kLastConst) return Push(operation.first);
        if (code >= kLit0 && code < kReg0) return Push(uint64_t{code} - kLit0);
        if (code >= kReg0 && code < kBreg0) return Register(code - kReg0, 0) && EndAsValue();
        if (code >= kBreg0 && code < kRegX) return Register(code - kBreg0, operation.first);
        switch (code) {
        case kAddr:
            kind_ = Location::kStatic;
            return Push(operation.first + base_.loadOffset);
        case kRegX:
            return Register(operation.first, 0) && EndAsValue();
        case kBregX:
            return Register(operation.first, operation.second);
        case kFrameReg:
            return base_.frameBaseKnown && Push(base_.frameBase + operation.first);
        case kFrameAddress:
            return Push(base_.frame.frame);
        case kStackValue:
            return depth_ > 0 && EndAsValue();
        default:
            return Calculate(operation);
        }
    }
    Location Result() const {
        if (depth_ == 0) return {};
        return {kind_, stack_[depth_ - 1]};
    }

private:
    bool Push(uint64_t value) {
        if (depth_ == kDepth) return false;
        stack_[depth_++] = value;
        return true;
    }
    bool Register(uint64_t number, uint64_t offset) {
        if (number >= kFrameRegisters || !(base_.frame.knownRegisters >> number & 1u)) return false;
        return Push(base_.frame.registers[number] + offset);
    }
    bool EndAsValue() {
        kind_ = Location::kValue;
        return true;
    }
    bool Calculate(const Operation& operation) {
        if (depth_ == 0) return false;
        uint64_t& top = stack_[depth_ - 1];
        if (operation.code == kDeref) return ReadMemory(top, &top, sizeof top);
        if (operation.code == kPlusConst) {
            top += operation.first;
            return true;
        }
        if (depth_ < 2) return false;
        uint64_t& below = stack_[depth_ - 2];
        if (operation.code == kPlus)
            below += top;
        else if (operation.code == kMinus)
            below -= top;
        else if (operation.code == kAnd)
            below &= top;
        else
            return false;
        --depth_;
        return true;
    }

    static constexpr int kDepth = 16;
    const LocationBase& base_;
    uint64_t stack_[kDepth] = {};
    int depth_ = 0;
    Location::Kind kind_ = Location::kMemory;
};

} // namespace

Location Evaluate(const Operation* operations, size_t count, const LocationBase& base) {
    Machine machine(base);
    for (size_t i = 0; i < count; ++i)
        if (!machine.Step(operations[i])) return {};
    return machine.Result();
}

} // namespace diag::dw
