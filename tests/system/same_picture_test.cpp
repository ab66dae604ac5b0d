// The whole program: the same scene gives the same picture, byte for byte, however it is rendered.

#include "apps/run_program.h"
#include "slowed.h"

namespace {

// Curled, clumped fur with every random switched on, thin and wide strands, before two lights.
constexpr const char* kScene = R"([scene]
background = [0.3, 0.35, 0.4]
ambient = [0.2, 0.2, 0.2]
[render]
width = 160
height = 100
[render.hair]
RENDERER
[[camera]]
name = "cam"
position = [0.5, -6.0, 1.0]
target = [0.0, 0.0, 0.0]
fov = 35.0
[[light]]
name = "key"
position = [4.0, -5.0, 6.0]
shadows = true
[[light]]
name = "fill"
type = "direct"
position = [-4.0, -2.0, 1.0]
target = [0.0, 0.0, 0.0]
hotspot = 10.0
falloff = 12.0
[[node]]
name = "ball"
primitive = "sphere"
size = [2.0, 2.0, 2.0]
[[fur]]
name = "coat"
emitters = ["ball"]
[fur.set]
pid_length = 0.5
pid_thickness = 0.02
pid_densPerArea = DENSITY
pid_fur_leanAngle = 30.0
pid_fur_leanAmtRand = 0.3
pid_vdirRand = 0.2
pid_dirRand = 0.3
pid_orientRand = 0.4
pid_useCurliness = true
pid_curlRadius = 0.03
pid_clumpAmount = 0.5
pid_clumpAttract = 1
pid_clumpPercent = 0.1
COAT
[fur.random.length]
knots = [[0.0, 0.2, "corner"], [1.0, 1.0, "corner"]]
[fur.random.thickness]
knots = [[0.0, 0.5, "corner"], [1.0, 1.0, "corner"]]
[fur.random.colorV]
knots = [[0.0, 0.2, "corner"], [0.5, 1.0, "corner"], [1.0, 0.2, "corner"]]
)";

class SamePicture : public apps_test::ProgramTest {
protected:
    std::string Scene(const std::string& renderer, const std::string& coat) const {
        std::string text = kScene;
        text.replace(text.find("RENDERER"), 8, renderer);
        text.replace(text.find("COAT"), 4, coat);
        text.replace(text.find("DENSITY"), 7, std::to_string(250.0 / kSlowed));
        return text;
    }
    // The picture file's bytes.
    std::string Render(const std::string& renderer, const std::string& threads, const std::string& coat = "") {
        Write("scene.toml", Scene(renderer, coat));
        const apps_test::RunResult run =
            Run({"render", "scene.toml", "-o", "out.exr", "--threads", threads, "--quiet"});
        EXPECT_EQ(run.status, 0) << run.err;
        return apps_test::FileText(folder_ + "/out.exr");
    }
    // All thread numbers and kinds of buckets, against one thread without buckets.
    void ExpectAlwaysTheSame(const std::string& renderer, const std::string& coat = "") {
        const std::string none = renderer + "\nBuckets_From_Renderer = false\nBucket_Type = 0\n";
        const std::string reference = Render(none, "1", coat);
        ASSERT_GT(reference.size(), 1000u);
        EXPECT_EQ(Render(none, "1", coat), reference) << "a second time";
        for (const char* threads : {"2", "3", "16"}) EXPECT_EQ(Render(none, threads, coat), reference) << threads;
        for (const char* buckets : {"Bucket_Type = 1\nBucket_Size = 10", "Bucket_Type = 1\nBucket_Size = 37",
                                    "Bucket_Type = 2\nBucket_Size = 23", "Bucket_Type = 2\nBucket_Size = 64"})
            EXPECT_EQ(Render(renderer + "\nBuckets_From_Renderer = false\n" + buckets + "\n", "2", coat), reference)
                << buckets;
        EXPECT_EQ(Render(renderer, "3", coat), reference) << "the renderer's own buckets";
    }
};

TEST_F(SamePicture, WithTheConeFilter) {
    ExpectAlwaysTheSame("");
}

TEST_F(SamePicture, WithTheBoxFilter) {
    ExpectAlwaysTheSame("Filter_Type = 1");
}

TEST_F(SamePicture, WithoutFilter) {
    ExpectAlwaysTheSame("Filter_Type = 0");
}

TEST_F(SamePicture, OfThinStrandsOnly) {
    ExpectAlwaysTheSame("Use_Thick_Renderer = false");
}

TEST_F(SamePicture, WithoutShadingOfMiddleStrands) {
    ExpectAlwaysTheSame("Disable_Middle_Shading = true");
}

TEST_F(SamePicture, OfFlatStrandsWithWidthSamples) {
    ExpectAlwaysTheSame("", "pid_crossSec = 1\npid_maxWidthSamples = 3\npid_widthFiltering = true\n");
}

// The pictures above would also agree if they were empty, or if the settings changed nothing.
TEST_F(SamePicture, ButAnotherOneForOtherSettings) {
    const std::string cone = Render("", "2");
    EXPECT_NE(Render("Filter_Type = 1", "2"), cone);
    EXPECT_NE(Render("Use_Thick_Renderer = false", "2"), cone);
    EXPECT_NE(Render("", "2", "pid_randSeed = 1\n"), cone);
}

} // namespace
