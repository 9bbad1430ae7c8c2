// quen-reprocess: RGB files, and pictures through standard input and output.

#include <png.h>
#include <tiffio.h>
#include <turbojpeg.h>
#include <exiv2/exif.hpp>
#include <exiv2/image.hpp>

#include <cstdio>
#include <string>
#include <vector>

#include "support/Cli.h"

namespace {

using namespace quentest;
using testing::HasSubstr;

// Samples of 16 bits, those of 8 scaled: red, green, blue, row by row.
struct Rgb {
    uint32_t width = 0;
    uint32_t height = 0;
    int bits = 0;
    std::vector<int> samples;

    void add(uint8_t const* row) {
        for (uint32_t i = 0; i < 3 * width; ++i) {
            samples.push_back(bits == 8 ? 257 * row[i] : reinterpret_cast<uint16_t const*>(row)[i]);
        }
    }
};

Rgb readPng(std::string const& path) {
    Rgb rgb;
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file);
    png_read_png(png, info, PNG_TRANSFORM_SWAP_ENDIAN, nullptr);
    EXPECT_EQ(PNG_COLOR_TYPE_RGB, png_get_color_type(png, info));
    EXPECT_NE(0u, png_get_valid(png, info, PNG_INFO_sRGB));
    EXPECT_NE(0u, png_get_valid(png, info, PNG_INFO_eXIf));
    rgb.width = png_get_image_width(png, info);
    rgb.height = png_get_image_height(png, info);
    rgb.bits = png_get_bit_depth(png, info);
    for (uint32_t y = 0; y < rgb.height; ++y) {
        rgb.add(png_get_rows(png, info)[y]);
    }
    png_destroy_read_struct(&png, &info, nullptr);
    std::fclose(file);
    return rgb;
}

Rgb readTiff(std::string const& path) {
    Rgb rgb;
    TIFF* const tiff = TIFFOpen(path.c_str(), "r");
    uint16_t bits = 0;
    uint16_t orientation = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &rgb.width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &rgb.height);
    TIFFGetField(tiff, TIFFTAG_BITSPERSAMPLE, &bits);
    TIFFGetFieldDefaulted(tiff, TIFFTAG_ORIENTATION, &orientation);
    EXPECT_EQ(ORIENTATION_TOPLEFT, orientation);
    rgb.bits = bits;
    std::vector<uint8_t> row(static_cast<size_t>(TIFFScanlineSize(tiff)));
    for (uint32_t y = 0; y < rgb.height; ++y) {
        EXPECT_EQ(1, TIFFReadScanline(tiff, row.data(), y));
        rgb.add(row.data());
    }
    TIFFClose(tiff);
    return rgb;
}

Rgb readPpm(std::string const& path) {
    Rgb rgb;
    std::ifstream file(path, std::ios::binary);
    std::string magic;
    int white = 0;
    file >> magic >> rgb.width >> rgb.height >> white;
    file.get();
    EXPECT_EQ("P6", magic);
    rgb.bits = white == 255 ? 8 : 16;
    for (uint32_t i = 0; i < 3 * rgb.width * rgb.height; ++i) {
        int const high = file.get();
        rgb.samples.push_back(rgb.bits == 8 ? 257 * high : 256 * high + file.get());
    }
    EXPECT_FALSE(file.eof());
    EXPECT_EQ(EOF, file.get());
    return rgb;
}

// What a decoder of JPEGs makes of planes.
std::vector<uint8_t> decodedYuv(std::string const& planes) {
    std::vector<uint8_t> rgb(3 * kWidth * kHeight);
    tjhandle const decoder = tjInitDecompress();
    auto const* const bytes = reinterpret_cast<uint8_t const*>(planes.data());
    EXPECT_EQ(0, tjDecodeYUV(decoder, bytes, 1, TJSAMP_420, rgb.data(), kWidth, 0, kHeight,
                             TJPF_RGB, 0));
    tjDestroy(decoder);
    return rgb;
}

// A camera's file of a scene that looks different however it is turned.
std::string turnedDng(uint32_t orientation) {
    std::vector<uint16_t> samples;
    for (uint32_t i = 0; i < kWidth * kHeight; ++i) {
        uint32_t const x = i % kWidth / 2 * 2;
        uint32_t const y = i / kWidth / 2 * 2;
        uint32_t const channel = channelOf("rggb", i % kWidth, i / kWidth);
        samples.push_back(static_cast<uint16_t>(1500 + x * (channel == 0 ? 60 : 20) +
                                                y * (channel == 2 ? 70 : 25)));
    }
    std::string const file = asDng(kGrey, "rggb", {{274, 3, 1, orientation}});
    return file.substr(0, 1024) + bytesOf(samples);
}

using CliOutputsTest = CliTest;

}  // namespace

TEST_F(CliOutputsTest, RgbFilesHoldTheUprightPictureInTheirBits) {
    struct {
        uint32_t orientation;
        bool exchanged, fromRight, fromBelow;  // sides; which end of the stored rows comes first
    } const turns[] = {{1, false, false, false},
                       {2, false, true, false},
                       {6, true, false, true},
                       {5, true, false, false}};
    for (auto const& turn : turns) {
        put("in.dng", turnedDng(turn.orientation));
        ASSERT_EQ(0, run("in.dng -o stored.yuv").exitCode);
        std::vector<uint8_t> const stored = decodedYuv(get("stored.yuv"));
        for (std::string const name : {"out.png", "out.tif", "out.ppm"}) {
            for (int const bits : {8, 16}) {
                SCOPED_TRACE(name + " " + std::to_string(bits) + ", orientation " +
                             std::to_string(turn.orientation));
                Outcome const outcome =
                        run("in.dng -o " + name + " --depth " + std::to_string(bits));
                ASSERT_EQ(0, outcome.exitCode) << outcome.err;
                EXPECT_EQ("", outcome.err);
                auto* const read = name == "out.png"   ? readPng
                                   : name == "out.tif" ? readTiff
                                                       : readPpm;
                Rgb const rgb = read(path(name));
                ASSERT_EQ(bits, rgb.bits);
                ASSERT_EQ(turn.exchanged ? kHeight : kWidth, rgb.width);
                ASSERT_EQ(3 * kWidth * kHeight, rgb.samples.size());
                int worst = 0;
                size_t between = 0;  // samples that 8 bits have no value for
                for (uint32_t i = 0; i < rgb.samples.size(); ++i) {
                    uint32_t const column = i / 3 % rgb.width;
                    uint32_t const row = i / 3 / rgb.width;
                    uint32_t const across = turn.exchanged ? row : column;
                    uint32_t const down = turn.exchanged ? column : row;
                    uint32_t const x = turn.fromRight ? kWidth - 1 - across : across;
                    uint32_t const y = turn.fromBelow ? kHeight - 1 - down : down;
                    int const wanted = 257 * stored[3 * (y * kWidth + x) + i % 3];
                    worst = std::max(worst, std::abs(rgb.samples[i] - wanted));
                    between += rgb.samples[i] % 257 != 0 ? 1 : 0;
                }
                EXPECT_LE(worst, 2 * 257);
                EXPECT_EQ(bits == 16, between > rgb.samples.size() / 2);
            }
        }
    }
}

TEST_F(CliOutputsTest, PicturesComeAndGoThroughStandardStreams) {
    put("shot.dng", asDng(kBrick, "rggb"));
    put("words.raw", bytesOf(mosaic(kBrick, "gbrg", 10, 64)));
    ASSERT_EQ(0, run("shot.dng -o shot.png").exitCode);
    ASSERT_EQ(0, run("shot.dng -o shot.jpg").exitCode);
    // Whatever kind, from a pipe; the picture alone comes out.
    EXPECT_EQ(0, shell("cat shot.dng | " QUEN_REPROCESS
                       " - -o - --format png --info 2>told.txt >piped.png"));
    EXPECT_EQ(get("shot.png"), get("piped.png"));
    EXPECT_THAT(get("told.txt"), HasSubstr("RAW2YUV"));
    EXPECT_EQ(0, shell(QUEN_REPROCESS " - -o out.nv21 --size 64x48 --bayer gbrg --black 64 "
                                      "--wb 2,1,1.5 <words.raw >out.txt"));
    expectColour("out.nv21", kBrick);
    EXPECT_EQ(0, shell("cat shot.jpg | " QUEN_REPROCESS " - -o made/ >out.txt"));
    EXPECT_EQ("\xff\xd8", get("made/stdin.jpg").substr(0, 2));

    expectErrors(1, {{"- -o x.jpg </dev/null", "-: is empty; nothing came"}});
    EXPECT_EQ(1, run("shot.dng -o - --format png >/dev/full 2>err.txt #").exitCode);
    EXPECT_THAT(get("err.txt"), HasSubstr("standard output cannot be written"));
    expectErrors(2, {{"shot.dng -o -", "give --format"},
                     {"shot.dng shot.dng -o - --format jpg", "takes one picture"},
                     {"shot.dng -o - --format jpg --info=json", "--info=json"},
                     {"- - -o made <shot.dng", "once"},
                     {"shot.dng -o x.jpg --depth 16", "--depth"},
                     {"shot.dng -o x.png --quality 9", "--quality"},
                     {"shot.dng -o x.png --format tif", "contradicts"}});
    EXPECT_EQ(1, run("shot.jpg -o x.png").exitCode);
    EXPECT_EQ(0u, names().count("x.jpg") + names().count("x.png"));
}

TEST_F(CliOutputsTest, ATiffSaysOfItsCaptureWhatAJpegSays) {
    put("shot.dng", asDng(kBrick, "rggb"));
    std::map<std::string, Exiv2::ExifData> said;
    for (std::string const name : {"shot.jpg", "shot.tif"}) {
        ASSERT_EQ(0, run("shot.dng -o " + name).exitCode) << get("err.txt");
        auto const image = Exiv2::ImageFactory::open(path(name));
        image->readMetadata();
        said[name] = image->exifData();
    }
    for (char const* const field :
         {"Exif.Image.Make", "Exif.Image.Model", "Exif.Photo.ExposureTime",
          "Exif.Photo.FocalLength", "Exif.Photo.ISOSpeedRatings", "Exif.Photo.DateTimeOriginal",
          "Exif.Photo.LensModel", "Exif.GPSInfo.GPSLatitude"}) {
        EXPECT_NE("", said["shot.jpg"][field].toString()) << field;
        EXPECT_EQ(said["shot.jpg"][field].toString(), said["shot.tif"][field].toString()) << field;
    }
    EXPECT_EQ("1", said["shot.tif"]["Exif.Image.Orientation"].toString());
}

TEST_F(CliOutputsTest, WhatWasToBePrintedIsToldWhereStandardOutputIsClosed) {
    put("shot.dng", asDng(kGrey, "rggb"));
    expectErrors(1, {{"shot.dng -o x.jpg --info=json >&- 2>err.txt #", "it is closed"},
                     {"--help >&- 2>err.txt #", "it is closed"}});
}

TEST_F(CliOutputsTest, TwoPicturesNeverGoToOneFile) {
    put("a.dng", asDng(kGrey, "rggb"));
    put("b.dng", asDng(kBrick, "rggb"));
    shell("mkdir made && ln -s a.jpg made/b.jpg");
    expectErrors(2, {{"a.dng b.dng -o made", "made/b.jpg: is the same file as made/a.jpg"}});
    put("made/a.jpg", "old");
    expectErrors(2, {{"a.dng b.dng -o made", "made/b.jpg: is the same file as made/a.jpg"}});
    shell("ln -f made/a.jpg made/b.jpg");  // two names: each gets a file of its own
    EXPECT_EQ(0, run("a.dng b.dng -o made").exitCode);
    EXPECT_FALSE(get("made/a.jpg") == get("made/b.jpg"));
}
