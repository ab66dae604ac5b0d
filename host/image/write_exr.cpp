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

/// One line of the picture in the file's types: colour, background, depth.
struct Line {
    explicit Line(const Picture& p) : color(size_t(p.Width()) * 4), background(size_t(p.Width()) * 3) {
        depth.resize(size_t(p.Width()));
    }
    void Fill(const Picture& p, int y) {
        const float* const z = p.Z() ? p.Z() + size_t(y) * size_t(p.Width()) : nullptr;
        for (int x = 0; x < p.Width(); ++x) {
            const AColor c = p.GetPixel(x, y);
            const Color b = p.GetBackground(x, y);
            const float values[] = {c.r, c.g, c.b, c.a};
            for (int i = 0; i < 4; ++i) color[size_t(x) * 4 + size_t(i)] = ToHalf(values[i]);
            for (int i = 0; i < 3; ++i) background[size_t(x) * 3 + size_t(i)] = ToHalf(b[i]);
            if (z) depth[size_t(x)] = -z[x];
        }
    }
    std::vector<Imath::half> color, background;
    std::vector<float> depth;
};

/// Adds a channel whose every line is read from the same buffer, which is filled before each line.
void AddChannel(Imf::Header& header, Imf::FrameBuffer& buffer, const char* name, Imf::PixelType type, void* first,
                size_t step) {
    header.channels().insert(name, Imf::Channel(type));
    buffer.insert(name, Imf::Slice(type, static_cast<char*>(first), step, 0));
}

} // namespace

void WriteExr(const Picture& picture, OutputFile& file) {
    Imf::Header header(picture.Width(), picture.Height(), picture.Aspect());
    header.compression() = Imf::ZIP_COMPRESSION;
    AddAttributes(picture, header);
    Line line(picture);
    Imf::FrameBuffer buffer;
    const char* const colorNames[] = {"R", "G", "B", "A"};
    const char* const backgroundNames[] = {"background.R", "background.G", "background.B"};
    constexpr size_t kHalf = sizeof(Imath::half);
    for (size_t i = 0; i < 4; ++i)
        AddChannel(header, buffer, colorNames[i], Imf::HALF, line.color.data() + i, 4 * kHalf);
    for (size_t i = 0; i < 3 && picture.HasBackground(); ++i)
        AddChannel(header, buffer, backgroundNames[i], Imf::HALF, line.background.data() + i, 3 * kHalf);
    if (picture.Z()) AddChannel(header, buffer, "Z", Imf::FLOAT, line.depth.data(), sizeof(float));

    Stream stream(file);
    Imf::OutputFile out(stream, header, 0);
    out.setFrameBuffer(buffer);
    for (int y = 0; y < picture.Height(); ++y) {
        line.Fill(picture, y);
        out.writePixels(1);
    }
}

} // namespace host
