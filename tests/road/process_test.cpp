#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <thread>

#include <quenOfflineDevice/JpegHandover.h>
#include <quenOfflineDevice/RequestNumbers.h>

#include "support/Lines.h"
#include "support/MetadataBuilder.h"
#include "support/RecordingCallback.h"
#include "support/Road.h"
#include "support/ScriptedThreeA.h"

namespace {

using namespace quentest;
using testing::Contains;
using testing::ElementsAre;
using Answer = StandInDevice::StatusReturn;

constexpr int kWidth = 64;
constexpr int kHeight = 48;
constexpr uint32_t kTuningBytes = 0x1fa400;
constexpr uint32_t kJpegBytes = 4096;
constexpr uint32_t kBufferIndex = 0xc00c0018;

class ProcessTest : public testing::Test {
  protected:
    ProcessTest() {
        gJpegResultStatus = 0;
        setJpegTimeout(nullptr);
    }

    StandInDevice& isp() { return mRoad.isp(); }
    int develop(int32_t frameNumber, Road::Client const& client) {
        return mRoad.process(frameNumber, mRaw, {mYuv}, mSettings.get(), client);
    }
    int encode(int32_t frameNumber, Road::Client const& client = nullptr) {
        return mRoad.process(frameNumber, mYuv, {mJpeg}, mSettings.get(), client);
    }
    /** Writes what the ISP leaves in a BLOB buffer: JPEG bytes, and their number at its end. */
    static void writeJpeg(isphal::ISPRequest const& request, uint32_t bytes) {
        Mapping const memory(request.outputBuffers[0].buffer->data[0]);
        std::iota(memory.data(), memory.data() + std::min(bytes, 1000u), uint8_t{1});
        uint32_t const trailer[] = {0xFF, bytes};
        memcpy(memory.data() + kJpegBytes - sizeof(trailer), trailer, sizeof(trailer));
    }
    static bool deadlineHasPassed() {
        timespec now;
        clock_gettime(CLOCK_REALTIME, &now);
        return std::pair(now.tv_sec, now.tv_nsec) >=
               std::pair(gJpegDeadline.tv_sec, gJpegDeadline.tv_nsec);
    }

    Graphics& mGraphics = Graphics::fresh();
    std::shared_ptr<ScriptedThreeA> const mThreeA = std::make_shared<ScriptedThreeA>();
    ScriptedThreeA::Guard const mInstalled{mThreeA};
    MemoryBuffer const mRawMemory{kWidth * kHeight * 10 / 8};
    MemoryBuffer const mYuvMemory{kWidth * kHeight * 3 / 2};
    MemoryBuffer const mJpegMemory{kJpegBytes};
    ImageBuffer const mRaw = mRawMemory.image(1, 0x25, kWidth, kHeight);
    ImageBuffer const mYuv = mYuvMemory.image(2, 0x23, kWidth, kHeight);
    ImageBuffer const mJpeg = mJpegMemory.image(3, 0x21, kWidth, kHeight);
    MetadataBuilder mSettings;
    android::sp<RecordingCallback> const mClient = new RecordingCallback;
    StandInRoad mRoad;
};

TEST_F(ProcessTest, NullParametersAreRefused) {
    mRoad.create(mRaw, {mYuv});
    Transcript transcript;
    EXPECT_EQ(mRoad.device.process(nullptr, mClient), -22);
    EXPECT_THAT(transcript.lines(),
                ElementsAre("I reprocess request stage RAW2YUV E",
                            "E PostProcessParams is nullptr, process request failed"));
}

TEST_F(ProcessTest, RawRequestTravelsToTheClient) {
    MemoryBuffer const captured(kTuningBytes);
    MemoryBuffer const debug(kTuningBytes);
    mThreeA->tuningFd = captured.fd();
    mThreeA->next = {debug.fd(), kTuningBytes, 7};
    mSettings.i64(0xc0030014, int64_t{2}).i32(0xc00300a2, 12).i32(kBufferIndex, 4);
    mRoad.create(mRaw, {mYuv});
    Transcript transcript;
    EXPECT_EQ(develop(100, mClient), 0);
    EXPECT_EQ(deviceLines(transcript), linesOf(R"(
I reprocess request stage RAW2YUV E
I reprocess request session ADDRESS, frame_number 100 input_buffer info : streamId = 1, width = 64, height = 48, size 3840, format = 37
I reprocess request session ADDRESS, frame_number 100 output_buffer info : streamId = 2, width = 64, height = 48, size 4608, format = 35
I process request RAW2YUV stage checkReconfigure E
I last config input stream info width = 64, height = 48, format is equal 1
I last config output stream info streamIndex 0, width = 64, height = 48, format is equal 1
I inputFormat == HAL_PIXEL_FORMAT_RAW10
I isNeedRaw14bit 0
I current snapshot IsNeedRaw14bit 0, last snapshot IsNeedRaw14bit 0
I needReconfigure 0
I process request RAW2YUV stage checkReconfigure X
I reprocess stage RAW2YUV convertToISPBuffer E
I use QCF gralloc buffer
I RequestNo for reprocess 12
I use tuningData bufferIndex 4
I get inputTuningData from metadata success, bufferIndex 4, bufferFd FD
I get 3ADebugInfo result is 1 used3ADebugInfo 1
I tuningData is nullptr 0, tuningData size = 2073600
I reprocess stage RAW2YUV convertToISPBuffer X
I reprocess stage RAW2YUV convertToISPBuffer E
I use QCF gralloc buffer
I get outputTuningData buffer from quencameraserver success, bufferIndex 7, bufferFd FD
I update outputTuningData bufferIndex 7 success
I get 3ADebugInfo result is 1 used3ADebugInfo 1
I tuningData is nullptr 0, tuningData size = 2073600
I reprocess stage RAW2YUV convertToISPBuffer X
D read QUEN_CONTROL_ISFASTDISPLAYREQUEST -1 res 0 pRequesNo 100 frame_num 100
D QUEN_FEEDBACK_TUNNINGMODE 0
I reprocess currentMode 2
E get currentUiMode from resultMetadata failed
E get Engineermode from resultMetadata failed
E get fusion from resultMetadata failed
E get sceneMode from resultMetadata failed
I QUEN_CONTROL_ISDUALSLAVE -1
I for depth value is 0
I QUEN_CONTROL_ISFASTDISPLAYREQUEST -1 read tag isSuccess 0
I reprocessStage raw2yuv
I update tuningMode 6003
I reprocessStage RAW2YUV needMsnr 1
I QUEN_PARAMETER_CROP_REGION_SAT not set, not sat case, app have set MTK_SCALER_CROP_APP_REGION
I convertToISPMetadata E
D IMetadata entry count : 8
I convertToISPMetadata X
I reprocess request stage RAW2YUV X)"));

    // What the ISP was given.
    ASSERT_EQ(isp().requests.size(), 1u);
    isphal::ISPRequest const& request = isp().requests[0];
    EXPECT_EQ(request.requestNumber, 100u);
    EXPECT_EQ(request.inputBuffers[0].tuningData->data[1], captured.fd());
    EXPECT_EQ(request.outputBuffers[0].tuningData->data[1], debug.fd());
    NSCam::IMetadata told;
    ASSERT_TRUE(HalInterfacePeer::convertToIMetadata(*mRoad.peer.halInterface(),
                                                     request.settings.data(), told));
    EXPECT_THAT(int32sOf(told, kBufferIndex), ElementsAre(7));

    // What the client is told.
    isp().answer(100, isphal::Status::OK, ispBuffer({}));
    EXPECT_FALSE(mRoad.isOutstanding(100));
    EXPECT_EQ(mClient->calls().size(), 2u);
}

TEST_F(ProcessTest, RequestThatDoesNotFitConfiguresAnew) {
    mRoad.create(mRaw, {mYuv});
    EXPECT_EQ(develop(1, mClient), 0);
    isp().answer(1);
    Transcript transcript;
    EXPECT_EQ(encode(2, mClient), 0);
    Lines const lines = deviceLines(transcript);
    EXPECT_EQ(lines.back(), "I reprocess request stage YUV2JPEG X");
    EXPECT_THAT(lines, Contains("I needReconfigure 1"));
    ASSERT_EQ(isp().configurations.size(), 2u);
    EXPECT_EQ(isp().configurations[1].outputStreams[0].format, 0x21);
    EXPECT_EQ(isp().requests.back().requestNumber, 2u);
}

TEST_F(ProcessTest, AsynchronousRefusalGoesUnnoticed) {
    mRoad.create(mRaw, {mYuv});
    Transcript transcript;
    isp().onProcess = [](auto const&) { return Answer(isphal::Status::REQUEST_ERROR); };
    EXPECT_EQ(develop(1, mClient), 0);
    EXPECT_FALSE(transcript.has("E ISPDevice process failed result"));
    EXPECT_TRUE(mRoad.isOutstanding(1));
}

TEST_F(ProcessTest, JpegRequestWaitsAndCopies) {
    std::iota(mYuvMemory.data(), mYuvMemory.data() + mYuvMemory.size(), uint8_t{0});
    memset(mJpegMemory.data(), 0xEE, kJpegBytes);
    mSettings.u8(0x70004, std::vector<uint8_t>{90});
    mRoad.create(mYuv, {mJpeg});
    Transcript transcript;
    std::thread answerer;
    isp().onProcess = [&](isphal::ISPRequest const& request) {
        Mapping const input(request.inputBuffers[0].buffer->data[0]);
        EXPECT_EQ(input.bytes(kWidth), mYuvMemory.bytes(kWidth));
        writeJpeg(request, 777);
        answerer = std::thread([&] {
            while (!transcript.has("I wait JPEG process")) {
                std::this_thread::yield();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            isp().answer(100);
        });
        return StandInDevice::ok();
    };
    EXPECT_EQ(encode(100), 777);
    EXPECT_FALSE(deadlineHasPassed());
    EXPECT_EQ(gJpegDeadline.tv_sec - gJpegDeadlineBase.tv_sec, 4);
    answerer.join();
    std::vector<uint8_t> expected(kJpegBytes, 0xEE);
    std::iota(expected.begin(), expected.begin() + 777, uint8_t{1});
    EXPECT_EQ(mJpegMemory.bytes(kJpegBytes), expected);

    // The request's lines from its encoding on, without those of the result's thread.
    Lines lines = deviceLines(transcript);
    lines.erase(lines.begin(), std::find(lines.begin(), lines.end(), "I convertToISPMetadata E"));
    auto const isOfResult = [](std::string const& line) {
        return line.find("callback") != std::string::npos ||
               line.find("esult ") != std::string::npos;
    };
    lines.erase(std::remove_if(lines.begin(), lines.end(), isOfResult), lines.end());
    EXPECT_EQ(lines, linesOf(R"(
I convertToISPMetadata E
D IMetadata entry count : 5
D IMetadata entry tag: 0xD0000, type: 8, count: 1, byte_count: 16, count*byte_count: 16
I convertToISPMetadata X
I wait JPEG process
I JPEG process done
I get JPEG size from output buffer E
I get data from output buffer address ADDRESS
D {.blobId = JPEG, .blobSize = 777}
I get JPEG size is 777 from output buffer X
I jpegSize is 777
I reprocess request stage YUV2JPEG X)"));
}

TEST_F(ProcessTest, OutcomesOfTheSynchronousPath) {
    enum class Isp { Answers, Silent, Refuses, Lost };
    struct Case {
        char const* name;
        Isp isp;
        uint32_t status;      // the result's
        int32_t staleStatus;  // what an earlier result left
        uint32_t jpegBytes;   // what the ISP writes
        int result;
    };
    // The result comes during the submission, so its signal is lost and the wait runs to its end.
    mRoad.create(mYuv, {mJpeg});
    int32_t number = 0;
    for (Case const& c : {Case{"encoded", Isp::Answers, 0, 5, 777, 777},
                          {"failed", Isp::Answers, 5, 0, 777, 0},
                          {"refused", Isp::Refuses, 0, 0, 777, 0},
                          {"lost on its way", Isp::Lost, 0, 0, 777, 0},
                          {"never answered", Isp::Silent, 0, 0, 777, 777},
                          {"never answered after a failure", Isp::Silent, 0, 3, 777, 0},
                          {"as large as the buffer", Isp::Answers, 0, 0, kJpegBytes, kJpegBytes},
                          {"larger than the buffer", Isp::Answers, 0, 0, kJpegBytes + 1, -1}}) {
        SCOPED_TRACE(c.name);
        gJpegResultStatus = c.staleStatus;
        memset(mJpegMemory.data(), 0xEE, kJpegBytes);
        isp().onProcess = [&](isphal::ISPRequest const& request) -> Answer {
            EXPECT_TRUE(mRoad.isOutstanding(request.requestNumber));
            writeJpeg(request, c.jpegBytes);
            if (c.isp == Isp::Answers) {
                isp().answer(request.requestNumber, static_cast<isphal::Status>(c.status));
            }
            return c.isp == Isp::Lost      ? StandInDevice::transportError()
                   : c.isp == Isp::Refuses ? Answer(isphal::Status::RESOURCE_ERROR)
                                           : StandInDevice::ok();
        };
        bool const refused = c.isp == Isp::Refuses || c.isp == Isp::Lost;
        mGraphics.mapper->calls.clear();
        Transcript transcript;
        setJpegTimeout(number == 0 ? "1" : "0");
        EXPECT_EQ(encode(++number), c.result);
        EXPECT_TRUE(deadlineHasPassed());
        EXPECT_EQ(gJpegDeadline.tv_sec - gJpegDeadlineBase.tv_sec, number == 1);
        EXPECT_EQ(transcript.has("E Invalid output buffer"), c.result == -1);
        EXPECT_EQ(transcript.has("E ISPDevice process failed result"), refused);
        EXPECT_EQ(transcript.has("I wait JPEG process"), !refused);
        EXPECT_EQ(mRoad.isOutstanding(static_cast<uint32_t>(number)), c.isp != Isp::Answers);
        EXPECT_EQ(mJpegMemory.data()[0], c.result > 0 ? 1 : 0xEE);
        // Both device buffers are freed at the end, whatever happened.
        Lines const& calls = mGraphics.mapper->calls;
        EXPECT_THAT(Lines(calls.end() - 2, calls.end()), ElementsAre("free", "free"));
        mRoad.answerOutstanding();
    }
}

TEST_F(ProcessTest, JpegTakesTheNumberOverFromTheFastDisplaySequence) {
    mRoad.create(mRaw, {mYuv});
    isp().onProcess = [&](isphal::ISPRequest const& request) {
        isp().answer(request.requestNumber);
        return StandInDevice::ok();
    };
    struct Case {
        char stage;  // R or J
        int32_t frame;
        int32_t tag;  // -1: absent
        uint32_t number;
        size_t markers, pending;  // queued afterwards
    };
    for (Case const& c : {Case{'R', 1, 0, 1, 0, 0},  // there is no marker to take
                          {'R', 2, 1, 2, 1, 0},
                          {'R', 3, -1, 3, 1, 0},
                          {'R', 5, 0, 5, 0, 1},
                          {'J', 6, -1, 6, 0, 1},  // keeps its own without the tag
                          {'J', 7, 1, 5, 0, 0},
                          {'R', 8, 1, 8, 1, 0},
                          {'R', 9, 1, 9, 2, 0},
                          {'R', 10, 0, 10, 1, 1}}) {
        mSettings = MetadataBuilder();
        if (c.tag != -1) {
            mSettings.i32(0xc00300a4, c.tag);
        }
        Transcript transcript;
        EXPECT_EQ(c.stage == 'R' ? develop(c.frame, mClient) : encode(c.frame, mClient), 0);
        char line[120];
        snprintf(line, sizeof(line),
                 "D read QUEN_CONTROL_ISFASTDISPLAYREQUEST %d res %d pRequesNo %u frame_num %d",
                 c.tag, c.tag != -1, c.number, c.frame);
        EXPECT_TRUE(transcript.has(line)) << line;
        EXPECT_EQ(isp().requests.back().requestNumber, c.number);
        EXPECT_EQ(gFastDisplayQueue.size(), c.markers) << line;
        EXPECT_EQ(gPendingJpegRequestNos.size(), c.pending) << line;
    }
    mRoad.device.destroy();  // forgets what is queued
    EXPECT_TRUE(gFastDisplayQueue.empty());
    EXPECT_TRUE(gPendingJpegRequestNos.empty());
}

}  // namespace
