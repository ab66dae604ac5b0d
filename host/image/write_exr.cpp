#include "image/write_exr.h"

#include <algorithm>
#include <vector>

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfIO.h>
#include <OpenEXR/ImfOutputFile.h>
#include <OpenEXR/ImfStandardAttributes.h>
#include <OpenEXR/ImfStringAttribute.h>
#include <OpenEXR/ImfThreading.h>

namespace host {

namespace {

class Stream : public Imf::OStream {
public:
    explicit Stream(OutputFile& file) : OStream("picture"), file_(file) {}
    void write(const char c[], int n) override { file_.Write(c, size_t(n)); }
    uint64_t tellp() override { return file_.Tell(); }
    void seekp(uint64_t position) override { file_.Seek(position); }

private:
    OutputFile& file_;
};

Imath::M44f ToM44(const Matrix3& m) {
    Imath::M44f out;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 3; ++j) out[i][j] = m.GetRow(i)[j];
    return out;
}

/// Camera space to the unit square of the picture, upper left (0, 0), after division by the fourth component.
Imath::M44f CameraToNdc(const RenderInfo& info, int width, int height) {
    const float w = float(width), h = float(height);
    const float sx = info.xscale[0] / w, sy = info.yscale[0] / h, cx = info.xc / w, cy = info.yc / h;
    if (info.projType == 1) return {sx, 0, 0, 0, 0, sy, 0, 0, 0, 0, -1, 0, cx, cy, 0, 1};
    return {-sx, 0, 0, 0, 0, -sy, 0, 0, -cx, -cy, -1, -1, 0, 0, 0, 0};
}

void AddAttributes(const Picture& picture, Imf::Header& header) {
    header.insert("velmar:version", Imf::StringAttribute(VELMAR_VERSION));
    if (picture.framesPerSecond > 0) Imf::addFramesPerSecond(header, Imf::Rational(picture.framesPerSecond, 1));
    if (const RenderInfo* const info = picture.GetRenderInfo()) {
        const Imath::M44f toCamera = ToM44(info->worldToCam[0]);
        Imf::addWorldToCamera(header, toCamera);
        Imf::addWorldToNDC(header, toCamera * CameraToNdc(*info, picture.Width(), picture.Height()));
    }
}

/// Halves end at 65504; beyond it compositing would meet infinities.
Imath::half ToHalf(float v) {
    return Imath::half(std::clamp(v, -65504.0f, 65504.0f));
}

/// Some lines of the picture in the file's types: colour, background, depth.
struct Strip {
    Strip(const Picture& p, int lines) : width(size_t(p.Width())) {
        const size_t pixels = width * size_t(lines);
        color.resize(pixels * 4);
        background.resize(pixels * 3);
        depth.resize(pixels);
    }
    /// Takes over `lines` lines from line `first` on.
    void Fill(const Picture& p, int first, int lines) {
        for (int y = 0; y < lines; ++y) FillLine(p, first + y, size_t(y) * width);
    }
    void FillLine(const Picture& p, int y, size_t at) {
        const float* const z = p.Z() ? p.Z() + size_t(y) * width : nullptr;
        for (int x = 0; x < p.Width(); ++x, ++at) {
            const AColor c = p.GetPixel(x, y);
            const Color b = p.GetBackground(x, y);
            const float values[] = {c.r, c.g, c.b, c.a};
            for (size_t i = 0; i < 4; ++i) color[at * 4 + i] = ToHalf(values[i]);
            for (size_t i = 0; i < 3; ++i) background[at * 3 + i] = ToHalf(b[int(i)]);
            if (z) depth[at] = -z[x];
        }
    }
    size_t width;
    std::vector<Imath::half> color, background;
    std::vector<float> depth;
};

struct Channel {
    const char* name;
    Imf::PixelType type;
    char* data; ///< of the strip's first pixel
    size_t step;
};

std::vector<Channel> Channels(const Picture& picture, Strip& strip) {
    constexpr size_t kHalf = sizeof(Imath::half);
    const auto at = [](auto& values, size_t i) { return reinterpret_cast<char*>(values.data() + i); };
    std::vector<Channel> channels;
    const char* const colorNames[] = {"R", "G", "B", "A"};
    const char* const backgroundNames[] = {"background.R", "background.G", "background.B"};
    for (size_t i = 0; i < 4; ++i) channels.push_back({colorNames[i], Imf::HALF, at(strip.color, i), 4 * kHalf});
    for (size_t i = 0; i < 3 && picture.HasBackground(); ++i)
        channels.push_back({backgroundNames[i], Imf::HALF, at(strip.background, i), 3 * kHalf});
    if (picture.Z()) channels.push_back({"Z", Imf::FLOAT, at(strip.depth, 0), sizeof(float)});
    return channels;
}

} // namespace

void WriteExr(const Picture& picture, OutputFile& file, int threads) {
    // The file packs blocks of that many lines, each on a thread of its own.
    constexpr int kBlockLines = 16;
    const int stripLines = std::min(kBlockLines * std::max(1, threads), picture.Height());
    Imf::Header header(picture.Width(), picture.Height(), picture.Aspect());
    header.compression() = Imf::ZIP_COMPRESSION;
    AddAttributes(picture, header);
    Strip strip(picture, stripLines);
    const std::vector<Channel> channels = Channels(picture, strip);
    for (const Channel& c : channels) header.channels().insert(c.name, Imf::Channel(c.type));

    if (threads > 1 && Imf::globalThreadCount() < threads) Imf::setGlobalThreadCount(threads);
    Stream stream(file);
    Imf::OutputFile out(stream, header, threads > 1 ? threads : 0);
    for (int y = 0; y < picture.Height(); y += stripLines) {
        const int lines = std::min(stripLines, picture.Height() - y);
        strip.Fill(picture, y, lines);
        Imf::FrameBuffer buffer;
        for (const Channel& c : channels) {
            const size_t lineStep = c.step * size_t(picture.Width());
            buffer.insert(c.name, Imf::Slice(c.type, c.data - size_t(y) * lineStep, c.step, lineStep));
        }
        out.setFrameBuffer(buffer);
        out.writePixels(lines);
    }
}

} // namespace host
