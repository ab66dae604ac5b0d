#include "import/ply_values.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "import/file_error.h"
#include "import/text_scan.h"

namespace host {

namespace {

template <class T>
double Decode(const char* bytes) {
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return double(value);
}

double Decode(PlyType type, const char* bytes) {
    switch (type) {
    case PlyType::kInt8:
        return Decode<int8_t>(bytes);
    case PlyType::kUint8:
        return Decode<uint8_t>(bytes);
    case PlyType::kInt16:
        return Decode<int16_t>(bytes);
    case PlyType::kUint16:
        return Decode<uint16_t>(bytes);
    case PlyType::kInt32:
        return Decode<int32_t>(bytes);
    case PlyType::kUint32:
        return Decode<uint32_t>(bytes);
    case PlyType::kFloat32:
        return Decode<float>(bytes);
    default:
        return Decode<double>(bytes);
    }
}

bool IsSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

} // namespace

PlyValues::PlyValues(const std::string& file, std::string_view content, const PlyHeader& header)
    : file_(file), rest_(content.substr(std::min(header.bytes, content.size()))), header_(header),
      line_(header.lines + 1) {}

size_t PlyValues::SmallestRow(const PlyElement& element) const {
    // A value of an ascii file takes a character at least, and a space between two.
    if (header_.form == PlyForm::kAscii) return 2 * element.properties.size();
    size_t bytes = 0;
    for (const PlyProperty& p : element.properties) bytes += PlySize(p.isList ? p.countType : p.type);
    return bytes;
}

void PlyValues::BeginElement(const PlyElement& element) {
    element_ = &element;
    row_ = 0;
    // The last value of an ascii file needs no line end behind it.
    const size_t room = rest_.size() + (header_.form == PlyForm::kAscii ? 1 : 0);
    if (element.count * SmallestRow(element) > room)
        FailAt(file_, 0,
               "ends too early, expected " + std::to_string(element.count) + " rows of '" + element.name + "'");
}

void PlyValues::Next(PlyRow& row) {
    ++row_;
    const auto& properties = element_->properties;
    row.values.assign(properties.size(), 0.0);
    row.lists.resize(properties.size());
    for (size_t i = 0; i < properties.size(); ++i) {
        const PlyProperty& p = properties[i];
        row.lists[i].clear();
        if (!p.isList) {
            row.values[i] = Value(p.type);
            continue;
        }
        const double count = Value(p.countType);
        if (!(count >= 0) || count != std::floor(count)) FailRow("has a list of impossible length");
        if (count > double(rest_.size())) FailEnd();
        row.lists[i].reserve(size_t(count));
        for (size_t k = 0; k < size_t(count); ++k) row.lists[i].push_back(Value(p.type));
    }
}

double PlyValues::Value(PlyType type) {
    if (header_.form == PlyForm::kAscii) return TextValue();
    const size_t size = PlySize(type);
    if (rest_.size() < size) FailEnd();
    const bool bigMachine = std::endian::native == std::endian::big;
    const bool swap = (header_.form == PlyForm::kBigEndian) != bigMachine;
    char bytes[8] = {};
    for (size_t i = 0; i < size; ++i) bytes[i] = rest_[swap ? size - 1 - i : i];
    rest_.remove_prefix(size);
    return Decode(type, bytes);
}

double PlyValues::TextValue() {
    size_t start = 0;
    while (start < rest_.size() && IsSpace(rest_[start])) line_ += rest_[start++] == '\n';
    rest_.remove_prefix(start);
    if (rest_.empty()) FailEnd();
    const size_t end = size_t(std::find_if(rest_.begin(), rest_.end(), IsSpace) - rest_.begin());
    const std::string_view word = rest_.substr(0, end);
    double value = 0;
    if (!ParseNumber(word, value))
        FailAt(file_, line_, Quoted(word.substr(0, 40)) + " is no number, expected a value of " + RowName());
    rest_.remove_prefix(end);
    return value;
}

std::string PlyValues::RowName() const {
    return element_->name + " " + std::to_string(row_) + " of " + std::to_string(element_->count);
}

void PlyValues::FailEnd() const {
    FailAt(file_, header_.form == PlyForm::kAscii ? line_ : 0, "ends too early, in " + RowName());
}

void PlyValues::FailRow(const std::string& text) const {
    FailAt(file_, header_.form == PlyForm::kAscii ? line_ : 0, RowName() + " " + text);
}

} // namespace host
