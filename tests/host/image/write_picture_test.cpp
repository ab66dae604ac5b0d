#include "image/write_picture.h"

#include <csignal>
#include <filesystem>
#include <fstream>

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfInputFile.h>
#include <OpenEXR/ImfStandardAttributes.h>
#include <OpenEXR/ImfStringAttribute.h>
#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "core/error.h"
#include "folder_test.h"
#include "image/color_encoding.h"
#include "image/packed_normal.h"

namespace host {
namespace {

namespace fs = std::filesystem;

class WritePictureTest : public FolderTest {
protected:
    int FilesThere() const {
        int n = 0;
        for ([[maybe_unused]] const auto& entry : fs::directory_iterator(folder_)) ++n;
        return n;
    }
    std::string FailureOf(const std::string& path) const {
        try {
            WritePicture(Sample(), path);
        } catch (const Error& e) {
            return e.what();
        }
        return "";
    }
    static Picture Sample() {
        Picture p(3, 2, 1.5f);
        p.PutPixel(0, 0, {1, 0.5f, 0, 1});
        p.PutPixel(1, 0, {0.25f, 0, 0, 0.5f});
        p.PutPixel(2, 1, {70000, 2, -1, 1});
        p.AddChannels(BMM_CHAN_Z);
        p.Z()[0] = -12.5f;
        p.PutBackground(1, 0, {0, 0.25f, 0});
        p.PutBackground(2, 0, {0, 0.5f, 1});
        p.framesPerSecond = 24;
        return p;
    }
};

std::vector<float> ReadChannel(const std::string& path, const char* name, float missing) {
    Imf::InputFile in(path.c_str());
    const Imath::Box2i box = in.header().dataWindow();
    const int w = box.max.x + 1, h = box.max.y + 1;
    std::vector<float> values(size_t(w) * size_t(h));
    Imf::FrameBuffer buffer;
    buffer.insert(name, Imf::Slice(Imf::FLOAT, reinterpret_cast<char*>(values.data()), sizeof(float),
                                   sizeof(float) * size_t(w), 1, 1, missing));
    in.setFrameBuffer(buffer);
    in.readPixels(0, h - 1);
    return values;
}

TEST_F(WritePictureTest, ExrHoldsLinearPremultipliedHalfsAndFloatDepth) {
    const std::string path = Path("out.exr");
    WritePicture(Sample(), path);
    EXPECT_EQ(ReadChannel(path, "R", -9), (std::vector<float>{1, 0.25f, 0, 0, 0, 65504}));
    EXPECT_EQ(ReadChannel(path, "G", -9), (std::vector<float>{0.5f, 0, 0, 0, 0, 2}));
    EXPECT_EQ(ReadChannel(path, "B", -9), (std::vector<float>{0, 0, 0, 0, 0, -1}));
    EXPECT_EQ(ReadChannel(path, "A", -9), (std::vector<float>{1, 0.5f, 0, 0, 0, 1}));
    EXPECT_EQ(ReadChannel(path, "background.G", -9), (std::vector<float>{0, 0.25f, 0.5f, 0, 0, 0}));
    EXPECT_EQ(ReadChannel(path, "Z", -9), (std::vector<float>{12.5f, 1e30f, 1e30f, 1e30f, 1e30f, 1e30f}));
    Imf::InputFile in(path.c_str());
    EXPECT_EQ(in.header().channels().findChannel("R")->type, Imf::HALF);
    EXPECT_EQ(in.header().channels().findChannel("Z")->type, Imf::FLOAT);
    EXPECT_EQ(in.header().pixelAspectRatio(), 1.5f);
    ASSERT_NE(in.header().findTypedAttribute<Imf::StringAttribute>("velmar:version"), nullptr);
    EXPECT_FALSE(in.header().typedAttribute<Imf::StringAttribute>("velmar:version").value().empty());
    EXPECT_EQ(Imf::framesPerSecond(in.header()), Imf::Rational(24, 1));
}

TEST_F(WritePictureTest, ExrLayersHoldTheChannels) {
    Picture p(2, 1);
    p.AddChannels(BMM_CHAN_MTL_ID | BMM_CHAN_NODE_ID | BMM_CHAN_COVERAGE | BMM_CHAN_COLOR | BMM_CHAN_REALPIX |
                  BMM_CHAN_UV | BMM_CHAN_NORMAL | BMM_CHAN_VELOC);
    ChannelType type;
    const auto at = [&](uint32_t channel) { return p.GetChannel(channel, type); };
    static_cast<uint8_t*>(at(BMM_CHAN_MTL_ID))[1] = 7;
    static_cast<uint16_t*>(at(BMM_CHAN_NODE_ID))[1] = 40000;
    static_cast<uint8_t*>(at(BMM_CHAN_COVERAGE))[1] = 255;
    static_cast<uint8_t*>(at(BMM_CHAN_COLOR))[4] = 51; // green of the second pixel
    static_cast<RealPixel*>(at(BMM_CHAN_REALPIX))[1] = {128, 64, 0, 130};
    static_cast<Point2*>(at(BMM_CHAN_UV))[1] = {0.25f, -3};
    static_cast<uint32_t*>(at(BMM_CHAN_NORMAL))[1] = PackNormal({0, 0, 1});
    static_cast<Point2*>(at(BMM_CHAN_VELOC))[1] = {1.5f, -70000};
    const std::string path = Path("layers.exr");
    WritePicture(p, path, 2);
    const std::pair<const char*, float> expected[] = {
        {"materialid", 7},  {"objectid", 40000}, {"coverage", 1},      {"color.R", 0}, {"color.G", 0.2f},
        {"realpixel.R", 2}, {"realpixel.G", 1},  {"uv.u", 0.25f},      {"uv.v", -3},   {"N.X", 0},
        {"N.Z", 1},         {"forward.u", 1.5f}, {"forward.v", -70000}};
    for (const auto& [name, value] : expected) {
        const std::vector<float> read = ReadChannel(path, name, -9);
        EXPECT_EQ(read[0], 0) << name;
        EXPECT_NEAR(read[1], value, 1e-3f) << name;
    }
    Imf::InputFile in(path.c_str());
    EXPECT_EQ(in.header().channels().findChannel("materialid")->type, Imf::UINT);
    EXPECT_EQ(in.header().channels().findChannel("N.X")->type, Imf::FLOAT);
    EXPECT_EQ(in.header().channels().findChannel("color.R")->type, Imf::HALF);
    EXPECT_EQ(in.header().channels().findChannel("transparency.R"), nullptr);
}

TEST_F(WritePictureTest, ExrWithoutBackgroundOrDepthHasNoSuchChannels) {
    Picture p(1, 1);
    p.PutPixel(0, 0, {1, 1, 1, 1});
    WritePicture(p, Path("bare.exr"));
    Imf::InputFile in(Path("bare.exr").c_str());
    EXPECT_EQ(in.header().channels().findChannel("Z"), nullptr);
    EXPECT_EQ(in.header().channels().findChannel("background.R"), nullptr);
}

TEST_F(WritePictureTest, ExrMatricesPutPointsWhereTheProjectionDoes) {
    for (const int projType : {0, 1}) {
        Picture p(8, 4);
        RenderInfo info;
        info.projType = projType;
        info.xc = 4, info.yc = 2;
        info.xscale[0] = projType == 1 ? 2.0f : -4.0f;
        info.yscale[0] = -info.xscale[0];
        info.worldToCam[0] = TransMatrix({1, 2, -10});
        p.SetRenderInfo(info);
        WritePicture(p, Path("m.exr"));
        Imf::InputFile in(Path("m.exr").c_str());
        const Point3 world(0.5f, -1, 3), camera = world * info.worldToCam[0];
        const Point2 screen = info.MapCamToScreen(camera);
        const Imath::V3f ndc = Imath::V3f(world.x, world.y, world.z) * Imf::worldToNDC(in.header());
        EXPECT_NEAR(ndc.x * 8, screen.x, 1e-5f);
        EXPECT_NEAR(ndc.y * 4, screen.y, 1e-5f);
        const Imath::V3f c = Imath::V3f(world.x, world.y, world.z) * Imf::worldToCamera(in.header());
        EXPECT_EQ(Point3(c.x, c.y, c.z), camera);
    }
}

TEST_F(WritePictureTest, PngIsSrgbOverTheBackgroundAndOpaque) {
    const std::string path = Path("out.PNG");
    WritePicture(Sample(), path);
    auto in = OIIO::ImageInput::open(path);
    ASSERT_TRUE(in);
    EXPECT_EQ(in->spec().nchannels, 3);
    EXPECT_EQ(in->spec().format, OIIO::TypeDesc::UINT8);
    std::vector<uint8_t> pixels(18);
    ASSERT_TRUE(in->read_image(0, 0, 0, 3, OIIO::TypeDesc::UINT8, pixels.data()));
    const uint8_t half = LinearToSrgbByte(0.5f), quarter = LinearToSrgbByte(0.25f);
    EXPECT_EQ(half, 188);
    EXPECT_EQ(quarter, 137);
    const std::vector<uint8_t> expected{255, half, 0, quarter, quarter, 0, 0,   half, 255, //
                                        0,   0,    0, 0,       0,       0, 255, 255,  0};
    EXPECT_EQ(pixels, expected);
}

TEST(ColorEncoding, CurvesAreInverseAndBytesSurvive) {
    for (int i = 0; i < 256; ++i) EXPECT_EQ(LinearToSrgbByte(SrgbToLinear(float(i) / 255.0f)), i);
    EXPECT_EQ(LinearToSrgbByte(-1), 0);
    EXPECT_EQ(LinearToSrgbByte(7), 255);
    EXPECT_EQ(LinearToSrgbByte(std::nanf("")), 0);
}

TEST_F(WritePictureTest, ReplacesAnOlderFileAndLeavesNothingBeside) {
    std::ofstream(Path("a.png")) << "old";
    WritePicture(Sample(), Path("a.png"));
    EXPECT_GT(fs::file_size(Path("a.png")), 30u);
    EXPECT_EQ(FilesThere(), 1);
}

TEST_F(WritePictureTest, ALinkStaysALink) {
    fs::create_symlink(folder_ / "real.png", folder_ / "link.png");
    WritePicture(Sample(), Path("link.png"));
    EXPECT_TRUE(fs::is_symlink(Path("link.png")));
    EXPECT_TRUE(fs::is_regular_file(Path("real.png")));
}

TEST_F(WritePictureTest, UnknownExtensionListsTheKnownOnes) {
    const std::string path = Path("a.bmp");
    EXPECT_EQ(FailureOf(path), path + ": cannot write a picture: unknown extension '.bmp', expected one of .png, .exr");
    EXPECT_EQ(FailureOf(Path("a")), Path("a") + ": cannot write a picture: no extension, expected one of .png, .exr");
    EXPECT_THROW(CheckPictureOutput(path), Error);
    EXPECT_EQ(FilesThere(), 0);
}

TEST_F(WritePictureTest, UnwritablePlacesAreToldInOneLineAndLeaveNothing) {
    const std::string missing = Path("no/such/a.png");
    EXPECT_EQ(FailureOf(missing), missing + ": cannot write: there is no folder '" + Path("no/such") + "'");
    fs::create_directory(folder_ / "folder.exr");
    EXPECT_EQ(FailureOf(Path("folder.exr")),
              Path("folder.exr") + ": cannot write: this is a folder, expected the name of a file");
    EXPECT_THROW(CheckPictureOutput(missing), Error);
    EXPECT_THROW(CheckPictureOutput(Path("folder.exr")), Error);
    // Nobody makes files there, whoever asks.
    EXPECT_THROW(CheckPictureOutput("/proc/velmar_test.png"), Error);
    EXPECT_EQ(FilesThere(), 1);
}

TEST_F(WritePictureTest, ADeviceIsNotReplaced) {
    fs::create_symlink("/dev/null", folder_ / "null.png");
    EXPECT_EQ(FailureOf(Path("null.png")),
              Path("null.png") + ": cannot write: this is a device or the like, expected the name of a file");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(WritePictureTest, CheckingLeavesAnOlderFileAlone) {
    std::ofstream(Path("a.exr")) << "old";
    CheckPictureOutput(Path("a.exr"));
    EXPECT_EQ(fs::file_size(Path("a.exr")), 3u);
    EXPECT_EQ(FilesThere(), 1);
}

TEST_F(WritePictureTest, AFullDiskLeavesTheOldFileAndNothingElse) {
    Picture noise(64, 64);
    uint32_t state = 1;
    for (int i = 0; i < 64 * 64; ++i) {
        state = state * 1664525u + 1013904223u;
        noise.PutPixel(i % 64, i / 64, {float(state >> 8) / 16777216.0f, float(state & 255) / 255.0f, 0.5f, 1});
    }
    for (const char* const name : {"full.png", "full.exr"}) {
        std::ofstream(Path(name)) << "old";
        rlimit former{};
        ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &former), 0);
        const auto handler = std::signal(SIGXFSZ, SIG_IGN);
        rlimit small = former;
        small.rlim_cur = 1000;
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
        std::string message;
        try {
            WritePicture(noise, Path(name));
        } catch (const Error& e) {
            message = e.what();
        }
        setrlimit(RLIMIT_FSIZE, &former);
        std::signal(SIGXFSZ, handler);
        EXPECT_EQ(message, Path(name) + ": cannot write: File too large");
        EXPECT_EQ(fs::file_size(Path(name)), 3u);
    }
    EXPECT_EQ(FilesThere(), 2);
}

TEST_F(WritePictureTest, APictureWithoutPixelsIsRefused) {
    EXPECT_THROW(WritePicture(Picture(), Path("none.png")), Error);
    EXPECT_EQ(FilesThere(), 0);
}

} // namespace
} // namespace host
