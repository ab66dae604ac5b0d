#include "image/write_png.h"

#include <memory>
#include <vector>

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include "core/error.h"
#include "image/color_encoding.h"

namespace host {

void WritePng(const Picture& picture, OutputFile& file) {
    const auto output = OIIO::ImageOutput::create("png");
    if (!output) throw Error("this build's OpenImageIO cannot write .png files");
    OIIO::ImageSpec spec(picture.Width(), picture.Height(), 3, OIIO::TypeDesc::UINT8);
    spec.attribute("oiio:ColorSpace", "sRGB");
    spec.attribute("Software", "velmar " VELMAR_VERSION);
    spec.attribute("PixelAspectRatio", picture.Aspect());

    // Encoded in memory, so that every failure to write is seen by the one who writes.
    std::vector<unsigned char> encoded;
    OIIO::Filesystem::IOVecOutput sink(encoded);
    output->set_ioproxy(&sink);
    bool good = output->open("picture.png", spec);
    std::vector<unsigned char> line(size_t(picture.Width()) * 3);
    for (int y = 0; good && y < picture.Height(); ++y) {
        for (int x = 0; x < picture.Width(); ++x) {
            const Color c = picture.Shown(x, y);
            for (int i = 0; i < 3; ++i) line[size_t(x) * 3 + size_t(i)] = LinearToSrgbByte(c[i]);
        }
        good = output->write_scanline(y, 0, OIIO::TypeDesc::UINT8, line.data());
    }
    good = good && output->close();
    if (!good) throw Error("cannot encode the picture: " + output->geterror());
    file.Write(encoded.data(), encoded.size());
}

} // namespace host
