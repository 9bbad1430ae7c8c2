#include <quenOfflineDevice/RequestNumbers.h>

#include "support/Lines.h"
#include "support/ProcessTest.h"

namespace {

using namespace quentest;
using testing::Contains;
using testing::ElementsAre;
using Answer = StandInDevice::StatusReturn;

constexpr uint32_t kBufferIndex = 0xc00c0018;

bool deadlineHasPassed() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return std::pair(now.tv_sec, now.tv_nsec) >=
           std::pair(gJpegDeadline.tv_sec, gJpegDeadline.tv_nsec);
}

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
    EXPECT_EQ(develop(100, mClient), 0);

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
        answerer = answerLater(100, transcript);
        return StandInDevice::ok();
    };
    EXPECT_EQ(encode(100), 777);
    EXPECT_FALSE(deadlineHasPassed());
    EXPECT_EQ(gJpegDeadline.tv_sec - gJpegDeadlineBase.tv_sec, 4);
    answerer.join();
    std::vector<uint8_t> expected(kJpegBytes, 0xEE);
    std::iota(expected.begin(), expected.begin() + 777, uint8_t{1});
    EXPECT_EQ(mJpegMemory.bytes(kJpegBytes), expected);
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
