// The pictures of the software ISP: develop, resample, encode.

#include <gtest/gtest.h>
#include <stdio.h>

#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <utility>
#include <vector>

#include "host/isp/develop/Develop.h"
#include "host/isp/develop/Refinement.h"
#include "host/isp/develop/Resample.h"
#include "host/isp/develop/ScaledPlane.h"
#include "host/isp/jpeg/Exif.h"
#include "host/isp/jpeg/JpegEncode.h"

namespace {

using namespace quen::host::isp;

using Rgb = std::array<double, 3>;
using Scene = std::function<Rgb(int x, int y)>;  // linear light, 0..1

constexpr int kColourAt[4][2][2] = {
        {{0, 1}, {1, 3}}, {{1, 0}, {3, 1}}, {{1, 3}, {0, 1}}, {{3, 1}, {1, 0}}};

Rgb grey(double light) {
    return {light, light, light};
}

uint8_t& lumaAt(YuvPicture const& picture, int x, int y) {
    return picture.y[static_cast<size_t>(y) * picture.lumaStride + static_cast<size_t>(x)];
}

size_t chromaAt(YuvPicture const& picture, int x, int y) {
    return static_cast<size_t>(y / 2) * picture.chromaStride +
           static_cast<size_t>(x / 2) * picture.chromaStep;
}

/** Y, Cb and Cr of the pixel. */
std::array<int, 3> sampleAt(YuvPicture const& picture, int x, int y) {
    size_t const offset = chromaAt(picture, x, y);
    return {lumaAt(picture, x, y), picture.cb[offset], picture.cr[offset]};
}

/** Compares every pixel with its expected value. */
template <typename Should>
void expectSamples(YuvPicture const& picture, double tolerance, Should const& should) {
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            auto const found = sampleAt(picture, x, y);
            auto const expected = should(x, y);
            for (size_t i = 0; i < 3; ++i) {
                ASSERT_NEAR(found[i], expected[i], tolerance) << x << ' ' << y << " of " << i;
            }
        }
    }
}

SensorCalibration plainCalibration(BayerOrder order = BayerOrder::RGGB) {
    SensorCalibration calibration;
    calibration.bayerOrder = order;
    calibration.levelBits = 14;
    calibration.whiteLevel = 16383;
    calibration.denoiseStrength = 0;
    return calibration;
}

/** Captures a scene with a sensor of that calibration, and develops a part of it. */
OwnedYuvPicture developed(Scene const& scene, int width, int height,
                          SensorCalibration const& calibration, PixelRect crop = {}) {
    std::vector<uint16_t> words;
    for (int i = 0; i < width * height; ++i) {
        int const x = i % width;
        int const y = i / width;
        int const colour = kColourAt[static_cast<int>(calibration.bayerOrder)][y % 2][x % 2];
        double const light = scene(x, y)[colour == 3 ? 2 : static_cast<size_t>(colour)];
        double const black = calibration.blackLevel[colour];
        double const range = (calibration.whiteLevel - black) / calibration.wbGains[colour];
        words.push_back(static_cast<uint16_t>(std::lround(light * range + black)));
    }
    auto const* const bytes = reinterpret_cast<uint8_t const*>(words.data());
    size_t const stride = static_cast<size_t>(width) * 2;
    RawPicture const raw{width, height, bytes, stride, RawLayout::Words16, calibration.levelBits};
    crop = crop.width == 0 ? PixelRect{0, 0, width, height} : crop;
    OwnedYuvPicture picture(crop.width, crop.height);
    develop(raw, crop, calibration, picture.view());
    return picture;
}

double tone(double light) {
    return 255 * (light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055);
}

// Whatever the gains make of what is brighter than the samples can say.
TEST(Develop, ClipsToWhite) {
    SensorCalibration calibration = plainCalibration();
    calibration.wbGains[0] = 0.5f;
    calibration.wbGains[3] = 0.8f;
    for (double const light : {2.0, 1.1}) {
        auto const scene = [=](int, int) { return grey(light); };
        OwnedYuvPicture const picture = developed(scene, 33, 40, calibration);
        expectSamples(picture.view(), 1.01, [](int, int) { return Rgb{255, 128, 128}; });
    }
}

TEST(Develop, KeepsGreysNeutralThroughTheMatrix) {
    SensorCalibration calibration = plainCalibration();
    float const matrix[] = {1.6f, -0.4f, -0.2f, -0.3f, 1.55f, -0.25f, 0.05f, -0.6f, 1.55f};
    std::copy(std::begin(matrix), std::end(matrix), calibration.colorMatrix);
    calibration.denoiseStrength = 1;
    calibration.sharpening = 0.5f;
    // Level at either end, as the picture goes on beyond its edges.
    auto const light = [](int x) { return 0.5 - 0.47 * std::cos((x + 0.5) / 256 * 3.14159265); };
    auto const scene = [&](int x, int) { return grey(light(x)); };
    expectSamples(developed(scene, 256, 70, calibration).view(), 1.6, [&](int x, int) {
        return Rgb{tone(light(x)), 128, 128};
    });
}

// A crop equals that part of the whole picture, also across the edges of bands.
TEST(Develop, CropsAtAnyCornerWithoutAShift) {
    auto const scene = [](int x, int y) {
        double const wave = 0.3 + 0.2 * std::sin(x * 0.21) * std::cos(y * 0.17);
        return Rgb{wave, 0.9 - wave, 0.5 * wave};
    };
    for (int order = 0; order < 4; ++order) {
        SensorCalibration calibration = plainCalibration(static_cast<BayerOrder>(order));
        calibration.denoiseStrength = order % 2 == 0 ? 0.0f : 2.0f;
        OwnedYuvPicture const whole = developed(scene, 120, 200, calibration);
        for (PixelRect const& crop : {PixelRect{8, 6, 90, 140}, PixelRect{7, 5, 51, 67},
                                      PixelRect{119, 199, 1, 1}, PixelRect{1, 0, 119, 200}}) {
            OwnedYuvPicture const part = developed(scene, 120, 200, calibration, crop);
            int const inset = calibration.denoiseStrength == 0 ? 0 : 1;  // a crop repeats its edge
            for (int y = inset; y < crop.height - inset; ++y) {
                ASSERT_TRUE(std::equal(&lumaAt(part.view(), inset, y),
                                       &lumaAt(part.view(), crop.width - inset, y),
                                       &lumaAt(whole.view(), crop.x + inset, crop.y + y)))
                        << "order " << order << " crop at " << crop.x << " row " << y;
            }
        }
    }
}

TEST(Develop, DenoisingCalmsFlatPartsAndKeepsEdges) {
    SensorCalibration calibration = plainCalibration();
    calibration.noiseShot = 2e-3f;
    auto const scene = [](int x, int) {
        return grey((x < 48 ? 0.15 : 0.6) + 0.02 * (rand() % 201 - 100) / 100.0);
    };
    int roughness[2] = {};
    for (int const strength : {0, 1}) {
        srand(7);
        calibration.denoiseStrength = static_cast<float>(strength);
        OwnedYuvPicture const picture = developed(scene, 96, 96, calibration);
        uint8_t const* const row = &lumaAt(picture.view(), 0, 40);
        EXPECT_GT(row[50] - row[45], 60);
        for (int x = 8; x < 40; ++x) {
            roughness[strength] += std::abs(row[x + 1] - row[x]);
        }
    }
    EXPECT_LT(roughness[1], 0.7 * roughness[0]);
    calibration.sharpening = 1;
    int const strongest = refinementFor(calibration).sharpening;
    calibration.sharpening = 9;
    EXPECT_EQ(refinementFor(calibration).sharpening, strongest);
    calibration.noiseShot = 9;
    EXPECT_EQ(refinementFor(calibration).lumaThreshold, 30);
}

/** A picture of an arrangement, 0 NV12, 1 NV21, 2 planar, whose samples encode their position. */
struct Arranged {
    std::vector<uint8_t> bytes;
    YuvPicture view;

    Arranged(int arrangement, int width, int height) {
        size_t const stride = static_cast<size_t>(width) + 5;
        size_t const plane = stride * static_cast<size_t>(height);
        size_t const chroma = (stride + 1) * static_cast<size_t>(chromaSize(height));
        bytes.resize(plane + 2 * chroma);
        uint8_t* const start = bytes.data() + plane;
        view = {width, height, bytes.data(), start, start + 1, stride, stride + 1, 2};
        if (arrangement == 1) {
            std::swap(view.cb, view.cr);
        } else if (arrangement == 2) {
            view.cr = start + chroma;
            view.chromaStep = 1;
        }
        for (int i = 0; i < width * height; ++i) {
            int const x = i % width;
            int const y = i / width;
            size_t const offset = chromaAt(view, x, y);
            lumaAt(view, x, y) = static_cast<uint8_t>(40 + 160 * x / width);
            view.cb[offset] = static_cast<uint8_t>(60 + 100 * y / height);
            view.cr[offset] = static_cast<uint8_t>(200 - 100 * x / width);
        }
    }
};

TEST(Resample, BringsAnyArrangementIntoAnyOtherAtAnySize) {
    for (int from = 0; from < 3; ++from) {
        Arranged const source(from, 97, 63);
        for (int to = 0; to < 3; ++to) {
            for (auto const& [width, height] :
                 {std::pair{97, 63}, std::pair{48, 31}, std::pair{200, 130}, std::pair{60, 100}}) {
                SCOPED_TRACE(testing::Message() << from << " to " << to << " at " << width);
                Arranged target(to, width, height);
                Arranged const expected(to, width, height);
                std::fill(target.bytes.begin(), target.bytes.end(), uint8_t{0});
                resample(source.view, target.view);
                expectSamples(target.view, 4,
                              [&](int x, int y) { return sampleAt(expected.view, x, y); });
            }
        }
    }
}

// Fine rings survive a way there and back; with linear interpolation they lose three times as much.
TEST(Resample, KeepsFineDetailThereAndBack) {
    constexpr int kSide = 240;
    Arranged const source(0, kSide, kSide);
    for (int i = 0; i < kSide * kSide; ++i) {
        double const x = i % kSide;
        double const y = i / kSide;
        lumaAt(source.view, int(x), int(y)) =
                static_cast<uint8_t>(128 + 100 * std::cos((x * x + y * y) / 800));
    }
    struct {
        int side;
        double most;  // root of the mean squared difference
    } const ways[] = {{kSide / 2, 3.2}, {kSide / 3, 8.4}, {kSide * 3 / 2, 1.4}};
    for (auto const& [side, most] : ways) {
        Arranged const there(0, side, side);
        Arranged const back(0, kSide, kSide);
        resample(source.view, there.view);
        resample(there.view, back.view);
        double sum = 0;
        for (int i = 0; i < kSide * kSide; ++i) {
            double const difference = lumaAt(back.view, i % kSide, i / kSide) -
                                      lumaAt(source.view, i % kSide, i / kSide);
            sum += difference * difference;
        }
        EXPECT_LT(std::sqrt(sum / (kSide * kSide)), most) << side;
    }
}

TEST(Resample, LeavesAFlatPictureAsItIsHoweverSmall) {
    for (int const from : {1, 2, 3, 5, 17}) {
        for (int const to : {1, 2, 3, 4, 16, 33}) {
            uint8_t source[17 * 17];
            uint8_t target[33 * 33] = {};
            std::fill(std::begin(source), std::end(source), uint8_t{200});
            scalePlane({source, size_t(from), from, from, 1}, {target, size_t(to), to, to, 1});
            EXPECT_EQ(std::count(target, target + to * to, 200), to * to) << from << " to " << to;
        }
    }
}

/** Decodes to Y, Cb, Cr of every pixel; a warning fails the test. */
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

TEST(Jpeg, JoinedSlicesDecodeToThePictureAndFitExactlyOrNotAtAll) {
    std::vector<uint8_t> const exif = buildExif({1, 1, 90, "", {}});
    ASSERT_FALSE(exif.empty());
    for (auto const& [width, height] : {std::pair{16, 16}, std::pair{17, 9}, std::pair{333, 128},
                                        std::pair{100, 129}, std::pair{257, 777}}) {
        for (int arrangement = 0; arrangement < 3; ++arrangement) {
            SCOPED_TRACE(testing::Message() << width << " x " << height);
            Arranged const source(arrangement, width, height);
            std::vector<uint8_t> file(static_cast<size_t>(width * height) * 3 + 4096);
            size_t const size = encodeJpeg(source.view, 97, exif, file.data(), file.size());
            ASSERT_GT(size, exif.size());
            EXPECT_EQ(encodeJpeg(source.view, 97, exif, file.data(), size - 1), 0u);
            ASSERT_EQ(encodeJpeg(source.view, 97, exif, file.data(), size + 1), size);
            file.resize(size);
            std::vector<uint8_t> const pixels = decodeJpeg(file);
            ASSERT_EQ(pixels.size(), static_cast<size_t>(width * height) * 3);
            expectSamples(source.view, 6, [&, columns = width](int x, int y) {
                return pixels.data() + static_cast<size_t>(y * columns + x) * 3;
            });
        }
    }
}

TEST(Exif, LeavesOutWhatItHasNoRoomFor) {
    PictureFacts picture;
    picture.thumbnail.assign(70000, 0xff);
    std::vector<uint8_t> const exif = buildExif(picture);
    EXPECT_TRUE(!exif.empty() && exif.size() < 1000) << exif.size();
    CaptureFacts capture;
    capture.iso = 102400;  // the tag has 16 bits
    auto const ofCapture = [&](CaptureFacts const& facts) {
        return exifModule()->ofCapture(exif.data() + 6, exif.size() - 6, true, facts);
    };
    EXPECT_EQ(ofCapture(capture), ofCapture({}));
    capture.exposure = 0.1;
    std::vector<uint8_t> const known = ofCapture(capture);
    uint8_t const tenth[] = {1, 0, 0, 0, 10, 0, 0, 0};
    EXPECT_NE(std::search(known.begin(), known.end(), tenth, std::end(tenth)), known.end());
}

}  // namespace
