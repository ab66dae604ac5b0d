#include "scene/frame_list.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <unordered_set>

#include "import/file_error.h"

namespace host {

namespace {

// Takes a whole number off the front of `text`.
bool TakeInt(std::string_view& text, int& value) {
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) return false;
    text.remove_prefix(size_t(stop - text.data()));
    return true;
}

bool TakeChar(std::string_view& text, char c) {
    if (text.empty() || text[0] != c) return false;
    text.remove_prefix(1);
    return true;
}

struct FrameRange {
    int first = 0, last = 0, step = 1;
};

FrameRange ParseRange(std::string_view item) {
    const std::string whole = Quoted(item);
    FrameRange r;
    bool good = TakeInt(item, r.first);
    r.last = r.first;
    if (good && TakeChar(item, '-')) {
        good = TakeInt(item, r.last);
        if (good && TakeChar(item, 'x')) good = TakeInt(item, r.step);
    }
    if (!good || !item.empty()) throw Error("frame list item " + whole + ", expected A, A-B or A-BxS");
    if (r.step == 0 || (r.last != r.first && (r.last > r.first) != (r.step > 0)))
        throw Error("frame list item " + whole + " leads nowhere, expected a step from A towards B");
    return r;
}

std::string PaddedFrame(int frame, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%0*d", digits, frame);
    return text;
}

// Length of "%d" or "%0Nd" at the front of `text`, 0 when there is none; `digits` receives N.
size_t PercentPlaceholder(std::string_view text, int& digits) {
    digits = 1;
    size_t at = 1;
    if (text.size() < 2 || text[0] != '%') return 0;
    if (text[1] == '0') {
        std::string_view rest = text.substr(2);
        if (!TakeInt(rest, digits) || digits < 1 || digits > 20) return 0;
        at = text.size() - rest.size();
    }
    return at < text.size() && text[at] == 'd' ? at + 1 : 0;
}

} // namespace

std::vector<int> ParseFrameList(const std::string& list) {
    std::vector<int> frames;
    std::unordered_set<int> seen;
    std::string_view rest(list);
    while (true) {
        const size_t comma = std::min(rest.find(','), rest.size());
        const FrameRange r = ParseRange(rest.substr(0, comma));
        if ((int64_t(r.last) - r.first) / r.step + int64_t(frames.size()) >= kMostFrames)
            throw Error("frame list " + Quoted(list) + " is too long, expected at most " + std::to_string(kMostFrames) +
                        " frames");
        for (int64_t f = r.first; r.step > 0 ? f <= r.last : f >= r.last; f += r.step)
            if (seen.insert(int(f)).second) frames.push_back(int(f));
        if (comma == rest.size()) return frames;
        rest.remove_prefix(comma + 1);
    }
}

bool HasFramePlaceholder(const std::string& pattern) {
    return FrameFileName(pattern, 1) != FrameFileName(pattern, 2);
}

std::string FrameFileName(const std::string& pattern, int frame) {
    std::string out;
    std::string_view rest(pattern);
    while (!rest.empty()) {
        int digits = 0;
        size_t length = PercentPlaceholder(rest, digits);
        if (length == 0 && rest[0] == '#') {
            length = std::min(rest.find_first_not_of('#'), rest.size());
            digits = length == 1 ? 4 : int(std::min<size_t>(length, 20));
        }
        if (length > 0) {
            out.append(PaddedFrame(frame, digits));
            rest.remove_prefix(length);
        } else {
            out.push_back(rest[0]);
            rest.remove_prefix(1);
        }
    }
    return out;
}

} // namespace host
