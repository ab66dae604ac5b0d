#include "image/load_image.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include "core/error.h"
#include "folder_test.h"
#include "image/color_encoding.h"
#include "image/embedded_image.h"
#include "image/write_picture.h"

namespace host {
namespace {

namespace fs = std::filesystem;

class LoadImageTest : public FolderTest {
protected:
    std::string FailureOf(const std::string& path) const {
        try {
            LoadImage(path, false);
        } catch (const Error& e) {
            return e.what();
        }
        return "";
    }
    template <class T>
    std::string Write(const std::string& name, int channels, const std::vector<T>& pixels) const {
        const int w = 2, h = int(pixels.size()) / channels / 2;
        auto out = OIIO::ImageOutput::create(Path(name));
        OIIO::ImageSpec spec(w, h, channels, OIIO::BaseTypeFromC<T>::value);
        spec.attribute("oiio:UnassociatedAlpha", 1);
        EXPECT_TRUE(out && out->open(Path(name), spec));
        EXPECT_TRUE(out->write_image(OIIO::BaseTypeFromC<T>::value, pixels.data()));
        EXPECT_TRUE(out->close());
        return Path(name);
    }
};

TEST_F(LoadImageTest, EightBitColoursAreDecodedAndAlphaIsNot) {
    const std::string path = Write<uint8_t>("a.png", 4, {255, 128, 0, 128, 10, 20, 30, 255});
    const Image image = LoadImage(path, false);
    EXPECT_EQ(image.Width(), 2);
    EXPECT_EQ(image.Height(), 1);
    EXPECT_EQ(image.At(0, 0), AColor(1, SrgbToLinear(128 / 255.0f), 0, 128 / 255.0f));
    EXPECT_EQ(image.At(1, 0), AColor(SrgbToLinear(10 / 255.0f), SrgbToLinear(20 / 255.0f), SrgbToLinear(30 / 255.0f)));
    const Image raw = LoadImage(path, true);
    EXPECT_EQ(raw.At(0, 0), AColor(1, 128 / 255.0f, 0, 128 / 255.0f));
}

TEST_F(LoadImageTest, GreyFilesAreMeasures) {
    const Image image = LoadImage(Write<uint8_t>("g.png", 1, {51, 255}), false);
    EXPECT_EQ(image.At(0, 0), AColor(0.2f, 0.2f, 0.2f, 1));
    const Image withAlpha = LoadImage(Write<uint8_t>("ga.png", 2, {51, 102, 255, 0}), false);
    EXPECT_EQ(withAlpha.At(0, 0), AColor(0.2f, 0.2f, 0.2f, 0.4f));
}

TEST_F(LoadImageTest, SixteenBitsKeepTheirPrecision) {
    const Image image = LoadImage(Write<uint16_t>("w.png", 3, {32768, 1, 65535, 0, 0, 0}), true);
    EXPECT_NEAR(image.At(0, 0).r, 32768 / 65535.0f, 1e-7f);
    EXPECT_NEAR(image.At(0, 0).g, 1 / 65535.0f, 1e-7f);
    EXPECT_EQ(image.At(0, 0).b, 1.0f);
}

TEST_F(LoadImageTest, FloatFilesAreLinearAndUnbounded) {
    const Image image = LoadImage(Write<float>("f.tif", 3, {2.5f, 0.5f, 0, 1, 1, 1}), false);
    EXPECT_EQ(image.At(0, 0), AColor(2.5f, 0.5f, 0, 1));
    const Image hdr = LoadImage(Write<float>("f.hdr", 3, {2.5f, 0.5f, 0, 1, 1, 1}), false);
    EXPECT_NEAR(hdr.At(0, 0).r, 2.5f, 0.02f);
}

TEST_F(LoadImageTest, ExrFilesAreReadBack) {
    Picture p(2, 1);
    p.PutPixel(0, 0, {4, 0.5f, 0.25f, 0.5f});
    p.PutPixel(1, 0, {0, 1, 0, 1});
    WritePicture(p, Path("p.exr"));
    const Image image = LoadImage(Path("p.exr"), false);
    EXPECT_EQ(image.At(0, 0), AColor(4, 0.5f, 0.25f, 0.5f));
    EXPECT_EQ(image.At(1, 0), AColor(0, 1, 0, 1));
    // Whatever its name says, it is read by the right library.
    fs::copy_file(Path("p.exr"), Path("p.png"));
    EXPECT_EQ(LoadImage(Path("p.png"), false).At(0, 0), AColor(4, 0.5f, 0.25f, 0.5f));
}

TEST_F(LoadImageTest, EmbeddedFilesAreReadUnderTheirNames) {
    const std::string name = Path("scene.glb") + "#bark";
    std::ifstream file(Write<uint8_t>("a.png", 3, {255, 0, 0, 0, 0, 255}), std::ios::binary);
    KeepEmbeddedImage(name, {std::istreambuf_iterator<char>(file), {}});
    EXPECT_EQ(LoadImage(name, false).At(1, 0), AColor(0, 0, 1, 1));
    KeepEmbeddedImage(name, "no picture");
    EXPECT_EQ(FailureOf(name).find(name + ": cannot read: "), 0u) << FailureOf(name);
}

TEST_F(LoadImageTest, EmbeddedFilesNeedAPlaceForAMoment) {
    const std::string name = Path("scene.glb") + "#leaf";
    KeepEmbeddedImage(name, "bytes");
    const char* const former = std::getenv("TMPDIR");
    const std::string kept = former ? former : "";
    setenv("TMPDIR", Path("nowhere").c_str(), 1);
    const std::string failure = FailureOf(name);
    if (former)
        setenv("TMPDIR", kept.c_str(), 1);
    else
        unsetenv("TMPDIR");
    EXPECT_EQ(failure.find(name + ": cannot read: "), 0u) << failure;
    EXPECT_NE(failure.find("No such file or directory"), std::string::npos) << failure;
}

TEST_F(LoadImageTest, BadFilesGiveOneLine) {
    EXPECT_EQ(FailureOf(Path("none.png")), Path("none.png") + ": cannot read: there is no such file");
    std::ofstream(Path("text.png")) << "no picture";
    EXPECT_EQ(FailureOf(Path("text.png")).rfind(Path("text.png") + ": cannot read: ", 0), 0u);
    std::ofstream(Path("text.exr")) << "no picture";
    EXPECT_EQ(FailureOf(Path("text.exr")), Path("text.exr") + ": cannot read: this is no .exr file");
    std::ofstream(Path("text.nothing")) << "no picture";
    EXPECT_EQ(FailureOf(Path("text.nothing")), Path("text.nothing") +
                                                   ": cannot read: unknown kind of picture, expected "
                                                   ".png, .jpg, .tif, .hdr or .exr");
}

TEST_F(LoadImageTest, DamagedPngFilesAreFoundBeforeTheyAreDecoded) {
    const std::string path = Write<uint8_t>("d.png", 3, {1, 2, 3, 4, 5, 6});
    std::ifstream in(path, std::ios::binary);
    const std::string whole((std::istreambuf_iterator<char>(in)), {});
    testing::internal::CaptureStderr();
    for (size_t i = 8; i < whole.size(); ++i) {
        std::string bytes = whole;
        bytes[i] = char(bytes[i] ^ 0x20);
        std::ofstream(path, std::ios::binary) << bytes;
        ASSERT_EQ(FailureOf(path), path + ": cannot read: the .png file is damaged or cut off") << i;
        std::ofstream(path, std::ios::binary) << whole.substr(0, i);
        ASSERT_EQ(FailureOf(path), path + ": cannot read: the .png file is damaged or cut off") << i;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), ""); // the library says nothing of its own
}

TEST_F(LoadImageTest, BrokenFilesNeverCrash) {
    Picture p(16, 16);
    for (int i = 0; i < 256; ++i) p.PutPixel(i % 16, i / 16, {float(i) / 256, 0.5f, 0, 1});
    for (const char* const name : {"b.png", "b.exr"}) {
        WritePicture(p, Path(name));
        std::ifstream in(Path(name), std::ios::binary);
        const std::string whole((std::istreambuf_iterator<char>(in)), {});
        uint32_t state = 7;
        int refused = 0;
        for (int round = 0; round < 150; ++round) {
            std::string bytes = whole;
            state = state * 1664525u + 1013904223u;
            if (round % 3 == 0)
                bytes.resize((state >> 8) % bytes.size());
            else
                bytes[(state >> 8) % bytes.size()] ^= char(1 << (state & 7));
            std::ofstream(Path(name), std::ios::binary) << bytes;
            refused += !FailureOf(Path(name)).empty();
        }
        EXPECT_GT(refused, 30) << name; // the truncated ones at least
    }
}

} // namespace
} // namespace host
