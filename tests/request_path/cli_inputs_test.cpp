// quen-reprocess: what it makes of inputs, and which of them it refuses.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "support/Cli.h"

namespace {

using namespace quentest;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

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

std::string jpegOf(int width, int height, int format) {
    size_t const samples = static_cast<size_t>(width * height * tjPixelSize[format]);
    std::vector<uint8_t> const pixels(samples, 118);
    tjhandle const encoder = tjInitCompress();
    uint8_t* bytes = nullptr;
    unsigned long size = 0;
    tjCompress2(encoder, pixels.data(), width, 0, height, format, &bytes, &size,
                format == TJPF_GRAY ? TJSAMP_GRAY : TJSAMP_444, 90, 0);
    std::string const file(reinterpret_cast<char*>(bytes), size);
    tjFree(bytes);
    tjDestroy(encoder);
    return file;
}

std::string greyJpeg(int width, int height) {
    return jpegOf(width, height, TJPF_GRAY);
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
            {swapped(ten), "--black 64 --layout Words-BE"},
            {padded(ten, 192, 10), "--black 64 --stride 192 --offset 10"},
            {padded(ten, 131, 7), "--black 64 --stride 131 --offset 7"},
            {padded(packed(twelve, 2, 12), 100, 3), "--black 256 --stride 100 --offset 3"},
            {ten + "long trailer", "--black 64 --layout words"},
            {padded(ten, 192, 10).substr(0, 10 + 47 * 192 + 128),
             "--black 64 --stride 192 --offset 10"},
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
        EXPECT_EQ(c.bytes == ten + "long trailer",
                  outcome.err.find("last 12 bytes are left out") != std::string::npos);
        expectColour("out.nv21", kBrick);
    }
}

TEST_F(CliInputsTest, PackedSamplesAreTheWordsToTheBit) {
    for (int const bits : {10, 12, 14}) {
        SCOPED_TRACE(bits);
        std::vector<uint16_t> samples;
        for (uint32_t i = 0; i < kWidth * kHeight; ++i) {
            samples.push_back(static_cast<uint16_t>(i * 2654435761u >> (32 - bits)));
        }
        put("words.raw", bytesOf(samples));
        put("packed.raw", packed(samples, bits == 12 ? 2 : 4, bits));
        std::string const options = " --size 64x48 --bayer rggb --bits " + std::to_string(bits);
        for (char const* const raw16 : {"", " --raw16"}) {
            ASSERT_EQ(0, run("words.raw -o words.nv21" + options + raw16).exitCode);
            ASSERT_EQ(0, run("packed.raw -o packed.nv21" + options + raw16).exitCode);
            EXPECT_EQ(get("packed.nv21"), get("words.nv21"));
        }
    }
    // Samples of 16 bits are rounded to the 10 that the ISP is asked for.
    std::vector<uint16_t> fine, rounded;
    for (uint32_t i = 0; i < kWidth * kHeight; ++i) {
        fine.push_back(static_cast<uint16_t>(i * 21));
        rounded.push_back(static_cast<uint16_t>(std::min((fine.back() + 32) >> 6, 1023)));
    }
    put("fine.raw", bytesOf(fine));
    put("rounded.raw", bytesOf(rounded));
    for (std::string const name : {"fine.raw --bits 16", "rounded.raw --bits 10"}) {
        ASSERT_EQ(0, run(name + " -o " + name.substr(0, 4) +
                         ".nv21 --size 64x48 --bayer rggb --raw16 --ui-mode 16")
                             .exitCode);
    }
    EXPECT_EQ(get("fine.nv21"), get("roun.nv21"));
}

// An odd picture is as an even one without its last column and row; the largest is taken.
TEST_F(CliInputsTest, PicturesOfAnySizeAreTaken) {
    std::string const even = std::string(64 * 48, 'y') + std::string(32 * 24, 'u');
    put("even.yuv", even + std::string(32 * 24, 'v'));
    put("odd.yuv",
        std::string(65 * 49, 'y') + std::string(33 * 25, 'u') + std::string(33 * 25, 'v'));
    ASSERT_EQ(0, run("even.yuv -o even.jpg --size 64x48 --rotate 90").exitCode);
    EXPECT_THAT(run("odd.yuv -o odd.jpg --size 65x49 --rotate 90").err,
                HasSubstr("column and row are left"));
    EXPECT_EQ(get("odd.jpg"), get("even.jpg"));
    std::string pairs;
    for (int i = 0; i < 33 * 25; ++i) {
        pairs += "vu";
    }
    put("odd.nv21", std::string(65 * 49, 'y') + pairs);
    ASSERT_EQ(0, run("odd.nv21 -o odd.jpg --size 65x49 --rotate 90").exitCode);
    EXPECT_EQ(get("odd.jpg"), get("even.jpg"));
    EXPECT_EQ(1, run("odd.yuv -o no/folder.jpg --size 65x49").exitCode);
    EXPECT_THAT(get("err.txt"), Not(HasSubstr("left out"))) << "of no picture";
    put("long.raw", std::string(65500 * 8 * 2, '\0'));
    EXPECT_EQ(0, run("long.raw -o long.nv21 --size 65500x8 --bayer rggb").exitCode);
    std::string const bricks = bytesOf(mosaic(kBrick, "rggb", 10, 64));
    put("tall.raw", bricks + bricks + bricks);
    run("tall.raw -o tall.nv21 --size 64x144 --bayer rggb --black 64 --wb 2,1,1.5");
    EXPECT_NEAR(kBrick.y, static_cast<uint8_t>(get("tall.nv21").at(64 * 100 + 30)), 2);
    put("six.raw", std::string(66 * 48 * 2, '\0'));  // no group of four ends its rows
    EXPECT_EQ(0, run("six.raw -o six.nv21 --size 66x48 --bayer rggb").exitCode);
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

// Compressed data that is none would otherwise come out as a black picture.
TEST_F(CliInputsTest, ATruncatedOrForeignFileIsToldAsWhatItIs) {
    std::string const dng = asDng(kGrey, "rggb");
    put("cut.dng", dng.substr(0, dng.size() - 500));
    put("cut.nv21", std::string(64 * 48, 0));
    put("small.jpg", greyJpeg(64, 6));
    put("line.jpg", greyJpeg(1, 64));
    put("long.nv21", std::string(64 * 48 * 2, 0));
    put("words.raw", bytesOf(mosaic(kGrey, "rggb", 12, 0)));
    put("short.raw", std::string(1000, 0));
    put("packed.raw", std::string(64 * 48 * 3 / 2, 0));
    put("empty.jpg", "");
    put("inks.jpg", jpegOf(64, 48, TJPF_CMYK));
    shell("mkfifo pipe");
    put("unbalanced.dng", asDng(kGrey, "rggb", {{50728, 5, 3, 960}}));
    EXPECT_THAT(run("unbalanced.dng -o x.jpg").err, HasSubstr("no white balance of its own"));
    std::string levels = asDng(kGrey, "gbrg", {{50713, 3, 2, 2 | 2 << 16}, {50714, 3, 4, 960}});
    uint16_t const blacks[] = {612, 512, 513, 512};
    put("levels.dng", levels.replace(960, sizeof(blacks), bytesOf(blacks)));
    EXPECT_THAT(run("levels.dng -o x.jpg --info").out, HasSubstr("order gbrg, levels"));
    EXPECT_THAT(get("out.txt"), HasSubstr("black R Gr Gb B 513 512 612 512,"));
    EXPECT_THAT(run("levels.dng -o x.jpg --info --black 1,2,3,4").out, HasSubstr("Gb B 1 2 3 4,"));
    fs::remove(path("x.jpg"));
    std::string const jpeg = greyJpeg(640, 480);
    put("cut.jpg", jpeg.substr(0, jpeg.size() / 2));
    // In the first segment, in the tables, in the frame's header, in the scan's.
    for (char const* const head : {"\xff\xe0", "\xff\xdb", "\xff\xc0", "\xff\xc4", "\xff\xda"}) {
        put("head.jpg", jpeg.substr(0, jpeg.find(head) + 5));
        expectErrors(1, {{"head.jpg -o x.jpg", "head.jpg: ends before the picture does"}});
    }
    put("noise.raw", std::string(5000, 7));
    put("some.png", "\x89PNG" + std::string(5000, 7));
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
    // Lossless JPEG whose differences are none of 14 bits.
    std::string lossless = asDng(kGrey, "rggb", {{259, 3, 1, 7}}).substr(0, 1024);
    lossless +=
            std::string("\xff\xd8\xff\xc3\0\x0b\x0e\0\x30\0\x40\1\1\x11\0\xff\xc4\0\x14\0\1", 21);
    lossless += std::string(15, '\0') + "\x0f" + std::string("\xff\xda\0\x08\1\1\0\1\0\0", 10);
    put("damaged.dng", lossless + std::string(64 * 48 * 2, '\x7f'));
    std::set<std::string> const before = names();
    expectErrors(
            1,
            {
                    {"cut.dng -o x.jpg", "ends before the picture does"},
                    {"cut.nv21 -o x.jpg --size 64x48", "ends before the picture does"},
                    {"long.nv21 -o x.jpg --size 64x48", "long.nv21: has 6144 bytes"},
                    {"line.jpg -o x.jpg", "is smaller than 2x2 pixels"},
                    {"cut.jpg -o x.jpg", "ends before the picture does"},
                    {"small.jpg -o x.jpg", "is 64x6 pixels, and the ISP takes sides of 8 to"},
                    {"noise.raw -o x.jpg", "is no raw file that LibRaw knows"},
                    {"some.png -o x.jpg", "is a PNG, and no raw file that LibRaw knows"},
                    {"sized.raw -o x.jpg", "is no raw file that LibRaw knows"},
                    {"noise.jpg -o x.jpg", "is no JPEG, though its name says so"},
                    {"damaged.dng -o x.jpg", "is damaged"},
                    {"compressed-7.dng -o x.jpg", "cannot be decompressed"},
                    {"compressed-99.dng -o x.jpg",
                     "compressed in a way that LibRaw cannot undo (99)"},
                    // Headerless samples that are not what they are said to be.
                    {"words.raw -o x.jpg", "--bayer"},
                    {"words.raw -o x.jpg --size 64x48 --bayer rggb --bits 9", "--bits"},
                    {"packed.raw -o x.jpg --size 64x48 --bayer rggb --bits 14", "--bits says 14"},
                    {"words.raw -o x.jpg --size 64x47 --bayer rggb --layout words",
                     "takes 6016 in words"},
                    {"inks.jpg -o x.jpg", "is a CMYK JPEG"},
                    {"empty.jpg -o x.jpg", "is empty"},
                    {"words.raw -o x.jpg --size 64x48 --bayer rggb --white 1500",
                     "has samples up to 1023, and --white says 1500"},
                    {"pipe -o x.jpg", "is not a regular file"},
                    {"words.raw -o x.jpg --size 64x50 --bayer rggb --bits 12", "6400"},
                    {"short.raw -o x.jpg --size 64x48 --bayer rggb", "3840 as packed RAW10"},
                    {"words.raw -o x.jpg --size 64x48 --bayer rggb --layout raw12",
                     "takes 4608 as packed RAW12"},
                    {"words.raw -o x.jpg --size 64x48 --bayer rggb --stride 100",
                     "4800 as packed RAW12, 4800 as"},
                    {"words.raw -o x.jpg --size 64x48 --bayer rggb --bits 12 --black 4095",
                     "--black"},
            });
    EXPECT_EQ(names(), before);
}

// An option that has no effect would leave its user with a picture that he takes for another.
TEST_F(CliInputsTest, AWrongCommandLineDoesNothingAndOptionsWithoutUseAreTold) {
    put("shot.dng", asDng(kGrey, "rggb"));
    put("in.raw", bytesOf(mosaic(kGrey, "rggb", 10, 64)));
    ASSERT_EQ(0, run("shot.dng -o shot.jpg").exitCode);
    ASSERT_EQ(0, run("shot.dng -o shot.nv21").exitCode);
    std::string const words = "in.raw -o x.jpg --bayer rggb --size ";
    expectErrors(2, {
                            {"", "INPUT is missing"},
                            {"in.raw", "-o is missing"},
                            {"shot.dng '' -o made", "an input's name is empty"},
                            {"in.raw -o x", ""},
                            {"in.raw -o x.jpg --size 64x48", "--bayer"},
                            {words + "4x64", "sides of 8 to 65500"},
                            {words + "64x7", "sides of 8 to 65500"},
                            {words + "65501x8", "sides of 8 to 65500"},
                            {words + "8x65535", "sides of 8 to 65500"},
                            {words + "64x48 --wb 1,,1", "--wb"},
                            {words + "64x48 --wb 0,1,1", "--wb"},
                            {words + "64x48 --wb 1,1,1x", "--wb"},
                            {words + "64x48 --black 1,2,3,", "--black"},
                            {words + "64x48 --matrix 1,0,0,0,1,0,0,0", "--matrix"},
                            {words + "64x48 --matrix 1,0,0,0,65,0,0,0,1", "--matrix"},
                            {"shot.jpg -o x.jpg --wb 1,1,1", "--wb"},
                            {"shot.jpg -o x.jpg --size 64x48", "--size"},
                            {"shot.jpg -o x.jpg --raw16", "--raw16"},
                            {"shot.dng -o x.jpg --bits 12", "--bits"},
                            {"shot.dng -o x.jpg --stride 12", "--stride"},
                            {"shot.dng -o x.jpg --offset 12", "--offset"},
                            {words + "64x48 --bits 7", "--bits"},
                            {words + "64x48 --black 65536", "levels must lie in 0 to 65535"},
                            {"shot.dng -o x.jpg --bayer rggb", ""},
                            {"shot.dng -o x.jpg --format nv21 --quality 5", ""},
                            {"shot.dng -o x.nv21 --quality 5", ""},
                            {"shot.dng -o x.jpg --format yuv", ""},
                            {"shot.dng -o x.jpg --quality 0", ""},
                            {"shot.dng -o x.jpg --jobs 0", "--jobs"},
                            {"shot.dng -o x.jpg --rotate 45", "--rotate"},
                            {"shot.dng -o x.jpg --white 65536", "--white"},
                            {"shot.dng -o x.jpg --set 0x12345678=1", "nothing is known of tag"},
                            {"shot.dng -o x.jpg --set android.control.zoomRatio=1.5x",
                             "'1.5x' is not a number"},
                            {"shot.dng -o x.jpg --set nosuchtag=1", ""},
                            {"shot.dng -o x.jpg --set currentMode=abc", ""},
                            {"shot.dng -o x.jpg --set 0x000d0000=1,2", ""},
                            {"shot.dng -o x.jpg --set 0x000d0000=1,,2,3", ""},
                            {"shot.dng -o x.jpg --set ispFeatureHint=28",
                             "a request cannot carry ispFeatureHint"},
                            {"shot.dng -o x.jpg --set fusion=", "is no assignment"},
                            {"shot.dng -o x.jpg --set fusion=1,2", "takes 1 value(s), not 2"},
                            {"shot.nv21 -o x.jpg --size 64x48 --bayer rggb", "--bayer"},
                            {"demo shot.dng", ""},
                            {"demo -o x.nv21", ""},
                            {"demo -o x.jpg --size 64x48", "--size"},
                            {"demo -o x.jpg --rotate 90", "--rotate"},
                            {"demo -o x.jpg --jobs 2", "--jobs"},
                            {"demo -o x.jpg --format yuv", "--format"},
                    });
    EXPECT_THAT(names(), ElementsAre("in.raw", "shot.dng", "shot.jpg", "shot.nv21"));

    Outcome const some = run("shot.dng shot.jpg --wb 2,1,1.5 --white 16000 --black 512 -o out");
    EXPECT_EQ(0, some.exitCode);
    EXPECT_THAT(some.err, HasSubstr("shot.jpg: is a JPEG, which makes no use of --wb"));
}

TEST_F(CliInputsTest, HeaderlessYuvIsTakenInEachLayoutFromAPipeToo) {
    std::string const luma(9 * 9, 'y'), u(5 * 5, 'u'), v(5 * 5, 'v');
    std::string const uv = "uvuvuvuvuvuvuvuvuvuvuvuvuvuvuvuvuvuvuvuvuvuvuvuvuv";
    std::string const vu = "v" + uv.substr(0, 48) + "u";
    put("in.nv21", luma + vu);
    run("in.nv21 -o should.jpg --size 9x9");
    std::pair<std::string, std::string> const layouts[] = {
            {"nv21", vu}, {"nv12", uv}, {"i420", u + v}, {"yv12", v + u}};
    for (auto const& [layout, chroma] : layouts) {
        put("frame.yuv", luma + chroma);
        for (std::string const input : {"frame.yuv", "- <frame.yuv"}) {
            ASSERT_EQ(0, run(input + " -o made.jpg --size 9x9 --yuv " + layout).exitCode);
            EXPECT_TRUE(get("should.jpg") == get("made.jpg")) << layout;
        }
    }
    expectErrors(2, {{"- -o x.jpg --size 9x9 <in.nv21", "--yuv LAYOUT if it is YUV"},
                     {"- -o x.jpg --yuv nv12 <in.nv21", "--yuv: needs --size"},
                     {"x -o x.jpg --size 9x9 --yuv nv12 --bayer rggb", "contradicts --bayer"},
                     {"in.nv21 -o x.jpg --size 9x9 --yuv nv12", "in.nv21: contradicts --yuv"}});
}

TEST_F(CliInputsTest, AFolderThatCannotBeSearchedFailsAndStopsNoOther) {
    fs::create_directories(path("card/locked"));
    put("card/a.dng", asDng(kGrey, "rggb"));
    fs::permissions(path("card/locked"), fs::perms::none);
    // Root searches any folder, unless it has given up the right to.
    std::string const rightless = "setpriv --inh-caps=-all --bounding-set=-all ";
    std::string const user = shell(rightless + "true 2>/dev/null") == 0 ? rightless : "";
    if (shell(user + "ls card/locked >/dev/null 2>&1") == 0) {
        GTEST_SKIP() << "no right can be given up here";
    }
    EXPECT_EQ(1, shell(user + QUEN_REPROCESS " -r card -o made >out.txt 2>err.txt"));
    EXPECT_THAT(get("err.txt"), HasSubstr("card/locked/: cannot be searched: Permission denied"));
    EXPECT_TRUE(fs::exists(path("made/a.jpg")));
    fs::permissions(path("card/locked"), fs::perms::owner_all);
}

}  // namespace
