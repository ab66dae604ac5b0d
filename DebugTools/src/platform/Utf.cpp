#include "Utf.h"

#include <cstdint>

namespace diag {

namespace {

// Writes one code point; gives its length, at most 4.
size_t Encode(uint32_t code, char (&bytes)[4]) {
    const auto tail = [&](int shift) { return static_cast<char>(0x80 | ((code >> shift) & 63)); };
    if (code < 0x80) {
        bytes[0] = static_cast<char>(code);
        return 1;
    }
    if (code < 0x800) {
        bytes[0] = static_cast<char>(0xC0 | code >> 6);
        bytes[1] = tail(0);
        return 2;
    }
    if (code < 0x10000) {
        bytes[0] = static_cast<char>(0xE0 | code >> 12);
        bytes[1] = tail(6);
        bytes[2] = tail(0);
        return 3;
    }
    bytes[0] = static_cast<char>(0xF0 | code >> 18);
    bytes[1] = tail(12);
    bytes[2] = tail(6);
    bytes[3] = tail(0);
    return 4;
}

} // namespace

size_t Utf16ToUtf8(const char16_t* text, char* target, size_t size, bool* fits) {
    size_t length = 0;
    if (fits) *fits = true;
    for (; *text; ++text) {
        uint32_t code = *text;
        if (code >= 0xD800 && code < 0xDC00 && text[1] >= 0xDC00 && text[1] < 0xE000)
            code = 0x10000 + ((code - 0xD800) << 10) + (*++text - 0xDC00u);
        else if (code >= 0xD800 && code < 0xE000)
            code = 0xFFFD;
        char bytes[4];
        const size_t count = Encode(code, bytes);
        if (length + count > size) {
            if (fits) *fits = false;
            break;
        }
        for (size_t i = 0; i < count; ++i) target[length++] = bytes[i];
    }
    return length;
}

} // namespace diag
