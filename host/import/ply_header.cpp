#include "import/ply_header.h"

#include <charconv>
#include <optional>

#include "import/file_error.h"
#include "import/text_scan.h"

namespace host {

namespace {

struct TypeName {
    std::string_view name;
    PlyType type;
};
constexpr TypeName kTypes[] = {
    {"char", PlyType::kInt8},       {"int8", PlyType::kInt8},       {"uchar", PlyType::kUint8},
    {"uint8", PlyType::kUint8},     {"short", PlyType::kInt16},     {"int16", PlyType::kInt16},
    {"ushort", PlyType::kUint16},   {"uint16", PlyType::kUint16},   {"int", PlyType::kInt32},
    {"int32", PlyType::kInt32},     {"uint", PlyType::kUint32},     {"uint32", PlyType::kUint32},
    {"float", PlyType::kFloat32},   {"float32", PlyType::kFloat32}, {"double", PlyType::kFloat64},
    {"float64", PlyType::kFloat64},
};

class HeaderReader {
public:
    HeaderReader(const std::string& file, std::string_view content) : file_(file), lines_(content) {}

    PlyHeader Read() {
        std::string_view line;
        if (!lines_.Next(line) || Trimmed(line) != "ply") FailAt(file_, 1, "is no .ply file, expected 'ply'");
        ReadForm();
        while (true) {
            if (!lines_.Next(line)) FailAt(file_, lines_.Line(), "header ends too early, expected 'end_header'");
            if (size_t(lines_.Line()) > kMostPlyHeaderLines) Fail("header is too long, expected 'end_header'");
            if (!ReadLine(line)) break;
        }
        header_.bytes = lines_.Position();
        header_.lines = lines_.Line();
        return std::move(header_);
    }

private:
    [[noreturn]] void Fail(const std::string& text) const { FailAt(file_, lines_.Line(), text); }

    void ReadForm() {
        std::string_view line;
        do {
            if (!lines_.Next(line)) FailAt(file_, lines_.Line(), "header ends too early, expected 'format'");
        } while (IsComment(line));
        std::string_view rest = line;
        const bool isFormat = TakeWord(rest) == "format";
        const std::string_view form = TakeWord(rest), version = TakeWord(rest);
        if (isFormat && version == "1.0") {
            if (form == "ascii") return SetForm(PlyForm::kAscii);
            if (form == "binary_little_endian") return SetForm(PlyForm::kLittleEndian);
            if (form == "binary_big_endian") return SetForm(PlyForm::kBigEndian);
        }
        Fail("expected 'format ascii|binary_little_endian|binary_big_endian 1.0'");
    }
    void SetForm(PlyForm form) { header_.form = form; }

    static bool IsComment(std::string_view line) {
        const std::string_view word = TakeWord(line);
        return word == "comment" || word == "obj_info" || word.empty();
    }

    // False at the header's last line.
    bool ReadLine(std::string_view line) {
        if (IsComment(line)) return true;
        std::string_view rest = line;
        const std::string_view key = TakeWord(rest);
        if (key == "end_header") return false;
        if (key == "element") {
            ReadElement(rest);
        } else if (key == "property") {
            ReadProperty(rest);
        } else {
            Fail(Quoted(key) + " is unknown, expected element, property, comment or end_header");
        }
        return true;
    }

    void ReadElement(std::string_view rest) {
        PlyElement element;
        element.name = TakeWord(rest);
        const std::string_view word = TakeWord(rest);
        const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), element.count);
        if (error != std::errc() || stop != word.data() + word.size() || element.count > kMostPlyCount)
            Fail(Quoted(word) + " is no count, expected 0 .. " + std::to_string(kMostPlyCount));
        for (const PlyElement& e : header_.elements)
            if (e.name == element.name) Fail("second element '" + element.name + "', expected one of each name");
        if (header_.elements.size() == kMostPlyElements)
            Fail("too many elements, expected at most " + std::to_string(kMostPlyElements));
        header_.elements.push_back(std::move(element));
    }

    PlyType ReadType(std::string_view word) const {
        for (const TypeName& t : kTypes)
            if (t.name == word) return t.type;
        Fail(Quoted(word) + " is no type, expected char, uchar, short, ushort, int, uint, float or double");
    }

    void ReadProperty(std::string_view rest) {
        if (header_.elements.empty()) Fail("property without an element, expected 'element' before it");
        std::vector<PlyProperty>& properties = header_.elements.back().properties;
        if (properties.size() == kMostPlyProperties)
            Fail("too many properties, expected at most " + std::to_string(kMostPlyProperties));
        PlyProperty property;
        std::string_view word = TakeWord(rest);
        property.isList = word == "list";
        if (property.isList) {
            property.countType = ReadType(TakeWord(rest));
            if (property.countType == PlyType::kFloat32 || property.countType == PlyType::kFloat64)
                Fail("a list counted by float or double, expected a whole-number type");
            word = TakeWord(rest);
        }
        property.type = ReadType(word);
        property.name = TakeWord(rest);
        if (property.name.empty()) Fail("property without a name, expected one after the type");
        properties.push_back(std::move(property));
    }

    const std::string& file_;
    LineScanner lines_;
    PlyHeader header_;
};

} // namespace

size_t PlySize(PlyType type) {
    switch (type) {
    case PlyType::kInt8:
    case PlyType::kUint8:
        return 1;
    case PlyType::kInt16:
    case PlyType::kUint16:
        return 2;
    case PlyType::kFloat64:
        return 8;
    default:
        return 4;
    }
}

int PlyElement::Find(std::string_view property) const {
    for (size_t i = 0; i < properties.size(); ++i)
        if (properties[i].name == property) return int(i);
    return -1;
}

int PlyElement::FindAny(std::initializer_list<std::string_view> names) const {
    for (const std::string_view name : names)
        if (const int at = Find(name); at >= 0) return at;
    return -1;
}

PlyHeader ReadPlyHeader(const std::string& file, std::string_view content) {
    return HeaderReader(file, content).Read();
}

} // namespace host
