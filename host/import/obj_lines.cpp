#include "import/obj_lines.h"

#include "import/file_error.h"
#include "import/text_scan.h"

namespace host {

namespace {

Point3 ReadPoint(const std::string& file, int line, std::string_view rest) {
    Point3 p;
    for (int k = 0; k < 3; ++k) {
        const std::string_view word = TakeWord(rest);
        double value = 0;
        if (!ParseNumber(word, value) || !FitsFloat(value))
            FailAt(file, line, "coordinate " + Quoted(word) + " in a 'v' line, expected three finite numbers");
        p[k] = float(value);
    }
    return p;
}

// "3", "3/1"; below 0 from the end.
int ReadIndex(const std::string& file, int line, std::string_view word, size_t count) {
    int index = 0;
    const std::string_view number = word.substr(0, word.find('/'));
    const bool read = ParseInteger(number, index);
    const long at = index > 0 ? long(index) - 1 : long(count) + index;
    if (!read || index == 0 || at < 0 || at >= long(count))
        FailAt(file, line,
               "vertex index " + Quoted(word) + " in an 'l' line, expected 1 .. " + std::to_string(count) +
                   " of the vertices before it");
    return int(at);
}

} // namespace

ObjLines ImportObjLines(const std::string& file, std::string_view content) {
    ObjLines out;
    LineScanner lines(content);
    for (std::string_view rest; lines.Next(rest);) {
        const std::string_view key = TakeWord(rest);
        if (key == "v") out.points.push_back(ReadPoint(file, lines.Line(), rest));
        if (key != "l") continue;
        std::vector<int> line;
        for (std::string_view word = TakeWord(rest); !word.empty(); word = TakeWord(rest))
            line.push_back(ReadIndex(file, lines.Line(), word, out.points.size()));
        if (line.size() < 2) FailAt(file, lines.Line(), "an 'l' line with less than two vertices, expected more");
        out.lines.push_back(std::move(line));
    }
    if (out.lines.empty()) FailAt(file, 0, "has no lines, expected at least one 'l' line");
    return out;
}

} // namespace host
