#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <turbojpeg.h>

#include <array>
#include <cmath>

#include <quen/Quen3AInfoManager.h>
#include <quenGralloc/MapperHelper.h>

#include "host/isp/device/SoftwareIspModule.h"
#include "support/ClientSession.h"
#include "support/Formats.h"
#include "support/MetadataBuilder.h"
#include "support/RecordingCallback.h"

namespace {

using namespace quentest;
namespace isp = quen::host::isp;

constexpr int kWidth = 64;
constexpr int kHeight = 48;

// Linear light that displays as middle grey.
constexpr double kMiddleGrey = 0.2140;

class SoftwareIspTest : public testing::Test {
  protected:
    SoftwareIspTest() {
        Graphics::fresh();
        EXPECT_EQ(isp::registerSoftwareIsp({}), 0);
    }
    ~SoftwareIspTest() override { mSession.device.destroy(); }

    /** Fills a RAW buffer with one sample for each Bayer position of two rows. */
    static void fillRaw(hidl_handle const& handle, int format, std::array<int, 4> const& samples) {
        Mapping const memory(handle->data[0]);
        std::vector<MapperHelper::PlaneLayout> planes;
        MapperHelper mapper = MapperHelper::getInstance();
        native_handle_t const* buffer = handle.getNativeHandle();
        mapper.importBuffer(buffer);
        ASSERT_EQ(mapper.getPlaneLayouts(buffer, &planes), 0);
        mapper.freeBuffer(buffer);
        memset(memory.data(), 0, memory.size());
        for (int row = 0; row < kHeight; ++row) {
            uint8_t* const line = memory.data() + row * planes.at(0).strideInBytes;
            for (int x = 0; x < kWidth; ++x) {
                int const sample = samples[row % 2 * 2 + x % 2];
                if (format == kRaw16) {
                    line[2 * x] = static_cast<uint8_t>(sample);
                    line[2 * x + 1] = static_cast<uint8_t>(sample >> 8);
                } else {
                    uint8_t* const group = line + x / 4 * 5;
                    group[x % 4] = static_cast<uint8_t>(sample >> 2);
                    group[4] |= static_cast<uint8_t>((sample & 3) << (2 * (x % 4)));
                }
            }
        }
    }
    static void expectMiddleGrey(hidl_handle const& handle, int width, int height) {
        MapperHelper mapper = MapperHelper::getInstance();
        native_handle_t const* buffer = handle.getNativeHandle();
        mapper.importBuffer(buffer);
        android_ycbcr picture = {};
        ASSERT_EQ(mapper.lockYCbCr_4_0(buffer, 0x3, {0, 0, width, height}, -1, picture), 0);
        for (int row = 0; row < height; ++row) {
            for (int x = 0; x < width; ++x) {
                size_t const chroma = row / 2 * picture.cstride + x / 2 * picture.chroma_step;
                EXPECT_NEAR(static_cast<uint8_t*>(picture.y)[row * picture.ystride + x], 128, 3);
                EXPECT_NEAR(static_cast<uint8_t*>(picture.cb)[chroma], 128, 1);
                EXPECT_NEAR(static_cast<uint8_t*>(picture.cr)[chroma], 128, 1);
            }
        }
        int fence = -1;
        mapper.unlock(buffer, fence);
        mapper.freeBuffer(buffer);
    }
    /** Develops a RAW buffer into a YUV one of that size, which is to come out grey. */
    void develop(hidl_handle const& raw, int format, int width, int height,
                 MetadataBuilder const& settings) {
        hidl_handle const yuv = allocateGraphic(width, height, kYuv);
        android::sp<RecordingCallback> const client = new RecordingCallback;
        ImageBuffer const input = imageOf(1, format, kWidth, kHeight, raw);
        ImageBuffer const output = imageOf(2, kYuv, width, height, yuv);
        if (!mSession.peer.isConnected()) {
            mSession.create(input, {output}, settings.get());
        }
        EXPECT_EQ(mSession.process(++mFrame, input, {output}, settings.get(), client), 0);
        EXPECT_TRUE(client->waitFor(2));
        mSession.waitUntilDrained();
        EXPECT_EQ(client->calls().back().status, 0u);
        expectMiddleGrey(yuv, width, height);
    }

    ClientSession mSession;
    int32_t mFrame = 32;
};

TEST_F(SoftwareIspTest, UiModeDecidesTheDepthOfRaw16) {
    struct Case {
        int format, uiMode, bits, scale;
    };
    for (Case const& c : {Case{kRaw10, 0, 10, 1},
                          {kRaw10, 0, 10, 2},  // configures anew
                          {kRaw16, 35, 14, 1},
                          {kRaw16, 16, 10, 1}}) {
        hidl_handle const raw = allocateGraphic(kWidth, kHeight, c.format);
        int const sample = static_cast<int>(std::lround(kMiddleGrey * ((1 << c.bits) - 1)));
        fillRaw(raw, c.format, {sample, sample, sample, sample});
        MetadataBuilder settings;
        settings.i32(tags::kUiMode, c.uiMode);
        develop(raw, c.format, kWidth / c.scale, kHeight / c.scale, settings);
    }
}

TEST_F(SoftwareIspTest, CalibrationReachesTheIspAndComesBack) {
    // A grey card under a warm light, on a black level of 64.
    isp::SensorCalibration calibration;
    calibration.bayerOrder = isp::BayerOrder::BGGR;
    std::fill_n(calibration.blackLevel, 4, 64.0f);
    calibration.wbGains[0] = 2.0f;
    calibration.wbGains[3] = 1.25f;
    auto const sample = [](double gain) {
        return static_cast<int>(std::lround(64 + kMiddleGrey * (1023 - 64) / gain));
    };
    hidl_handle const raw = allocateGraphic(kWidth, kHeight, kRaw10);
    fillRaw(raw, kRaw10, {sample(1.25), sample(1), sample(1), sample(2)});
    QIF3ABufferInfo captured;
    ASSERT_EQ(Quen3AInfoManager::Get3AInfoBuf(&captured, isp::kCalibrationBufferBytes), 0);
    ASSERT_NE(isp::encodeCalibration({}, calibration, Mapping(captured.fd).data(),
                                     isp::kCalibrationBufferBytes),
              0u);
    MetadataBuilder settings;
    settings.i32(tags::kBufferIndex, captured.bufferIndex);
    develop(raw, kRaw10, kWidth, kHeight, settings);

    // The client finds what the ISP used by the index that stands in its settings now.
    int const index = int32In(settings.get(), tags::kBufferIndex);
    EXPECT_NE(index, captured.bufferIndex);
    int fd = -1;
    ASSERT_EQ(Quen3AInfoManager::GetTuningData(&fd, static_cast<unsigned int>(index)), 0);
    Mapping const memory(fd);
    isp::SensorCalibration used;
    ASSERT_EQ(isp::decodeCalibration(memory.data(), memory.size(), used),
              isp::CalibrationState::Present);
    EXPECT_EQ(used.bayerOrder, isp::BayerOrder::BGGR);
    EXPECT_EQ(used.wbGains[0], 2.0f);
}

/** Decodes a JPEG of the tests' size to RGB. */
std::vector<uint8_t> decode(uint8_t const* jpeg, int size) {
    std::vector<uint8_t> rgb(3 * kWidth * kHeight);
    tjhandle const decoder = tjInitDecompress();
    EXPECT_EQ(0, tjDecompress2(decoder, jpeg, static_cast<unsigned long>(size), rgb.data(), kWidth,
                               0, kHeight, TJPF_RGB, 0));
    tjDestroy(decoder);
    return rgb;
}

// A client need not know how the picture lies between the stages.
TEST_F(SoftwareIspTest, WhatIsDevelopedCanBeEncodedAsItLies) {
    hidl_handle const raw = allocateGraphic(kWidth, kHeight, kRaw10);
    fillRaw(raw, kRaw10, {1023, 0, 0, 0});  // pure red
    hidl_handle const yuv = allocateGraphic(kWidth, kHeight, kYuv);
    android::sp<RecordingCallback> const client = new RecordingCallback;
    MetadataBuilder settings;
    ImageBuffer const from = imageOf(1, kRaw10, kWidth, kHeight, raw);
    ImageBuffer const between = imageOf(2, kYuv, kWidth, kHeight, yuv);
    mSession.create(from, {between}, settings.get());
    EXPECT_EQ(mSession.process(5, from, {between}, settings.get(), client), 0);
    EXPECT_TRUE(client->waitFor(2));
    mSession.waitUntilDrained();

    MemoryBuffer const jpeg(65536);
    ImageBuffer const to = jpeg.image(3, 0x21, kWidth, kHeight);
    int const size = mSession.process(6, between, {to}, settings.get(), nullptr);
    mSession.waitUntilDrained();
    ASSERT_GT(size, 0);
    std::vector<uint8_t> const rgb = decode(jpeg.data(), size);
    size_t const middle = 3 * (kWidth * 24 + 32);
    EXPECT_GT(rgb[middle], 240);
    EXPECT_LT(rgb[middle + 1], 15);
    EXPECT_LT(rgb[middle + 2], 15);
}

TEST_F(SoftwareIspTest, YuvBecomesAJpegInTheClientsBuffer) {
    constexpr int kPixels = kWidth * kHeight;
    MemoryBuffer const yuv(kPixels * 3 / 2);
    memset(yuv.data(), 60, kPixels / 2);  // luma in two halves, one neutral colour all over
    memset(yuv.data() + kPixels / 2, 200, kPixels / 2);
    memset(yuv.data() + kPixels, 128, kPixels / 2);
    MemoryBuffer const jpeg(65536);
    ImageBuffer const input = yuv.image(1, kYuv, kWidth, kHeight);
    ImageBuffer const output = jpeg.image(2, kBlob, kWidth, kHeight);
    MetadataBuilder settings;
    mSession.create(input, {output}, settings.get());
    int const size = mSession.process(5, input, {output}, settings.get(), nullptr);
    mSession.waitUntilDrained();
    ASSERT_GT(size, 0);

    std::vector<uint8_t> const rgb = decode(jpeg.data(), size);
    EXPECT_NEAR(rgb[3 * (8 * kWidth + 8)], 60, 4);
    EXPECT_NEAR(rgb[3 * (kPixels - 8 * kWidth)], 200, 4);
}

}  // namespace
