// quen-reprocess: the part of a DNG that is shown, and a real sensor's frame.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "support/Cli.h"

namespace {

using namespace quentest;
using testing::HasSubstr;

using CliInputsTest = CliTest;

// What lies around it is as bright as can be, and the order of colours is another there.
TEST_F(CliInputsTest, ADngIsCutToItsActiveAreaAndItsDefaultCrop) {
    struct {
        std::vector<DngField> fields;
        uint32_t left, top, width, height;
        char const* size;
    } const cases[] = {
            {{{50829, 3, 4, 960}}, 6, 4, 46, 41, "46x40"},
            {{{50719, 3, 2, 9 | 7 << 16}, {50720, 3, 2, 31 | 33 << 16}}, 9, 7, 31, 33, "30x32"},
            {{{50829, 3, 4, 960}, {50719, 3, 2, 3 | 1 << 16}, {50720, 3, 2, 32 | 30 << 16}},
             9,
             5,
             32,
             30,
             "32x30"},
            // A crop that ends outside is none, nor is a size alone.
            {{{50829, 3, 4, 960}, {50720, 3, 2, 32 | 30 << 16}}, 6, 4, 46, 41, "46x40"},
            {{{50829, 3, 4, 960}, {50719, 3, 2, 9 | 7 << 16}, {50720, 3, 2, 46 | 30 << 16}},
             6,
             4,
             46,
             41,
             "46x40"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.size);
        std::string bytes = asDng(kBrick, "rggb", c.fields);
        uint16_t const area[] = {4, 6, 45, 52};  // top, left, bottom, right
        bytes.replace(960, sizeof(area), bytesOf(area));
        for (uint32_t i = 0; i < kWidth * kHeight; ++i) {
            bool const isInside = i % kWidth - c.left < c.width && i / kWidth - c.top < c.height;
            if (!isInside) {
                bytes.replace(1024 + 2 * i, 2, "\xff\x3f");
            }
        }
        put("in.dng", bytes);
        Outcome const outcome = run("in.dng -o out.nv21");
        ASSERT_EQ(0, outcome.exitCode) << outcome.err;
        EXPECT_THAT(outcome.out, HasSubstr(c.size));
        std::string const lost = c.width % 2 != 0 ? "last column and row are" : "last row is";
        EXPECT_EQ(c.height % 2 != 0, outcome.err.find(lost + " left out") != std::string::npos);
        std::string const picture = get("out.nv21");
        size_t const pixels = size_t{c.width & ~1u} * (c.height & ~1u);
        ASSERT_EQ(pixels * 3 / 2, picture.size());
        for (size_t at = 0; at < picture.size(); ++at) {
            int const should = at < pixels ? kBrick.y : at % 2 == 0 ? kBrick.cr : kBrick.cb;
            ASSERT_NEAR(should, static_cast<uint8_t>(picture[at]), 3) << at;
        }
    }
}

TEST_F(CliInputsTest, ARealSensorFrameOfAChartHasTheChartsColours) {
    constexpr size_t kChartWidth = 1920;
    constexpr size_t kChartHeight = 1080;
    if (!fs::exists(QUEN_CHART)) {
        GTEST_SKIP() << "the frame is not there: " QUEN_CHART;
    }
    Outcome const outcome = run("'" QUEN_CHART
                                "' -o chart.nv21 --size 1920x1080 --bayer rggb --bits 10 "
                                "--wb 1.816,1,1.25");
    ASSERT_EQ(0, outcome.exitCode) << outcome.err;
    std::string const picture = get("chart.nv21");
    ASSERT_EQ(kChartWidth * kChartHeight * 3 / 2, picture.size());

    struct Patch {
        char const* name;
        size_t x, y;
        char const* order;  // "rgb": red is larger than green, and green than blue
    };
    for (Patch const& patch : {Patch{"orange", 756, 368, "rgb"},
                               {"purple", 820, 368, "rg bg"},
                               {"sky", 884, 364, "bgr"},
                               {"navy", 948, 362, "bg br"},
                               {"green", 1012, 360, "gr gb"},
                               {"brick", 1076, 360, "rg rb"},
                               {"grey", 850, 500, ""},
                               {"grey", 1250, 600, ""}}) {
        SCOPED_TRACE(std::string(patch.name) + " " + patch.order);
        auto const at = [&](size_t offset) { return double(uint8_t(picture[offset])); };
        size_t const pair = kChartWidth * (kChartHeight + patch.y / 2) + patch.x / 2 * 2;
        double const luma = at(kChartWidth * patch.y + patch.x);
        double const cr = at(pair) - 128;
        double const cb = at(pair + 1) - 128;
        std::map<char, double> const rgb = {{'r', luma + 1.402 * cr},
                                            {'g', luma - 0.344 * cb - 0.714 * cr},
                                            {'b', luma + 1.772 * cb}};
        for (char const* channel = patch.order; channel[0] != 0 && channel[1] != 0; ++channel) {
            if (channel[0] != ' ' && channel[1] != ' ') {
                EXPECT_GT(rgb.at(channel[0]), rgb.at(channel[1]) + 15);
            }
        }
        if (patch.order[0] == 0) {
            EXPECT_LT(std::hypot(cb, cr), 8);
        }
    }
}

}  // namespace
