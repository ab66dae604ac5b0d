// Golden pictures of filters, fields and regions.

#include "apps/run_program.h"
#include "picture_compare.h"

namespace {

using golden::Comparison;

class SamplingGolden : public apps_test::ProgramTest {
protected:
    // The scene with `keys` in [render], beside the picture of that name.
    Comparison Made(const std::string& keys, const std::string& golden) const {
        std::string text = apps_test::FileText(VELMAR_TEST_DATA "/golden/sampling.toml");
        const std::string mark = "# KEYS\n";
        const size_t at = text.rfind(mark);
        EXPECT_NE(at, std::string::npos);
        Write("sampling.toml", text.replace(at, mark.size(), keys + "\n"));
        const apps_test::RunResult r = Run({"render", "sampling.toml", "-o", "made.png"});
        EXPECT_EQ(r.status, 0) << r.err;
        return golden::Compare(folder_ + "/made.png", VELMAR_TEST_DATA "/golden/sampling_" + golden + ".png");
    }
};

void ExpectClose(const Comparison& c) {
    EXPECT_TRUE(c.Close()) << c;
}

TEST_F(SamplingGolden, FiltersLookAsTheyDid) {
    ExpectClose(Made("filter = 'gaussian'\nfilter_width = 3.0", "gaussian"));
    ExpectClose(Made("filter = 'mitchell'\nfilter_width = 4.0", "mitchell"));
}

TEST_F(SamplingGolden, FieldsAndRegionsLookAsTheyDid) {
    ExpectClose(Made("fields = 'odd_first'", "fields"));
    ExpectClose(Made("crop = [40, 20, 120, 80]", "crop"));
}

TEST_F(SamplingGolden, TheComparisonTellsThemApart) {
    EXPECT_FALSE(Made("filter = 'gaussian'\nfilter_width = 3.0", "mitchell").Close());
    EXPECT_FALSE(Made("fields = 'even_first'", "fields").Close());
    EXPECT_FALSE(Made("", "gaussian").Close());
}

} // namespace
