#pragma once
// Reading text files line by line and word by word.

#include <cmath>
#include <string>
#include <string_view>

namespace host {

/// Lines of a text, counted from 1. Line ends are "\n" or "\r\n".
class LineScanner {
public:
    explicit LineScanner(std::string_view text) : text_(text) {}
    /// The next line without its end; false at the end of the text.
    bool Next(std::string_view& line);
    int Line() const { return line_; }
    /// Bytes read so far.
    size_t Position() const { return position_; }

private:
    std::string_view text_;
    size_t position_ = 0;
    int line_ = 0;
};

/// Takes the first word (up to a space or tab) off `rest`; empty when there is none.
std::string_view TakeWord(std::string_view& rest);
/// `text` without spaces and tabs at its ends.
std::string_view Trimmed(std::string_view text);

/// The whole of `word` as a number; false when it is none. "nan" and "inf" are numbers; what is too large becomes
/// infinite, what is too small zero.
bool ParseNumber(std::string_view word, double& value);
/// The whole of `word` as a whole number that fits 32 bits.
bool ParseInteger(std::string_view word, int& value);
/// True when the number stays finite as a 32-bit float.
inline bool FitsFloat(double v) {
    return std::isfinite(float(v));
}

} // namespace host
