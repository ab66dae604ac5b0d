// Picture formats by OpenImageIO. It is never given an .exr file: a damaged one may end the process.

#include "image/codecs.h"

#include <algorithm>
#include <memory>

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

namespace host {
namespace {

template <class T>
bool ReadPixels(OIIO::ImageInput& input, const RawImage& image, std::vector<T>& pixels, std::string& error) {
    pixels.resize(size_t(image.width) * size_t(image.height) * size_t(image.channels));
    if (input.read_image(0, 0, 0, image.channels, OIIO::BaseTypeFromC<T>::value, pixels.data())) return true;
    error = input.geterror();
    return false;
}

bool Read(const std::string& path, CheckSizeFn checkSize, RawImage& image, std::string& error) {
    OIIO::ImageSpec config;
    config.attribute("oiio:UnassociatedAlpha", 1); // colour as it stands, not multiplied by alpha
    auto input = OIIO::ImageInput::create(path);
    OIIO::ImageSpec spec;
    if (!input || input->format_name() == std::string("openexr")) {
        error = "unknown kind of picture, expected .png, .jpg, .tif, .hdr or .exr";
        return false;
    }
    if (!input->open(path, spec, config)) {
        error = input->geterror();
        return false;
    }
    checkSize(path, spec.width, spec.height);
    if (spec.nchannels < 1 || spec.depth > 1) {
        error = "this is no flat picture";
        return false;
    }
    image.width = spec.width;
    image.height = spec.height;
    image.channels = std::min(spec.nchannels, 4);
    image.wholeNumbers = !spec.format.is_floating_point();
    return spec.format == OIIO::TypeDesc::UINT8 ? ReadPixels(*input, image, image.bytes, error)
                                                : ReadPixels(*input, image, image.floats, error);
}

bool EncodePng(const uint8_t* rgb, int width, int height, float aspect, const char* software,
               std::vector<unsigned char>& file, std::string& error) {
    const auto output = OIIO::ImageOutput::create("png");
    if (!output) {
        error = "this build's OpenImageIO cannot write .png files";
        return false;
    }
    OIIO::ImageSpec spec(width, height, 3, OIIO::TypeDesc::UINT8);
    spec.attribute("oiio:ColorSpace", "sRGB");
    spec.attribute("Software", software);
    spec.attribute("PixelAspectRatio", aspect);
    OIIO::Filesystem::IOVecOutput sink(file);
    output->set_ioproxy(&sink);
    const bool good =
        output->open("picture.png", spec) && output->write_image(OIIO::TypeDesc::UINT8, rgb) && output->close();
    if (!good) error = output->geterror();
    return good;
}

} // namespace
} // namespace host

extern "C" __attribute__((visibility("default"))) const host::Codecs* velmar_codecs() {
    static const host::Codecs codecs{host::Read, host::EncodePng};
    return &codecs;
}
