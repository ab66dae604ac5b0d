#include "scene/toml_guard.h"

#include <algorithm>

#include "import/file_error.h"
#include "scene/toml_characters.h"
#include "scene/toml_value.h"

namespace host {

namespace {

// Walks over a text, telling strings and comments from the rest.
class TomlWalker {
public:
    TomlWalker(const std::string& file, std::string_view text) : file_(file), text_(text) {}

    void Walk() {
        while (at_ < text_.size()) {
            const char c = text_[at_];
            if (c == '"' || c == '\'') {
                SkipString(c);
            } else if (c == '#') {
                at_ = std::min(text_.find('\n', at_), text_.size());
            } else {
                Plain(c);
            }
        }
    }

private:
    void Plain(char c) {
        if (c == '\n') {
            ++line_;
            // A key with dots nests too.
            dots_ = 0;
        } else if (c == '[' || c == '{') {
            ++depth_;
        } else if (c == ']' || c == '}') {
            --depth_;
        } else if (c == '.') {
            ++dots_;
        } else if (uint8_t(c) >= 0x80) {
            FailAt(file_, line_, "character outside ASCII, expected such characters in strings and comments only");
        }
        if (depth_ > kMostTomlDepth || dots_ > 8 * kMostTomlDepth)
            FailAt(file_, line_, "nested too deeply, expected at most " + std::to_string(kMostTomlDepth) + " levels");
        ++at_;
    }

    bool Here(std::string_view what) const { return text_.substr(at_, what.size()) == what; }

    // At the opening quote; ends behind the closing one, or at the line's end when a one-line string is not closed.
    void SkipString(char quote) {
        const std::string triple(3, quote);
        const bool block = Here(triple);
        at_ += block ? 3 : 1;
        while (at_ < text_.size()) {
            if (block ? Here(triple) : text_[at_] == quote) {
                at_ += block ? 3 : 1;
                // Up to two quotes may stand before the closing three.
                while (block && at_ < text_.size() && text_[at_] == quote) ++at_;
                return;
            }
            if (text_[at_] == '\n') {
                if (!block) return;
                ++line_;
            }
            // A backslash may stand at a line's end.
            if (quote == '"' && text_[at_] == '\\' && at_ + 1 < text_.size() && text_[at_ + 1] != '\n') ++at_;
            ++at_;
        }
    }

    const std::string& file_;
    std::string_view text_;
    size_t at_ = 0;
    int line_ = 1, depth_ = 0, dots_ = 0;
};

} // namespace

void CheckTomlText(const std::string& file, std::string_view text) {
    if (const size_t moved = FindMovedCharacter(text); moved != std::string_view::npos)
        FailAt(file, 1 + int(std::count(text.begin(), text.begin() + ptrdiff_t(moved), '\n')),
               "character that Unicode does not have, expected others");
    TomlWalker(file, text).Walk();
}

} // namespace host
