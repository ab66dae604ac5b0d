#include "image/read_exr.h"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfInputFile.h>
#include <OpenEXR/ImfTestFile.h>

#include "core/error.h"

namespace host {

Image ReadExr(const std::string& path) {
    bool tiled = false, deep = false, parts = false;
    if (!Imf::isOpenExrFile(path.c_str(), tiled, deep, parts))
        throw Error(path + ": cannot read: this is no .exr file");
    if (deep) throw Error(path + ": cannot read: this is a deep picture, expected a flat one");
    Imf::InputFile file(path.c_str(), 0);
    const Imath::Box2i box = file.header().dataWindow();
    const int64_t width = int64_t(box.max.x) - box.min.x + 1, height = int64_t(box.max.y) - box.min.y + 1;
    CheckImageSize(path, width, height);

    Image image;
    image.width_ = int(width);
    image.height_ = int(height);
    image.floats_.resize(size_t(width) * size_t(height) * 4);
    const Imf::ChannelList& channels = file.header().channels();
    const bool grey = !channels.findChannel("R") && channels.findChannel("Y");
    if (!grey && !channels.findChannel("R") && !channels.findChannel("G") && !channels.findChannel("B"))
        throw Error(path + ": cannot read: there is no colour, expected channels R, G, B or Y");
    Imf::FrameBuffer buffer;
    const char* const names[] = {"R", "G", "B", "A"};
    for (size_t i = 0; i < 4; ++i) {
        const char* const name = grey && i < 3 ? "Y" : names[i];
        if (grey && (i == 1 || i == 2)) continue; // copied from the first afterwards: a buffer takes a name once
        buffer.insert(name, Imf::Slice::Make(Imf::FLOAT, image.floats_.data() + i, box, 4 * sizeof(float), 0, 1, 1,
                                             i == 3 ? 1.0 : 0.0));
    }
    file.setFrameBuffer(buffer);
    file.readPixels(box.min.y, box.max.y);
    if (grey)
        for (size_t i = 0; i < image.floats_.size(); i += 4)
            image.floats_[i + 1] = image.floats_[i + 2] = image.floats_[i];
    return image;
}

} // namespace host
