// Text .fbx files: KEY: VALUE, VALUE ... { more of the same }, with comments behind semicolons.

#include <algorithm>
#include <cctype>
#include <charconv>

#include "import/fbx_guard.h"
#include "import/fbx_guard_curves.h"
#include "import/file_error.h"

namespace host {

namespace {

bool IsBase64(std::string_view text) {
    const bool whole = text.size() % 4 == 0;
    for (int i = 0; i < 2 && whole && text.ends_with('='); ++i) text.remove_suffix(1);
    return std::all_of(text.begin(), text.end(),
                       [](unsigned char c) { return (c < 128 && std::isalnum(c)) || c == '+' || c == '/'; });
}

// The number at the beginning of a word, whatever follows.
template <class T>
bool LeadingNumber(std::string_view word, T& value) {
    if (word.starts_with('+')) word.remove_prefix(1);
    return std::from_chars(word.data(), word.data() + word.size(), value).ec == std::errc();
}

class TextWalker {
public:
    TextWalker(const std::string& file, std::string_view text) : file_(file), text_(text), curves_(file) {}

    FbxLinks Walk() {
        while (at_ < text_.size() && text_[at_] != '\0') Step(text_[at_]);
        FinishWord();
        Begin({});
        curves_.Finish();
        return std::move(links_);
    }

private:
    void Step(char c) {
        if (c == '"') {
            const size_t end = std::min(text_.find('"', at_ + 1), text_.size());
            Word(text_.substr(at_, end + 1 - at_));
            at_ = end + 1;
        } else if (c == ';') {
            at_ = std::min(text_.find_first_of("\n\r\f", at_), text_.size());
        } else if (IsMark(c)) {
            Mark(c);
            ++at_;
        } else if (IsSpace(c)) {
            ++at_;
        } else {
            size_t end = at_;
            while (end < text_.size() && !IsMark(text_[end]) && !IsSpace(text_[end]) && text_[end] != '\0' &&
                   text_[end] != '"' && text_[end] != ';')
                ++end;
            Word(text_.substr(at_, end - at_));
            at_ = end;
        }
    }

    static bool IsMark(char c) { return c == '{' || c == '}' || c == ',' || c == ':'; }
    static bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }

    void Mark(char c) {
        if (c == ':') {
            const std::string_view key = word_;
            word_ = {};
            Begin(key);
            return;
        }
        FinishWord();
        if (c == ',') return;
        Begin({});
        if (c == '{' && ++depth_ > kMostFbxBlocks) FailFbxBlocks(file_);
        if (c == '}' && depth_ > 0) --depth_;
    }

    void Begin(std::string_view key) {
        if (key_ == "Layer" && value_ == 0) FailFbxLayer(file_);
        if (key == "AnimationCurve") curves_.Begin();
        // The numbers of an array stand below it, under the key "a".
        if (!key.empty() && key != "a") list_ = key;
        key_ = key;
        value_ = 0;
    }

    void Word(std::string_view word) {
        FinishWord();
        word_ = word;
    }

    // What no colon follows is a value; Assimp does not insist on commas.
    void FinishWord() {
        if (word_.empty()) return;
        uint64_t count = 0;
        if (word_.starts_with('*') && (!LeadingNumber(word_.substr(1), count) || count > text_.size()))
            FailFbxArray(file_);
        if (key_ == "C") Link(word_);
        if (key_ == "Content") Picture(word_);
        if (int64_t ticks = 0; list_ == "KeyTime" && key_ == "a" && LeadingNumber(word_, ticks)) curves_.AddTime(ticks);
        if (double v = 0; list_ == "KeyValueFloat" && key_ == "a" && LeadingNumber(word_, v)) curves_.AddValue(v);
        ++value_;
        word_ = {};
    }

    // C: KIND, CHILD, PARENT
    void Link(std::string_view word) {
        if (value_ == 0) {
            linked_ = word != "\"PP\"";
        } else if (value_ == 1) {
            linked_ = linked_ && LeadingNumber(word, child_);
        } else if (uint64_t parent = 0; value_ == 2 && linked_ && LeadingNumber(word, parent)) {
            links_.push_back({child_, parent});
        }
    }

    // When the first value has no quotes, none of them is taken for a picture.
    void Picture(std::string_view word) {
        const bool quoted = word.size() >= 2 && word.starts_with('"') && word.ends_with('"');
        if (value_ == 0) picture_ = quoted;
        if (picture_ && !(quoted && IsBase64(word.substr(1, word.size() - 2))))
            FailAt(file_, 0, "has a picture that is not base64, expected one that is");
    }

    const std::string& file_;
    std::string_view text_;
    size_t at_ = 0, depth_ = 0;
    std::string_view key_, word_; ///< the last word, until it is known whether it is a key
    std::string_view list_;       ///< the last key that is none of an array's numbers
    int value_ = 0;               ///< number of the value that comes next
    bool linked_ = false, picture_ = false;
    uint64_t child_ = 0;
    FbxLinks links_;
    FbxCurves curves_;
};

} // namespace

FbxLinks CheckFbxText(const std::string& file, std::string_view text) {
    return TextWalker(file, text).Walk();
}

} // namespace host
