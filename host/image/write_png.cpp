#include "image/write_png.h"

#include <string>
#include <vector>

#include "core/error.h"
#include "image/codecs.h"
#include "image/color_encoding.h"

namespace host {

void WritePng(const Picture& picture, OutputFile& file) {
    std::vector<uint8_t> pixels;
    pixels.reserve(size_t(picture.Width()) * size_t(picture.Height()) * 3);
    for (int y = 0; y < picture.Height(); ++y)
        for (int x = 0; x < picture.Width(); ++x) {
            const Color c = picture.Shown(x, y);
            for (int i = 0; i < 3; ++i) pixels.push_back(LinearToSrgbByte(c[i]));
        }
    // Encoded in memory, so that every failure to write is seen by the one who writes.
    std::vector<unsigned char> encoded;
    std::string error;
    if (!GetCodecs().encodePng(pixels.data(), picture.Width(), picture.Height(), picture.Aspect(),
                               "velmar " VELMAR_VERSION, encoded, error))
        throw Error("cannot encode the picture: " + error);
    file.Write(encoded.data(), encoded.size());
}

} // namespace host
