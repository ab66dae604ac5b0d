// Binary .fbx files: blocks of (end, number and bytes of values, name, values, blocks below).

#include <zlib.h>

#include <algorithm>
#include <cstring>

#include "import/fbx_guard.h"
#include "import/fbx_guard_curves.h"

namespace host {

namespace {

// Deflated bytes become at most this many times as many.
constexpr uint64_t kMostDeflated = 1032;

template <class T>
T Number(std::string_view bytes) {
    T v{};
    if (bytes.size() >= sizeof v) std::memcpy(&v, bytes.data(), sizeof v);
    return v;
}

// Bytes of one number of an array, 0 when it is no kind of array.
uint64_t NumberSize(char kind) {
    return kind == 'd' || kind == 'l' ? 8 : kind == 'f' || kind == 'i' ? 4 : kind == 'b' || kind == 'c' ? 1 : 0;
}

// Bytes of a single value behind its kind, without what a count in front of it announces.
size_t ValueSize(char kind) {
    switch (kind) {
    case 'C':
    case 'B':
        return 1;
    case 'Y':
        return 2;
    case 'D':
    case 'L':
        return 8;
    default:
        return 4;
    }
}

// The bytes of an array's numbers; empty when they cannot be unpacked. Its sizes have been checked.
std::vector<char> ArrayBytes(std::string_view value) {
    const size_t size = Number<uint32_t>(value.substr(1)) * NumberSize(value[0]);
    const std::string_view stored = value.substr(13);
    if (Number<uint32_t>(value.substr(5)) == 0)
        return std::vector<char>(stored.begin(), stored.begin() + ptrdiff_t(std::min(size, stored.size())));
    std::vector<char> bytes(size);
    uLongf unpacked = uLongf(size);
    const int result = uncompress(reinterpret_cast<Bytef*>(bytes.data()), &unpacked,
                                  reinterpret_cast<const Bytef*>(stored.data()), uLong(stored.size()));
    // Data that goes on behind the last number is Assimp's to judge: what fits is there.
    if (result != Z_OK && result != Z_BUF_ERROR) unpacked = 0;
    bytes.resize(std::min<size_t>(unpacked, size));
    return bytes;
}

// Calls add(number) for every number of an array of T.
template <class T, class Add>
void ForEachNumber(std::string_view value, Add&& add) {
    const std::vector<char> bytes = ArrayBytes(value);
    for (size_t at = 0; at + sizeof(T) <= bytes.size(); at += sizeof(T))
        add(Number<T>(std::string_view(bytes.data() + at, sizeof(T))));
}

class BinaryWalker {
public:
    BinaryWalker(const std::string& file, std::string_view bytes) : file_(file), bytes_(bytes), curves_(file) {
        wide_ = Number<uint32_t>(bytes.substr(std::min<size_t>(bytes.size(), 23))) >= 7500;
    }

    FbxLinks Walk() {
        // Ends when something is odd: Assimp reads in the same order and finds it, too.
        while (at_ < bytes_.size() && Block()) {
            while (!ends_.empty() && at_ >= ends_.back()) {
                ends_.pop_back();
                at_ += EmptyBlock();
            }
        }
        curves_.Finish();
        return std::move(links_);
    }

private:
    size_t WordSize() const { return wide_ ? 8 : 4; }
    // Blocks below end with an empty one.
    size_t EmptyBlock() const { return 3 * WordSize() + 1; }
    uint64_t TakeWord() {
        const std::string_view at = bytes_.substr(at_);
        at_ += WordSize();
        return wide_ ? Number<uint64_t>(at) : Number<uint32_t>(at);
    }

    bool Block() {
        if (bytes_.size() - at_ < EmptyBlock()) return false;
        const uint64_t end = TakeWord();
        // intended: below another block, Assimp goes on behind an end of 0.
        if (end == 0) return !ends_.empty();
        TakeWord();
        const uint64_t size = TakeWord();
        const size_t nameSize = uint8_t(bytes_[at_++]);
        if (end > bytes_.size() || at_ + nameSize > end || size > end - at_ - nameSize) return false;
        const std::string_view name = bytes_.substr(at_, nameSize);
        at_ += nameSize;
        if (name == "AnimationCurve") curves_.Begin();
        Values(name, bytes_.substr(at_, size));
        at_ += size;
        if (at_ == end) return true;
        if (end - at_ < EmptyBlock()) return false;
        ends_.push_back(end - EmptyBlock());
        if (ends_.size() > kMostFbxBlocks) FailFbxBlocks(file_);
        return true;
    }

    void Values(std::string_view name, std::string_view values) {
        std::string_view kind;
        uint64_t ids[2] = {};
        int number = 0;
        for (; !values.empty(); ++number) {
            const std::string_view value = TakeValue(values);
            if (value.empty()) return;
            if (number == 0 && name == "KeyTime") AddTimes(value);
            if (number == 0 && name == "KeyValueFloat") AddValues(value);
            if (number == 0 && value[0] == 'S') kind = value.substr(5);
            if ((number == 1 || number == 2) && value[0] == 'L') ids[number - 1] = Number<uint64_t>(value.substr(1));
        }
        if (name == "Layer" && number == 0) FailFbxLayer(file_);
        if (name == "C" && number > 2 && kind != "PP") links_.push_back({ids[0], ids[1]});
    }

    void AddTimes(std::string_view value) {
        if (value[0] == 'l') ForEachNumber<int64_t>(value, [&](int64_t ticks) { curves_.AddTime(ticks); });
    }
    void AddValues(std::string_view value) {
        if (value[0] == 'f') ForEachNumber<float>(value, [&](float v) { curves_.AddValue(double(v)); });
        if (value[0] == 'd') ForEachNumber<double>(value, [&](double v) { curves_.AddValue(v); });
    }

    // The next value with its kind; empty when it is odd.
    std::string_view TakeValue(std::string_view& values) {
        const char kind = values[0];
        uint64_t size = 1 + ValueSize(kind);
        if (const uint64_t each = NumberSize(kind)) {
            if (values.size() < 13) return {};
            const uint64_t count = Number<uint32_t>(values.substr(1)), packing = Number<uint32_t>(values.substr(5)),
                           stored = Number<uint32_t>(values.substr(9));
            if (count * each > stored * (packing == 0 ? 1 : kMostDeflated)) FailFbxArray(file_);
            size = 13 + stored;
        } else if (kind == 'S' || kind == 'R') {
            size += Number<uint32_t>(values.substr(1));
        }
        if (size > values.size()) return {};
        const std::string_view value = values.substr(0, size);
        values.remove_prefix(size);
        return value;
    }

    const std::string& file_;
    std::string_view bytes_;
    size_t at_ = 27;
    bool wide_ = false;
    std::vector<uint64_t> ends_; ///< of the blocks around
    FbxLinks links_;
    FbxCurves curves_;
};

} // namespace

FbxLinks CheckFbxBinary(const std::string& file, std::string_view bytes) {
    return BinaryWalker(file, bytes).Walk();
}

} // namespace host
