#include "image/load_image.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>

#include "core/error.h"
#include "image/check_png.h"
#include "image/codecs.h"
#include "image/color_encoding.h"
#include "image/embedded_image.h"
#include "image/read_exr.h"

namespace host {

void CheckImageSize(const std::string& path, int64_t width, int64_t height) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    if (width < 1 || height < 1) throw Error(path + ": cannot read: the picture is " + size + " pixels");
    // Sides first: their product must not overflow.
    if (width > kMaxImagePixels || height > kMaxImagePixels || width * height > kMaxImagePixels)
        throw Error(path + ": cannot read: the picture is " + size + " pixels, expected at most " +
                    std::to_string(kMaxImagePixels));
}

namespace {

/// Spreads pixels of `n` channels over four: grey to all colours, missing alpha to `opaque`.
template <class T>
void Spread(const std::vector<T>& in, int n, T opaque, std::vector<T>& out) {
    const size_t channels = size_t(n), pixels = in.size() / channels;
    out.resize(pixels * 4);
    for (size_t i = 0; i < pixels; ++i) {
        const T* const from = &in[i * channels];
        T* const to = &out[i * 4];
        for (size_t c = 0; c < 3; ++c) to[c] = n >= 3 ? from[c] : from[0];
        to[3] = n == 2 ? from[1] : n >= 4 ? from[3] : opaque;
    }
}

std::string LowerExtension(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& c : extension) c = char(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

/// The first bytes of an .exr file, whatever its name says: such files must not reach OpenImageIO.
bool StartsLikeExr(const std::string& path) {
    unsigned char magic[4] = {};
    std::FILE* const f = std::fopen(path.c_str(), "rb");
    if (!f) return false;
    const bool whole = std::fread(magic, 1, 4, f) == 4;
    std::fclose(f);
    return whole && magic[0] == 0x76 && magic[1] == 0x2f && magic[2] == 0x31 && magic[3] == 0x01;
}

} // namespace

Image ReadOther(const std::string& path, bool raw) {
    RawImage file;
    std::string error;
    if (!GetCodecs().readImage(path, CheckImageSize, file, error)) throw Error(path + ": cannot read: " + error);
    Image image;
    image.width_ = file.width;
    image.height_ = file.height;
    const bool decode = file.wholeNumbers && file.channels >= 3 && !raw;
    if (!file.bytes.empty()) {
        Spread(file.bytes, file.channels, uint8_t(255), image.bytes_);
        image.decode_.resize(256);
        for (int i = 0; i < 256; ++i) {
            const float v = float(i) / 255.0f;
            image.decode_[size_t(i)] = decode ? SrgbToLinear(v) : v;
        }
        return image;
    }
    Spread(file.floats, file.channels, 1.0f, image.floats_);
    for (size_t i = 0; decode && i < image.floats_.size(); ++i)
        if (i % 4 != 3) image.floats_[i] = SrgbToLinear(image.floats_[i]);
    return image;
}

namespace {

// The same as for a file; messages name what the user knows.
Image LoadEmbedded(const std::string& path, const std::string& bytes, bool raw) {
    const EmbeddedImageFile file(bytes);
    try {
        return LoadImage(file.Path(), raw);
    } catch (const Error& e) {
        const std::string text = e.what();
        throw Error(text.starts_with(file.Path()) ? path + text.substr(file.Path().size()) : path + ": " + text);
    }
}

} // namespace

Image LoadImage(const std::string& path, bool raw) {
    const auto embedded = FindEmbeddedImage(path);
    std::error_code ec;
    if (!embedded && !std::filesystem::is_regular_file(path, ec))
        throw Error(path + ": cannot read: there is no such file");
    try {
        if (embedded) return LoadEmbedded(path, *embedded, raw);
        if (LowerExtension(path) == ".exr" || StartsLikeExr(path)) return ReadExr(path);
        CheckPng(path);
        return ReadOther(path, raw);
    } catch (const Error&) {
        throw;
    } catch (const std::exception& e) {
        throw Error(path + ": cannot read: " + e.what());
    }
}

} // namespace host
