// quen-reprocess: what it makes of inputs, and which of them it refuses.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <string>
#include <utility>

#include "support/Cli.h"

namespace {

using namespace quentest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Groups of samples whose upper eight bits lie in bytes of their own, before the lower ones of all.
std::string packed(std::vector<uint16_t> const& samples, size_t group, int bits) {
    std::string bytes;
    int const lowBits = bits - 8;
    for (size_t i = 0; i < samples.size(); i += group) {
        uint32_t low = 0;
        for (size_t k = 0; k < group; ++k) {
            bytes.push_back(static_cast<char>(samples[i + k] >> lowBits));
            low |= (samples[i + k] & ((1u << lowBits) - 1)) << lowBits * static_cast<int>(k);
        }
        for (size_t byte = 0; byte < group * static_cast<size_t>(lowBits) / 8; ++byte) {
            bytes.push_back(static_cast<char>(low >> 8 * byte));
        }
    }
    return bytes;
}

// Rows with padding behind them, after a header, both of samples that are no part of the picture.
std::string padded(std::string const& rows, size_t stride, size_t offset) {
    size_t const rowBytes = rows.size() / kHeight;
    std::string bytes(offset, '\x7f');
    for (size_t y = 0; y < kHeight; ++y) {
        bytes += rows.substr(y * rowBytes, rowBytes) + std::string(stride - rowBytes, '\x7f');
    }
    return bytes;
}

std::string swapped(std::string bytes) {
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        std::swap(bytes[i], bytes[i + 1]);
    }
    return bytes;
}

std::string greyJpeg(int width, int height) {
    std::vector<uint8_t> const pixels(static_cast<size_t>(width * height), 118);
    tjhandle const encoder = tjInitCompress();
    uint8_t* bytes = nullptr;
    unsigned long size = 0;
    tjCompress2(encoder, pixels.data(), width, 0, height, TJPF_GRAY, &bytes, &size, TJSAMP_GRAY, 90,
                0);
    std::string const file(reinterpret_cast<char*>(bytes), size);
    tjFree(bytes);
    tjDestroy(encoder);
    return file;
}

using CliInputsTest = CliTest;

TEST_F(CliInputsTest, HeaderlessSamplesAreFoundHoweverTheyLie) {
    std::string const ten = bytesOf(mosaic(kBrick, "gbrg", 10, 64));
    auto const twelve = mosaic(kBrick, "gbrg", 12, 256);
    auto const fourteen = mosaic(kBrick, "gbrg", 14, 1024);
    struct {
        std::string bytes, options;
    } const cases[] = {
            {packed(twelve, 2, 12), "--black 256"},
            {packed(fourteen, 4, 14), "--black 1024"},
            {swapped(ten), "--black 64 --layout words-be"},
            {padded(ten, 192, 10), "--black 64 --stride 192 --offset 10"},
            {padded(ten, 131, 7), "--black 64 --stride 131 --offset 7"},
            {padded(packed(twelve, 2, 12), 100, 3), "--black 256 --stride 100 --offset 3"},
            {ten + "trailer", "--black 64 --layout words"},
            // Half as bright samples, of which white is half as large.
            {bytesOf(mosaic(kBrick, "gbrg", 9, 32)), "--black 32 --white 511"},
            // Only the ratios of gains count.
            {ten, "--black 64 --wb 3,1.5,2.25"},
            {bytesOf(mosaic(kBrick, "grbg", 10, 64)),
             "--black 64 --wb 1.5,1,2 --matrix 0,0,1,0,1,0,1,0,0"},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.options);
        put("in.raw", c.bytes);
        bool const hasGains = c.options.find("--wb") != std::string::npos;
        Outcome const outcome = run("in.raw -o out.nv21 --size 64x48 --bayer gbrg " + c.options +
                                    (hasGains ? "" : " --wb 2,1,1.5"));
        ASSERT_EQ(0, outcome.exitCode) << outcome.err;
        expectColour("out.nv21", kBrick);
    }
}

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
        EXPECT_EQ(c.height % 2 != 0, outcome.err.find("left out") != std::string::npos);
        std::string const picture = get("out.nv21");
        size_t const pixels = size_t{c.width & ~1u} * (c.height & ~1u);
        ASSERT_EQ(pixels * 3 / 2, picture.size());
        for (size_t at = 0; at < picture.size(); ++at) {
            int const should = at < pixels ? kBrick.y : at % 2 == 0 ? kBrick.cr : kBrick.cb;
            ASSERT_NEAR(should, static_cast<uint8_t>(picture[at]), 3) << at;
        }
    }
}

TEST_F(CliInputsTest, SidesThatTheIspCannotTakeStopNoOtherFile) {
    put("good.dng", asDng(kGrey, "rggb"));
    put("small.jpg", greyJpeg(64, 6));
    Outcome const batch = run("small.jpg good.dng -o out");
    EXPECT_EQ(1, batch.exitCode);
    EXPECT_THAT(batch.err, HasSubstr("small.jpg: is 64x6 pixels, and the ISP takes sides of 8 to"));
    EXPECT_THAT(batch.out, HasSubstr("1 of 2 reprocessed"));
    for (char const* const size : {"4x64", "64x7", "65501x8", "8x65535"}) {
        put("in.raw", std::string(64, 0));
        Outcome const outcome = run(std::string("in.raw -o x.jpg --bayer rggb --size ") + size);
        EXPECT_EQ(2, outcome.exitCode) << size;
        EXPECT_THAT(outcome.err, HasSubstr("sides of 8 to 65500"));
    }
}

// Compressed data that is none would otherwise come out as a black picture.
TEST_F(CliInputsTest, ATruncatedOrForeignFileIsToldAsWhatItIs) {
    std::string const dng = asDng(kGrey, "rggb");
    put("cut.dng", dng.substr(0, dng.size() - 500));
    put("cut.nv21", std::string(64 * 48, 0));
    std::string const jpeg = greyJpeg(640, 480);
    put("cut.jpg", jpeg.substr(0, jpeg.size() / 2));
    put("noise.raw", std::string(5000, 7));
    put("noise.jpg", std::string(5000, 7));
    // LibRaw knows a camera whose files have this size.
    put("sized.raw", std::string(1600 * 1200, 7));
    for (int const compression : {7, 99}) {
        std::string bytes = dng;
        size_t const at = bytes.find(std::string("\3\1\3\0\1\0\0\0\1", 9));
        ASSERT_NE(at, std::string::npos);
        bytes[at + 8] = static_cast<char>(compression);
        put("compressed-" + std::to_string(compression) + ".dng", bytes);
    }
    std::pair<char const*, char const*> const cases[] = {
            {"cut.dng", "ends before the picture does"},
            {"cut.nv21 --size 64x48", "ends before the picture does"},
            {"cut.jpg", "ends before the picture does"},
            {"noise.raw", "is no raw file that LibRaw knows"},
            {"sized.raw", "is no raw file that LibRaw knows"},
            {"noise.jpg", "is no JPEG, though its name says so"},
            {"compressed-7.dng", "cannot be decompressed"},
            {"compressed-99.dng", "compressed in a way that LibRaw cannot undo (99)"},
    };
    for (auto const& [arguments, says] : cases) {
        Outcome const outcome = run(std::string(arguments) + " -o x.jpg");
        EXPECT_EQ(1, outcome.exitCode) << arguments;
        EXPECT_THAT(outcome.err, HasSubstr(says));
    }
}

// An option that has no effect would leave its user with a picture that he takes for another.
TEST_F(CliInputsTest, OptionsWithoutUseAreTold) {
    put("shot.dng", asDng(kGrey, "rggb"));
    put("in.raw", bytesOf(mosaic(kGrey, "rggb", 10, 64)));
    ASSERT_EQ(0, run("shot.dng -o shot.jpg").exitCode);
    ASSERT_EQ(0, run("shot.dng -o shot.nv21").exitCode);
    std::pair<char const*, char const*> const wrong[] = {
            {"in.raw --size 64x48", "--bayer"},
            {"shot.jpg --wb 1,1,1", "--wb"},
            {"shot.jpg --size 64x48", "--size"},
            {"shot.jpg --raw16", "--raw16"},
            {"shot.dng --bits 12", "--bits"},
            {"shot.dng --stride 12", "--stride"},
            {"shot.nv21 --size 64x48 --bayer rggb", "--bayer"},
            {"shot.dng --format nv21 --quality 5", ""},
            {"demo --size 64x48", "--size"},
            {"demo --rotate 90", "--rotate"},
            {"demo --jobs 2", "--jobs"},
            {"demo --format yuv", "--format"},
            {"in.raw --size 64x48 --bayer rggb --wb 1,,1", "--wb"},
            {"in.raw --size 64x48 --bayer rggb --black 1,2,3,", "--black"},
            {"in.raw --size 64x48 --bayer rggb --matrix 1,0,0,0,1,0,0,0", "--matrix"},
    };
    for (auto const& [arguments, says] : wrong) {
        Outcome const outcome = run(std::string(arguments) + " -o x.jpg");
        EXPECT_EQ(2, outcome.exitCode) << arguments;
        EXPECT_THAT(outcome.err, HasSubstr(says));
    }
    EXPECT_EQ(2, run("demo -o x.nv21").exitCode);
    EXPECT_EQ(2, run("shot.dng -o x.nv21 --quality 5").exitCode);
    EXPECT_THAT(names(), ElementsAre("in.raw", "shot.dng", "shot.jpg", "shot.nv21"));

    Outcome const some = run("shot.dng shot.jpg --wb 2,1,1.5 -o out");
    EXPECT_EQ(0, some.exitCode);
    EXPECT_THAT(some.err, HasSubstr("shot.jpg: is a JPEG, which makes no use of --wb"));
}

}  // namespace
