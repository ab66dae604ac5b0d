#pragma once
// User properties of a node: text lines "key = value".

#include <string>

namespace host {

/// Keys are compared without regard to case; spaces around key and value do not count. The first line of a key counts.
class UserProps {
public:
    bool GetString(const char* key, std::string& value) const;
    /// False when the whole value is no number (a finite float, or a whole number that fits).
    bool GetFloat(const char* key, float& value) const;
    bool GetInt(const char* key, int& value) const;
    /// Replaces the first line of the key or appends one; a null value removes the key.
    void Set(const char* key, const char* value);
    /// The text as a whole.
    const std::string& Text() const { return text_; }
    void SetText(const std::string& text) { text_ = text; }

private:
    struct Line;
    bool Find(const char* key, Line& line) const;
    std::string text_;
};

} // namespace host
