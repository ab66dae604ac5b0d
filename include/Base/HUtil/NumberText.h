#pragma once
// Numbers in settings files: the "%d" and "%f" forms, with a decimal point whatever the process's locale.

#include <string>

/// "%f": six decimals.
std::string FormatFloat(float v);

/// Reads numbers from a text one after the other, as "%d" and "%f" do: leading blanks and a plus sign are passed over.
class NumberReader {
public:
    explicit NumberReader(const char* text) : at_(text) {}
    /// Reads the next number into `v`; on a mismatch returns false, leaves `v`, and every later read fails too.
    bool Read(int& v);
    bool Read(float& v);

private:
    bool SkipBlanks();
    const char* at_;
    bool failed_ = false;
};
