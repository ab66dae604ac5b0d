// Numbers in settings files.

#include "Base/HUtil/NumberText.h"

#include <charconv>
#include <cstring>

std::string FormatFloat(float v) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, v, std::chars_format::fixed, 6).ptr;
    return std::string(text, end);
}

bool NumberReader::SkipBlanks() {
    if (failed_) return false;
    at_ += std::strspn(at_, " \t\n\v\f\r");
    if (*at_ == '+' && at_[1] != '-') ++at_;
    return true;
}

bool NumberReader::Read(int& v) {
    if (!SkipBlanks()) return false;
    const auto result = std::from_chars(at_, at_ + std::strlen(at_), v);
    failed_ = result.ec != std::errc();
    at_ = result.ptr;
    return !failed_;
}

bool NumberReader::Read(float& v) {
    if (!SkipBlanks()) return false;
    float parsed = 0.0f;
    const char* end = at_ + std::strlen(at_);
    auto result = std::from_chars(at_, end, parsed);
    if (result.ec == std::errc::result_out_of_range) {
        // Too small for a float reads as zero, too large as infinity, as the C library does.
        double wide = 0.0;
        result = std::from_chars(at_, end, wide);
        parsed = float(wide);
    }
    failed_ = result.ec != std::errc();
    if (!failed_) v = parsed;
    at_ = result.ptr;
    return !failed_;
}
