#include "image/check_png.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>

#include "core/error.h"

namespace host {

namespace {

constexpr unsigned char kSignature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};

/// The checksum of ISO 3309 over more bytes; begin with 0.
uint32_t Crc32(uint32_t crc, const unsigned char* bytes, size_t n) {
    static const std::array<uint32_t, 256> table = [] {
        std::array<uint32_t, 256> t{};
        for (uint32_t i = 0; i < 256; ++i) {
            t[i] = i;
            for (int bit = 0; bit < 8; ++bit) t[i] = (t[i] & 1u) ? 0xedb88320u ^ (t[i] >> 1) : t[i] >> 1;
        }
        return t;
    }();
    crc = ~crc;
    for (size_t i = 0; i < n; ++i) crc = table[(crc ^ bytes[i]) & 0xff] ^ (crc >> 8);
    return ~crc;
}

uint32_t BigEndian(const unsigned char* b) {
    return uint32_t(b[0]) << 24 | uint32_t(b[1]) << 16 | uint32_t(b[2]) << 8 | uint32_t(b[3]);
}

bool Read(std::istream& in, void* to, size_t bytes) {
    return bool(in.read(static_cast<char*>(to), std::streamsize(bytes)));
}

/// One chunk: length, name, data, checksum over name and data. False when it is damaged.
bool ReadChunk(std::istream& in, bool& last) {
    unsigned char head[8], stored[4], piece[16384];
    if (!Read(in, head, sizeof head)) return false;
    uint32_t crc = Crc32(0, head + 4, 4);
    for (uint32_t left = BigEndian(head); left > 0;) {
        const uint32_t n = left < sizeof piece ? left : uint32_t(sizeof piece);
        if (!Read(in, piece, n)) return false;
        crc = Crc32(crc, piece, n);
        left -= n;
    }
    last = std::memcmp(head + 4, "IEND", 4) == 0;
    return Read(in, stored, sizeof stored) && BigEndian(stored) == crc;
}

} // namespace

void CheckPng(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    unsigned char signature[sizeof kSignature];
    if (!Read(in, signature, sizeof signature) || std::memcmp(signature, kSignature, sizeof kSignature) != 0) return;
    for (bool last = false; !last;)
        if (!ReadChunk(in, last)) throw Error(path + ": cannot read: the .png file is damaged or cut off");
}

} // namespace host
