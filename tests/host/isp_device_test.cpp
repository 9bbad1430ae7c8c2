// The software ISP as a client uses it: a device with streams, requests and results.

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <android/hardware/graphics/allocator/4.0/IAllocator.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <mtkcam/isp_metadata.h>
#include <system/graphics.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "host/gralloc/GraphicsServices.h"
#include "host/isp/buffers/SensorCalibration.h"
#include "host/isp/device/SoftwareIspModule.h"
#include "host/metadata/IspMetadataReader.h"

namespace {

using namespace std::chrono_literals;
using namespace quen::host::isp;
using namespace vendor::mediatek::hardware::camera::isphal::V1_0;
using android::sp;
using android::hardware::Return;
using android::hardware::graphics::allocator::V4_0::IAllocator;
using android::hardware::graphics::mapper::V4_0::IMapper;

constexpr uint32_t kWidth = 64;
constexpr uint32_t kHeight = 48;
constexpr uint64_t kInput = 3;
constexpr uint64_t kOutput = 7;

constexpr int32_t kRaw16 = HAL_PIXEL_FORMAT_RAW16;
constexpr int32_t kNv12 = HAL_PIXEL_FORMAT_IMPLEMENTATION_DEFINED;
constexpr int32_t kNv21 = HAL_PIXEL_FORMAT_YCRCB_420_SP;
constexpr int32_t kPlanar = HAL_PIXEL_FORMAT_YV12;
constexpr int32_t kBlob = HAL_PIXEL_FORMAT_BLOB;

constexpr uint32_t kCrop = 0x000d0000;
constexpr uint32_t kRawBitDepth = 0x800b001b;

/** A graphic buffer, mapped for the test. */
struct Buffer {
    Buffer(uint32_t width, uint32_t height, int32_t format) : bytes(width * height * 2) {
        IMapper::BufferDescriptorInfo info{};
        info.width = width;
        info.height = height;
        info.layerCount = 1;
        info.format = static_cast<decltype(info.format)>(format);
        info.usage = 0x33;
        hidl_vec<uint8_t> descriptor;
        (void)IMapper::getService()->createDescriptor(
                info, [&](auto, auto& described) { descriptor = described; });
        (void)IAllocator::getService()->allocate(
                descriptor, 1, [&](auto, uint32_t, auto& buffers) { raw = buffers[0]; });
        data = static_cast<uint8_t*>(
                mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, raw->data[0], 0));
        EXPECT_NE(data, MAP_FAILED);
    }
    ~Buffer() { munmap(data, bytes); }
    Buffer(Buffer const&) = delete;
    Buffer& operator=(Buffer const&) = delete;

    size_t const bytes;  // or fewer
    hidl_handle raw;
    uint8_t* data = nullptr;
};

/** Records results, and runs an action within each. */
class Results : public ICallback {
  public:
    Return<void> processResult(ISPResult const& result) override {
        onResult(result);
        std::lock_guard<std::mutex> const guard(mLock);
        mTold += std::to_string(result.reqNumber) + ' ' + toString(result.status) + ' ';
        ++mCount;
        mArrived.notify_all();
        return android::hardware::Void();
    }
    Return<void> processEarlyResult(ISPResult const&) override { return android::hardware::Void(); }

    /** Number and status of every result, once exactly that many have arrived. */
    std::string told(size_t count) {
        std::unique_lock<std::mutex> guard(mLock);
        mArrived.wait_for(guard, 20s, [&] { return mCount >= count; });
        EXPECT_EQ(mCount, count);
        return mTold;
    }

    std::function<void(ISPResult const&)> onResult = [](auto&) {};

  private:
    std::mutex mLock;
    std::condition_variable mArrived;
    size_t mCount = 0;  // guarded by mLock, as the next
    std::string mTold;
};

ISPStream stream(uint64_t id, int32_t format, uint32_t width = kWidth, uint32_t height = kHeight) {
    ISPStream result{};
    result.id = id;
    result.format = format;
    result.width = width;
    result.height = height;
    return result;
}

using Entry = std::pair<uint32_t, std::vector<int32_t>>;

hidl_vec<uint8_t> settings(std::vector<Entry> const& entries) {
    std::vector<unsigned char> buffer;
    initial_isp_metadata_vector(buffer, static_cast<unsigned>(entries.size()));
    for (auto [tag, values] : entries) {
        add_isp_metadata_entry(buffer, tag, 1, values.data(),
                               static_cast<unsigned>(4 * values.size()), nullptr);
    }
    return buffer;
}

ISPRequest request(uint32_t number, hidl_handle const& input,
                   std::vector<hidl_handle> const& outputs,
                   std::vector<Entry> const& entries = {}) {
    ISPRequest result{};
    result.requestNumber = number;
    result.settings = settings(entries);
    result.inputBuffers.resize(1);
    result.inputBuffers[0].streamId = kInput;
    result.inputBuffers[0].buffer = input;
    result.outputBuffers.resize(outputs.size());
    for (size_t i = 0; i < outputs.size(); ++i) {
        result.outputBuffers[i].streamId = kOutput + i;
        result.outputBuffers[i].buffer = outputs[i];
    }
    return result;
}

/** A fresh platform, a device of the ISP, and the receiver of its results. */
class SoftwareIsp : public testing::Test {
  protected:
    SoftwareIsp() {
        EXPECT_EQ(registerSoftwareIsp(), android::OK);
        (void)IISPModule::getService("internal/0")
                ->openISPDevice([&](Status, sp<IDevice> const& opened) { device = opened; });
    }

    Status configure(ISPStream const& input, std::vector<ISPStream> const& outputs,
                     std::vector<Entry> const& session = {}) {
        ISPStreamConfiguration config;
        config.inputStreams = hidl_vec<ISPStream>{input};
        config.outputStreams = outputs;
        config.sessionSettings = settings(session);
        return device->configureISPDevice(config, results);
    }

    Status submit(ISPRequest const& wanted) {
        return device->processISPRequest(hidl_vec<ISPRequest>{wanted});
    }
    void submitSome(uint32_t first, uint32_t last) {
        for (uint32_t number = first; number <= last; ++number) {
            ASSERT_EQ(submit(request(number, raw.raw, {yuv.raw})), Status::OK);
        }
    }

    quen::host::GraphicsServices graphics = quen::host::registerGraphicsServices();
    sp<Results> results = new Results;
    sp<IDevice> device;
    Buffer raw{kWidth, kHeight, kRaw16};
    Buffer yuv{kWidth, kHeight, kNv12};
    ISPStream const rawStream = stream(kInput, kRaw16);
    ISPStream const yuvStream = stream(kOutput, kNv12);
};

TEST_F(SoftwareIsp, DevelopsIntoEveryLayoutAndScalesToEachOutput) {
    ASSERT_EQ(configure(rawStream,
                        {yuvStream, stream(kOutput + 1, kNv21, 32, 24),
                         stream(kOutput + 2, kPlanar, 128, 96)},
                        {{kRawBitDepth, {14}}}),
              Status::OK);
    for (uint32_t i = 0; i < kWidth * kHeight; i += i % kWidth == 62 ? kWidth + 2 : 2) {
        memset(raw.data + 2 * i, 0xff, 2);  // pure red
    }
    Buffer const nv21(32, 24, kNv21);
    Buffer const planar(128, 96, kPlanar);
    ASSERT_EQ(submit(request(1, raw.raw, {yuv.raw, nv21.raw, planar.raw})), Status::OK);
    EXPECT_EQ(results->told(1), "1 OK ");
    // Cr comes first in two of the layouts.
    for (auto const& [samples, luma, cb, cr] :
         {std::tuple(yuv.data, 20 * 64 + 20, 48 * 64 + 20, 48 * 64 + 21),
          {nv21.data, 10 * 64 + 10, 24 * 64 + 11, 24 * 64 + 10},
          {planar.data, 40 * 128 + 40, 96 * 128 + 48 * 64 + 40, 96 * 128 + 40}}) {
        EXPECT_NEAR(samples[luma], 76, 2);
        EXPECT_NEAR(samples[cb], 85, 2);
        EXPECT_NEAR(samples[cr], 255, 2);
    }

    memset(raw.data + kWidth * 2 * 24, 3, kWidth * 2 * 24);
    ASSERT_EQ(submit(request(2, raw.raw, {yuv.raw},
                             {{kRawBitDepth, {10}}, {kCrop, {-8, 30, 100, 100}}})),
              Status::OK);
    EXPECT_EQ(results->told(2), "1 OK 2 OK ");
    EXPECT_NEAR(yuv.data[0], 225, 2) << "771 of 1023";
}

TEST_F(SoftwareIsp, ClipsACropAtEachSide) {
    std::vector<int32_t> found;
    results->onResult = [&](ISPResult const& result) {
        quen::host::IspMetadataReader reader;
        ASSERT_TRUE(reader.parse(result.resultMetadata.data(), result.resultMetadata.size()));
        for (size_t i = 0; i < 4; ++i) {
            found.push_back(reader.int32Of(kCrop, i).value_or(-1));
        }
    };
    uint32_t number = 0;
    for (auto const& [format, wanted, clipped] :
         {std::tuple(kRaw16, std::vector{-8, 4, 40, 20}, std::vector{0, 4, 32, 20}),
          {kRaw16, {40, 4, 40, 20}, {40, 4, 24, 20}},
          {kRaw16, {4, -8, 20, 20}, {4, 0, 20, 12}},
          {kRaw16, {4, 40, 20, 20}, {4, 40, 20, 8}},
          {kNv12, {5, 7, 20, 20}, {4, 6, 20, 20}}}) {  // chroma goes by pairs
        ASSERT_EQ(configure(stream(kInput, format), {yuvStream}), Status::OK);
        Buffer const input(kWidth, kHeight, format);
        found.clear();
        ASSERT_EQ(submit(request(++number, input.raw, {yuv.raw}, {{kCrop, wanted}})), Status::OK);
        results->told(number);
        EXPECT_EQ(found, clipped);
    }
}

TEST_F(SoftwareIsp, EncodesAtTheSizeOfItsOutput) {
    constexpr uint32_t kBytes = 32768;
    ASSERT_EQ(configure(stream(kInput, kNv12), {stream(kOutput, kBlob, 32, 24)}), Status::OK);
    Buffer const blob(kBytes, 1, kBlob);
    ASSERT_EQ(submit(request(1, yuv.raw, {blob.raw})), Status::OK);
    EXPECT_EQ(results->told(1), "1 OK ");
    std::string const file(reinterpret_cast<char*>(blob.data), kBytes);
    EXPECT_NE(file.find(std::string("\0\x11\x08\0\x18\0\x20", 7)), std::string::npos);
    Buffer const trailerAlone(8, 1, kBlob);
    EXPECT_EQ(submit(request(2, yuv.raw, {trailerAlone.raw})), Status::ILLEGAL_ARGUMENT);

    // The session's quality is that of requests without one; one failure is the request's.
    ASSERT_EQ(configure(stream(kInput, kNv12),
                        {stream(kOutput, kBlob, 32, 24), stream(kOutput + 1, kBlob, 32, 24)},
                        {{0x00070004, {20}}}),
              Status::OK);
    Buffer const first(kBytes, 1, kBlob);
    Buffer const other(kBytes, 1, kBlob);
    Buffer const tooSmall(100, 1, kBlob);
    ASSERT_EQ(submit(request(3, yuv.raw, {first.raw, tooSmall.raw})), Status::OK);
    ASSERT_EQ(submit(request(4, yuv.raw, {tooSmall.raw, other.raw}, {{0x00070004, {20}}})),
              Status::OK);
    EXPECT_EQ(results->told(3), "1 OK 3 RESULT_ERROR 4 RESULT_ERROR ");
    EXPECT_EQ(memcmp(first.data, other.data, kBytes), 0);
}

TEST_F(SoftwareIsp, TellsOfTheFrameBesideEachOutput) {
    ASSERT_EQ(configure(rawStream, {yuvStream}), Status::OK);
    Buffer const given(kCalibrationBufferBytes, 1, kBlob);
    Buffer const made(kCalibrationBufferBytes, 1, kBlob);
    ISPRequest wanted = request(5, raw.raw, {yuv.raw});
    wanted.inputBuffers[0].tuningData = given.raw;
    wanted.outputBuffers[0].tuningData = made.raw;
    encodeCalibration({3, 4, 0}, {}, given.data, kCalibrationBufferBytes);
    size_t count = 0;
    for (int const frameNumber : {4, 5}) {
        ASSERT_EQ(submit(wanted), Status::OK);
        results->told(++count);
        CalibrationHeader const header =
                decodeCalibrationHeader(made.data, kCalibrationBufferBytes);
        EXPECT_EQ(header.requestNo, 5);
        EXPECT_EQ(header.frameNumber, frameNumber);
        memset(given.data + 64, 0, 4);  // a header without a calibration means nothing
    }
    // What is wrong with a calibration is no matter where nothing is developed.
    SensorCalibration wrong;
    wrong.whiteLevel = -1;
    encodeCalibration({}, wrong, given.data, kCalibrationBufferBytes);
    ASSERT_EQ(configure(stream(kInput, kNv12), {yuvStream}), Status::OK);
    wanted.inputBuffers[0].buffer = Buffer(kWidth, kHeight, kNv12).raw;
    ASSERT_EQ(submit(wanted), Status::OK);
    EXPECT_EQ(results->told(3), "5 OK 5 OK 5 OK ");
}

TEST_F(SoftwareIsp, TakesInterleavedRgbInABlock) {
    ISPStream input = stream(kInput, kBlob);
    input.bufferLayout = 0x00010002;
    constexpr uint32_t kStride = 6 * kWidth + 10;
    input.stride = hidl_vec<uint32_t>{kStride, 0, 0};
    ASSERT_EQ(configure(input, {yuvStream}), Status::OK);
    Buffer const rgb(kStride * kHeight, 1, kBlob);
    for (uint32_t i = 0; i < kWidth * kHeight; ++i) {
        memset(rgb.data + i / kWidth * kStride + i % kWidth * 6 + 4, 0xff, 2);  // pure blue
    }
    ASSERT_EQ(submit(request(1, rgb.raw, {yuv.raw})), Status::OK);
    EXPECT_EQ(results->told(1), "1 OK ");
    EXPECT_NEAR(yuv.data[65], 29, 1);
    EXPECT_NEAR(yuv.data[kWidth * kHeight], 255, 1);
}

TEST_F(SoftwareIsp, RefusesWhatIsWrongWithTheStatusThatFits) {
    for (auto const& [input, outputs, bits] :
         {std::tuple(rawStream, std::vector<ISPStream>(), 10),
          {rawStream, {yuvStream, yuvStream}, 10},
          {stream(kInput, kRaw16, 65501, 8), {yuvStream}, 10},
          {stream(kInput, HAL_PIXEL_FORMAT_RAW10, 66), {yuvStream}, 10},
          {rawStream, {stream(kOutput, HAL_PIXEL_FORMAT_RGBA_8888)}, 10},
          {rawStream, {yuvStream}, 3}}) {
        EXPECT_EQ(configure(input, outputs, {{kRawBitDepth, {bits}}}), Status::ILLEGAL_ARGUMENT);
    }
    ISPRequest const good = request(1, raw.raw, {yuv.raw});
    EXPECT_EQ(submit(good), Status::REQUEST_ERROR) << "no configuration was good";
    EXPECT_EQ(configure(stream(kInput, kRaw16, 65500, 8), {yuvStream}), Status::OK);
    ASSERT_EQ(configure(rawStream, {yuvStream}), Status::OK);

    ISPRequest wrong = good;
    wrong.outputBuffers[0].streamId = 99;
    EXPECT_EQ(submit(wrong), Status::REQUEST_STREAM_ID_ERROR);
    wrong = good;
    Buffer const tooShort(kCalibrationBufferBytes - 1, 1, kBlob);
    for (hidl_handle const& noTuning : {yuv.raw, tooShort.raw}) {
        wrong.inputBuffers[0].tuningData = noTuning;
        EXPECT_EQ(submit(wrong), Status::ILLEGAL_ARGUMENT);
    }
    for (Entry const& entry :
         {Entry{kCrop, {1, 2, 3}}, Entry{kCrop, {0, 0, 0, 5}}, Entry{kCrop, {64, 0, 5, 5}},
          Entry{kRawBitDepth, {20}}, Entry{0x00070004, {101}}}) {
        EXPECT_EQ(submit(request(1, raw.raw, {yuv.raw}, {entry})), Status::ILLEGAL_ARGUMENT);
    }
    wrong = good;
    wrong.inputBuffers = hidl_vec<ISPBuffer>{good.inputBuffers[0], good.inputBuffers[0]};
    EXPECT_EQ(submit(wrong), Status::ILLEGAL_ARGUMENT) << "two inputs";
    wrong = good;
    Buffer const small(kWidth, kHeight - 2, kNv12);
    Buffer const narrow(kWidth / 2, kHeight, kRaw16);
    for (auto const& [input, outputs] : {std::pair(raw.raw, std::vector<hidl_handle>()),
                                         {raw.raw, {small.raw}},
                                         {raw.raw, {raw.raw}},
                                         {narrow.raw, {yuv.raw}},
                                         {hidl_handle(), {yuv.raw}}}) {
        EXPECT_EQ(submit(request(1, input, outputs)), Status::ILLEGAL_ARGUMENT);
    }
    Buffer const tuning(kCalibrationBufferBytes, 1, kBlob);
    void (*const spoilers[])(SensorCalibration&) = {
            [](auto& sensor) { sensor.whiteLevel = -1; },
            [](auto& sensor) { sensor.levelBits = 17; },
            [](auto& sensor) { sensor.blackLevel[3] = sensor.whiteLevel; },
            [](auto& sensor) { sensor.wbGains[3] = 0; },
            [](auto& sensor) { sensor.colorMatrix[8] = INFINITY; },
            [](auto& sensor) { sensor.exposureGain = 2000; },
            [](auto& sensor) { sensor.noiseShot = -1; },
            [](auto& sensor) { sensor.noiseRead = NAN; },
            [](auto& sensor) { sensor.denoiseStrength = -1; },
            [](auto& sensor) { sensor.sharpening = NAN; }};
    for (auto const& spoil : spoilers) {
        SensorCalibration sensor;
        spoil(sensor);
        encodeCalibration({}, sensor, tuning.data, kCalibrationBufferBytes);
        EXPECT_EQ(decodeCalibration(tuning.data, kCalibrationBufferBytes, sensor),
                  CalibrationState::Malformed)
                << &spoil - spoilers;
    }
    wrong.inputBuffers[0].tuningData = tuning.raw;
    EXPECT_EQ(submit(wrong), Status::OK);
    EXPECT_EQ(results->told(1), "1 ILLEGAL_ARGUMENT ") << "an invalid calibration";

    // Refused requests leave nothing behind, and no result follows the close.
    submitSome(2, 20);
    EXPECT_EQ(Status(device->closeISPDevice()), Status::OK);
    results->told(20);
    EXPECT_EQ(submit(good), Status::REQUEST_ERROR) << "closed";
    EXPECT_EQ(configure(rawStream, {yuvStream}), Status::REQUEST_ERROR);
    EXPECT_EQ(graphics.mapper->counts().imports, 0u);
}

TEST_F(SoftwareIsp, FlushAnswersEverythingThatIsNotBegun) {
    ASSERT_EQ(configure(rawStream, {yuvStream}), Status::OK);
    std::promise<void> begun;
    std::promise<void> goOn;
    results->onResult = [&](ISPResult const& result) {
        if (result.reqNumber == 1) {
            begun.set_value();
            goOn.get_future().wait();
        }
        // Those behind it, the one for its raw and the one for its picture, are still held.
        EXPECT_EQ(graphics.mapper->counts().imports,
                  result.reqNumber == 1 ? 6 : 8 - 2 * result.reqNumber);
    };
    submitSome(1, 3);
    begun.get_future().wait();
    EXPECT_EQ(Status(device->flush()), Status::OK);
    submitSome(4, 4);
    goOn.set_value();
    EXPECT_EQ(results->told(4), "1 OK 2 REQUEST_ERROR 3 REQUEST_ERROR 4 OK ");
}

TEST_F(SoftwareIsp, CanBeClosedAndDroppedWithinAResult) {
    ASSERT_EQ(configure(rawStream, {yuvStream}), Status::OK);
    std::promise<void> submitted;
    results->onResult = [&](ISPResult const& result) {
        if (result.reqNumber == 1) {
            submitted.get_future().wait();
            EXPECT_EQ(Status(device->closeISPDevice()), Status::OK);
            device.clear();  // the last reference
        }
    };
    submitSome(1, 3);
    submitted.set_value();
    // The two queued after it are answered within the close.
    EXPECT_EQ(results->told(3), "2 REQUEST_ERROR 3 REQUEST_ERROR 1 OK ");
}

}  // namespace
