#include <gtest/gtest.h>
#include <nscam/Format.h>

#include <vector>

namespace Format = NSCam::Utils::Format;

namespace {

struct Expected {
    int format;
    size_t imageBits;
    std::vector<size_t> planeBits;
    std::vector<size_t> widthsOf99;
};

TEST(Format, TellsThePlanesOfEveryFormatInUse) {
    std::vector<Expected> const all = {
            {0x01, 32, {32}, {99}},
            {0x11, 12, {8, 16}, {99, 50}},
            {0x20, 16, {16}, {99}},
            {0x21, 8, {8}, {99}},
            {0x22, 12, {8, 16}, {99, 50}},
            {0x23, 12, {8, 8, 8}, {99, 50, 50}},
            {0x25, 10, {10}, {99}},
            {0x26, 12, {12}, {99}},
            {0x32315659, 12, {8, 8, 8}, {99, 50, 50}},
            {0x7777, 0, {}, {}},
    };
    for (Expected const& expected : all) {
        SCOPED_TRACE(expected.format);
        std::vector<size_t> bits, widths;
        for (size_t i = 0; i < Format::queryPlaneCount(expected.format); ++i) {
            bits.push_back(Format::queryPlaneBitsPerPixel(expected.format, i));
            widths.push_back(Format::queryPlaneWidthInPixels(expected.format, i, 99));
        }
        EXPECT_EQ(Format::queryImageBitsPerPixel(expected.format), expected.imageBits);
        EXPECT_EQ(bits, expected.planeBits);
        EXPECT_EQ(widths, expected.widthsOf99);
        EXPECT_EQ(Format::queryPlaneBitsPerPixel(expected.format, bits.size()), 0u);
        EXPECT_EQ(Format::queryPlaneWidthInPixels(expected.format, bits.size(), 99), 0u);
    }
}

}  // namespace
