// The pictures of the software ISP: develop, resample, encode.

#include <gtest/gtest.h>
#include <stdio.h>

#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "host/isp/develop/Develop.h"
#include "host/isp/develop/Refinement.h"
#include "host/isp/develop/Resample.h"
#include "host/isp/develop/ScaledPlane.h"
#include "host/isp/device/Thumbnail.h"
#include "host/isp/jpeg/Exif.h"
#include "host/isp/jpeg/JpegEncode.h"
#include "support/Golden.h"

namespace {

using namespace quen::host::isp;
using nlohmann::json;

// A picture of an arrangement, 0 NV12, 1 NV21, 2 planar, of rows with bytes between them that are
// not the picture's.
struct Arranged {
    size_t lumaBytes;
    std::vector<uint8_t> bytes;
    YuvPicture view;  // into the bytes

    Arranged(Arranged&& other) = default;
    Arranged(int arrangement, int width, int height) {
        size_t const stride = static_cast<size_t>(width) + 5;
        size_t const chroma = (stride + 1) * static_cast<size_t>(chromaSize(height));
        lumaBytes = stride * static_cast<size_t>(height);
        bytes.resize(lumaBytes + 2 * chroma, 0x5a);
        uint8_t* const start = bytes.data() + lumaBytes;
        view = {width, height, bytes.data(), start, start + 1, stride, stride + 1, 2};
        if (arrangement == 1) {
            std::swap(view.cb, view.cr);
        } else if (arrangement == 2) {
            view.cr = start + chroma;
            view.chromaStep = 1;
        }
    }

    // A sample of a plane, 0 luma, 1 Cb, 2 Cr, by the place of its pixel.
    uint8_t& at(int plane, int x, int y) const {
        bool const isLuma = plane == 0;
        uint8_t* const samples = isLuma ? view.y : plane == 1 ? view.cb : view.cr;
        auto const row = static_cast<size_t>(isLuma ? y : y / 2);
        auto const column = static_cast<size_t>(isLuma ? x : x / 2);
        return samples[row * (isLuma ? view.lumaStride : view.chromaStride) +
                       column * (isLuma ? 1 : view.chromaStep)];
    }

    // Sets each sample of a plane by its place in that.
    template <typename Sample>
    Arranged& set(Sample const& sample) {
        for (int plane = 0; plane < 3; ++plane) {
            int const step = plane == 0 ? 1 : 2;
            for (int y = 0; y < view.height; y += step) {
                for (int x = 0; x < view.width; x += step) {
                    at(plane, x, y) = static_cast<uint8_t>(sample(plane, x / step, y / step));
                }
            }
        }
        return *this;
    }

    // Sets the samples of a golden picture: rows of "y", "cb" and "cr".
    Arranged& set(json const& planes) {
        char const* const names[] = {"y", "cb", "cr"};
        return set([&](int plane, int x, int y) -> int { return planes[names[plane]][y][x]; });
    }
};

// A picture whose samples encode their position.
Arranged gradient(int arrangement, int width, int height) {
    Arranged picture(arrangement, width, height);
    picture.set([=](int plane, int x, int y) {
        return plane == 0   ? 40 + 160 * x / width
               : plane == 1 ? 60 + 200 * y / height
                            : 200 - 200 * x / width;
    });
    return picture;
}

// How many samples of luma and of chroma may be one off.
using OffByOne = std::array<size_t, 2>;

// Compares a picture, the bytes beside its samples included, with what is expected.
void expectAlike(Arranged const& found, Arranged const& expected, OffByOne const& most) {
    OffByOne count = {};
    for (size_t i = 0; i < expected.bytes.size(); ++i) {
        int const difference = found.bytes[i] - expected.bytes[i];
        ASSERT_LE(std::abs(difference), 1) << "byte " << i << ", luma has " << expected.lumaBytes;
        count[i < expected.lumaBytes ? 0 : 1] += difference == 0 ? 0 : 1;
    }
    EXPECT_LE(count[0], most[0]);
    EXPECT_LE(count[1], most[1]);
}

// The calibration of a golden case, which lies there as in a tuning buffer.
SensorCalibration calibrationOf(json const& words) {
    uint8_t bytes[kCalibrationUsedBytes] = {};
    uint8_t again[kCalibrationUsedBytes] = {};
    for (size_t i = 0; i < words.size(); ++i) {
        uint32_t const integer = words[i < 4 ? i : 0];
        float const number = words[i];
        memcpy(bytes + 64 + 4 * i, i < 4 ? static_cast<void const*>(&integer) : &number, 4);
    }
    SensorCalibration result;
    EXPECT_EQ(decodeCalibration(bytes, sizeof(bytes), result), CalibrationState::Present);
    EXPECT_EQ(encodeCalibration({}, result, again, sizeof(again)), sizeof(again));
    EXPECT_EQ(memcmp(again + 64, bytes + 64, sizeof(bytes) - 64), 0);
    return result;
}

PixelRect rectOf(json const& numbers) {
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

// A sum of floats may round otherwise on another processor: luma has next to no such sample. How a
// mean of chroma is rounded is libyuv's affair.
TEST(Develop, GivesWhatAPlainComputationGives) {
    for (json const& golden : quentest::goldenCases("develop")) {
        SCOPED_TRACE(golden["name"]);
        SensorCalibration const calibration = calibrationOf(golden["calibration"]);
        Refinement const refinement = refinementFor(calibration);
        EXPECT_EQ(golden["refinement"], json({refinement.lumaThreshold, refinement.chromaThreshold,
                                              refinement.sharpening}));
        std::vector<uint8_t> bytes;
        for (std::vector<uint8_t> const row : golden["rows"]) {
            bytes.insert(bytes.end(), row.begin(), row.end());
        }
        json const& raw = golden["raw"];
        RawPicture const source = {raw[2], raw[3], bytes.data(), golden["rows"][0].size(),
                                   raw[0], raw[1]};
        EXPECT_LE(rawRowBytes(source.layout, source.width), source.stride);
        PixelRect const crop = rectOf(golden["crop"]);
        Arranged found(golden["target"], crop.width, crop.height);
        Arranged expected(golden["target"], crop.width, crop.height);
        develop(source, crop, calibration, found.view);
        expectAlike(found, expected.set(golden), {found.lumaBytes / 200, found.bytes.size()});
    }
}

TEST(Refinement, GivesWhatAPlainComputationGives) {
    for (json const& golden : quentest::goldenCases("refine")) {
        std::vector<std::vector<uint8_t>> const rows = golden["rows"];
        std::vector<uint8_t> found(rows[1].size());
        refineRow(rows[0].data(), rows[1].data(), rows[2].data(), int(found.size()),
                  golden["threshold"], golden["sharpening"], found.data());
        EXPECT_EQ(json(found), golden["middle"]) << found.size();
    }
}

// The plain computation has no weights of 14 bits: next to a half, one sample in fifty may differ.
TEST(Resample, GivesWhatAPlainComputationGives) {
    for (json const& golden : quentest::goldenCases("resample")) {
        SCOPED_TRACE(golden["name"]);
        auto const blank = [](json const& kind) { return Arranged(kind[0], kind[1], kind[2]); };
        Arranged whole = blank(golden["source"]);
        whole.set(golden["from"]);
        Arranged found = blank(golden["target"]);
        resample(cropped(whole.view, rectOf(golden["crop"])), found.view);
        expectAlike(found, blank(golden["target"]).set(golden["to"]),
                    {1 + found.lumaBytes / 50, 1 + found.bytes.size() / 50});
    }
}

// Decodes to Y, Cb and Cr of every pixel. A warning, as of a restart marker out of turn, fails the
// test.
std::vector<uint8_t> decodeJpeg(std::vector<uint8_t> const& file) {
    jpeg_decompress_struct info = {};
    jpeg_error_mgr errors;
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), file.size());
    jpeg_read_header(&info, TRUE);
    info.out_color_space = JCS_YCbCr;
    jpeg_start_decompress(&info);
    std::vector<uint8_t> pixels(size_t{info.output_width} * info.output_height * 3);
    for (JSAMPROW row = pixels.data(); info.output_scanline < info.output_height;
         row += size_t{info.output_width} * 3) {
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    EXPECT_EQ(errors.num_warnings, 0);
    jpeg_destroy_decompress(&info);
    return pixels;
}

// Compares the pixels of a JPEG.
void expectNear(std::vector<uint8_t> const& file, Arranged const& expected, int tolerance) {
    std::vector<uint8_t> const found = decodeJpeg(file);
    int const width = expected.view.width;
    ASSERT_EQ(found.size(), static_cast<size_t>(width * expected.view.height) * 3);
    for (int i = 0; i < width * expected.view.height * 3; ++i) {
        ASSERT_NEAR(found[static_cast<size_t>(i)], expected.at(i % 3, i / 3 % width, i / 3 / width),
                    i % 3 == 0 ? tolerance : std::max(tolerance, 8))
                << i;
    }
}

TEST(Jpeg, JoinedSlicesDecodeToThePictureAndFitExactlyOrNotAtAll) {
    std::vector<uint8_t> const exif = buildExif({1, 1, 90, "", {}});
    ASSERT_FALSE(exif.empty());
    for (auto const& [width, height] : {std::pair{16, 16}, std::pair{17, 9}, std::pair{333, 128},
                                        std::pair{100, 129}, std::pair{257, 777}}) {
        for (int arrangement = 0; arrangement < 3; ++arrangement) {
            SCOPED_TRACE(testing::Message() << width << " x " << height);
            Arranged const source = gradient(arrangement, width, height);
            std::vector<uint8_t> file(static_cast<size_t>(width * height) * 3 + 4096);
            size_t const size = encodeJpeg(source.view, 97, exif, file.data(), file.size());
            ASSERT_GT(size, exif.size());
            EXPECT_EQ(encodeJpeg(source.view, 97, exif, file.data(), size - 1), 0u);
            ASSERT_EQ(encodeJpeg(source.view, 97, exif, file.data(), size + 1), size);
            file.resize(size);
            expectNear(file, source, 2);
        }
    }
}

TEST(Thumbnail, IsTheWholePictureAt160OnTheLongerSide) {
    for (auto const& [width, height, columns, rows] : {std::tuple(320, 200, 160, 100),
                                                       {300, 700, 68, 160},
                                                       {3000, 1010, 160, 53},
                                                       {100, 61, 100, 61},
                                                       {9, 1600, 1, 160}}) {
        expectNear(makeThumbnail(gradient(1, width, height).view), gradient(0, columns, rows),
                   columns == 1 ? 110 : 8);
    }
}

}  // namespace
