// quen-reprocess: RGB files beside the planes that they are made of.

#include <turbojpeg.h>
#include <exiv2/exif.hpp>
#include <exiv2/image.hpp>

#include <string>
#include <vector>

#include "support/Cli.h"
#include "support/FileText.h"

namespace {

using namespace quentest;

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
                Rgb const rgb = name == "out.png"   ? readPng(path(name))
                                : name == "out.tif" ? readTiff(path(name))
                                                    : readPpm(path(name));
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
