#include "import/obj_outline.h"

#include <algorithm>
#include <unordered_map>

#include "import/file_error.h"
#include "import/text_scan.h"

namespace host {

namespace {

// Names with numbers in the order of first mention.
class NameList {
public:
    explicit NameList(std::vector<std::string>& names) : names_(names) {}
    int Number(std::string_view name) {
        const auto [at, added] = numbers_.try_emplace(std::string(name), int(names_.size()));
        if (added) names_.push_back(at->first);
        return at->second;
    }

private:
    std::vector<std::string>& names_;
    std::unordered_map<std::string, int> numbers_;
};

// One of the three lists that face corners point into.
struct IndexedList {
    const char* what;
    int count = 0;
    int highest = 0, highestLine = 0; ///< of the positive indices so far; they may point ahead
};

class ObjScanner {
public:
    ObjScanner(const std::string& file, std::string_view content)
        : file_(file), lines_(content), groups_(out_.groups), materials_(out_.materials) {
        out_.geometry.reserve(content.size());
    }

    ObjOutline Scan() {
        std::string_view line;
        while (lines_.Next(line)) ScanLine(line);
        if (out_.polygons.empty()) FailAt(file_, 0, "has no faces, expected at least one");
        for (const IndexedList& list : lists_)
            if (list.highest > list.count) FailRange(list, list.highest, list.highestLine);
        if (out_.objects.empty()) out_.objects.emplace_back();
        return std::move(out_);
    }

private:
    [[noreturn]] void Fail(const std::string& text) const { FailAt(file_, lines_.Line(), text); }
    [[noreturn]] void FailRange(const IndexedList& list, int index, int line) const {
        const std::string n = std::to_string(list.count);
        FailAt(file_, line,
               std::string(list.what) + " index " + std::to_string(index) + " is out of range, expected " +
                   (list.count == 0 ? "none, the file has no such entries"
                    : index < 0     ? "-" + n + " .. -1"
                                    : "1 .. " + n));
    }

    void ScanLine(std::string_view line) {
        std::string_view rest = line;
        const std::string_view key = TakeWord(rest);
        bool geometry = true;
        if (key == "v") {
            ScanNumbers("v", rest, 3, 7, true);
            ++lists_[0].count;
        } else if (key == "vt") {
            ScanNumbers("vt", rest, 1, 3, false);
            ++lists_[1].count;
        } else if (key == "vn") {
            ScanNumbers("vn", rest, 3, 3, false);
            ++lists_[2].count;
        } else if (key == "f") {
            ScanFace(rest);
            geometry = false;
        } else if (key == "s") {
            ScanSmoothing(rest);
            geometry = false;
        } else {
            geometry = false;
            ScanName(key, rest);
        }
        if (geometry) out_.geometry.append(Trimmed(line.substr(0, line.find('#')))).push_back('\n');
    }

    void ScanName(std::string_view key, std::string_view rest) {
        const std::string_view name = Trimmed(rest);
        if (key == "o") {
            BeginObject(name);
        } else if (key == "g") {
            now_.group = name.empty() ? -1 : groups_.Number(name);
        } else if (key == "usemtl") {
            now_.material = std::min(materials_.Number(name), 0xffff);
        }
    }

    // Whatever is no number means no smoothing. Only what is understood goes on: the reader of the numbers sees lines
    // where this one sees none.
    void ScanSmoothing(std::string_view rest) {
        out_.hasSmoothing = true;
        rest = rest.substr(0, rest.find('#'));
        const std::string_view word = TakeWord(rest);
        int group = 0;
        if (!word.empty()) out_.geometry += "s " + std::to_string(ParseInteger(word, group) ? group : 0) + "\n";
    }

    void BeginObject(std::string_view name) {
        // Faces before the first name belong to an object without one.
        if (out_.objects.empty() && !out_.polygons.empty()) out_.objects.emplace_back();
        out_.objects.emplace_back(name);
        now_.object = int(out_.objects.size()) - 1;
    }

    void ScanNumbers(const std::string& key, std::string_view rest, int least, int most, bool finite) {
        int count = 0;
        while (true) {
            const std::string_view word = TakeWord(rest);
            if (word.empty() || word[0] == '#') break;
            double value = 0;
            if (!ParseNumber(word, value)) Fail(Quoted(word) + " is no number, expected numbers after '" + key + "'");
            if (finite && !FitsFloat(value)) Fail("position is not finite, expected three finite numbers after 'v'");
            ++count;
        }
        if (count < least || count > most)
            Fail(std::to_string(count) + " numbers after '" + key + "', expected " + std::to_string(least) +
                 (most > least ? " to " + std::to_string(most) : ""));
        if (key == "v" && count >= 6) out_.hasColors = true;
    }

    void ScanFace(std::string_view rest) {
        now_.corners = 0;
        out_.geometry.push_back('f');
        while (true) {
            const std::string_view word = TakeWord(rest);
            if (word.empty() || word[0] == '#') break;
            ScanCorner(word);
            ++now_.corners;
            // "v/" means "v"; the reader of the numbers would look beyond the slash for more.
            out_.geometry.append(" ").append(word.substr(0, word.find_last_not_of('/') + 1));
        }
        out_.geometry.push_back('\n');
        if (now_.corners < 3 || now_.corners > kMostObjCorners)
            Fail("face with " + std::to_string(now_.corners) + " corners, expected 3 to " +
                 std::to_string(kMostObjCorners));
        out_.polygons.push_back(now_);
    }

    // "v", "v/vt", "v//vn" or "v/vt/vn".
    void ScanCorner(std::string_view word) {
        std::string_view rest = word;
        for (int i = 0; i < 3; ++i) {
            const size_t slash = rest.find('/');
            const std::string_view part = rest.substr(0, slash);
            int index = 0;
            if (!part.empty()) {
                if (!ParseInteger(part, index)) FailCorner(word);
                CheckIndex(lists_[i], index);
            } else if (i == 0 || (i == 2 && slash == std::string_view::npos)) {
                FailCorner(word);
            }
            if (slash == std::string_view::npos) return;
            rest.remove_prefix(slash + 1);
        }
        FailCorner(word);
    }
    [[noreturn]] void FailCorner(std::string_view word) const {
        Fail(Quoted(word) + " is no face corner, expected v, v/vt, v//vn or v/vt/vn");
    }

    void CheckIndex(IndexedList& list, int index) {
        if (index == 0 || index < -list.count) FailRange(list, index, lines_.Line());
        if (index > list.highest) {
            list.highest = index;
            list.highestLine = lines_.Line();
        }
    }

    const std::string& file_;
    LineScanner lines_;
    ObjOutline out_;
    NameList groups_, materials_;
    ObjPolygon now_;
    IndexedList lists_[3] = {{"vertex"}, {"mapping vertex"}, {"normal"}};
};

} // namespace

ObjOutline ScanObj(const std::string& file, std::string_view content) {
    return ObjScanner(file, content).Scan();
}

} // namespace host
