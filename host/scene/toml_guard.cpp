#include "scene/toml_guard.h"

#include "import/file_error.h"
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

    // The parser takes a quote for the beginning of a string only where a key or value begins.
    bool StringMayBegin() const {
        size_t before = at_;
        while (before > 0 && (text_[before - 1] == ' ' || text_[before - 1] == '\t' || text_[before - 1] == '\r'))
            --before;
        return before == 0 || std::string_view("\n=,[{.").find(text_[before - 1]) != std::string_view::npos;
    }

    // At the opening quote; ends behind the closing one, or at the line's end when a one-line string is not closed.
    void SkipString(char quote) {
        if (!StringMayBegin())
            FailAt(file_, line_, "quote inside of a value, expected texts to begin and end with one");
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
            if (quote == '"' && text_[at_] == '\\' && at_ + 1 < text_.size()) {
                if (block && IsSpace(text_[at_ + 1])) {
                    SkipLineEnd();
                    continue;
                }
                if (block)
                    RefuseWide(at_ + 1, "character outside ASCII behind a backslash, expected an escape sequence");
                if (text_[at_ + 1] != '\n') ++at_;
            }
            ++at_;
        }
    }

    static bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

    // In texts of several lines the parser looks for spaces outside ASCII behind a backslash, and not every character
    // is safe to be looked at.
    void RefuseWide(size_t at, const char* problem) const {
        if (at < text_.size() && uint8_t(text_[at]) >= 0x80) FailAt(file_, line_, problem);
    }

    // At a backslash that ends a line of a text of several; ends at what follows the spaces behind it.
    void SkipLineEnd() {
        for (++at_; at_ < text_.size() && IsSpace(text_[at_]); ++at_)
            if (text_[at_] == '\n') ++line_;
        RefuseWide(at_, "character outside ASCII behind a backslash at a line's end, expected another one first");
    }

    const std::string& file_;
    std::string_view text_;
    size_t at_ = 0;
    int line_ = 1, depth_ = 0, dots_ = 0;
};

} // namespace

void CheckTomlText(const std::string& file, std::string_view text) {
    TomlWalker(file, text).Walk();
}

} // namespace host
