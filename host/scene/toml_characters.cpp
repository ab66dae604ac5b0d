#include "scene/toml_characters.h"

#include <cstdint>

namespace host {

namespace {

constexpr uint32_t kAway = 0x40000;

// A character and how many bytes it takes; a byte that begins none stands for itself, as number 0.
struct Character {
    uint32_t number = 0;
    size_t bytes = 1;
};

Character CharacterAt(std::string_view text, size_t at) {
    const auto byte = [&](size_t i) { return at + i < text.size() ? uint32_t(uint8_t(text[at + i])) : 0u; };
    const uint32_t first = byte(0);
    const size_t bytes = first < 0xc2 ? 1 : first < 0xe0 ? 2 : first < 0xf0 ? 3 : first < 0xf5 ? 4 : 1;
    if (bytes == 1) return {first < 0x80 ? first : 0, 1};
    uint32_t number = first & (0x7fu >> bytes);
    for (size_t i = 1; i < bytes; ++i) {
        if ((byte(i) & 0xc0) != 0x80) return {};
        number = number << 6 | (byte(i) & 0x3f);
    }
    // Longer than necessary, or half of a pair of another encoding: no characters either.
    constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    if (number < kLeast[bytes] || (number >= 0xd800 && number < 0xe000)) return {};
    return {number, bytes};
}

void Append(std::string& out, uint32_t number) {
    const auto tail = [&](int shift) { out.push_back(char(0x80 | (number >> shift & 0x3f))); };
    if (number < 0x800) {
        out.push_back(char(0xc0 | number >> 6));
    } else if (number < 0x10000) {
        out.push_back(char(0xe0 | number >> 12));
        tail(6);
    } else {
        out.push_back(char(0xf0 | number >> 18));
        tail(12);
        tail(6);
    }
    tail(0);
}

bool MovesAway(uint32_t number) {
    return number >= 0x80 && number <= 0xffff;
}

bool MovesBack(uint32_t number) {
    return number >= kAway && MovesAway(number - kAway);
}

// `text` with every character that `moves` accepts replaced by the one `distance` behind it.
template <class Moves>
std::string Moved(std::string_view text, Moves moves, uint32_t distance) {
    std::string out;
    out.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        const Character c = CharacterAt(text, at);
        if (moves(c.number))
            Append(out, c.number + distance);
        else
            out.append(text.substr(at, c.bytes));
        at += c.bytes;
    }
    return out;
}

} // namespace

std::string MoveCharactersAway(std::string_view text) {
    return Moved(text, MovesAway, kAway);
}

std::string MoveCharactersBack(std::string_view text) {
    return Moved(text, MovesBack, 0u - kAway);
}

size_t FindMovedCharacter(std::string_view text) {
    for (size_t at = 0; at < text.size();) {
        const Character c = CharacterAt(text, at);
        if (MovesBack(c.number)) return at;
        at += c.bytes;
    }
    return std::string_view::npos;
}

} // namespace host
