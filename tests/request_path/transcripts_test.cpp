#include <fstream>
#include <iterator>

#include <quenOfflineDevice/metadata/IspMetadata.h>

#include "support/Formats.h"
#include "support/Lines.h"
#include "support/ProcessTest.h"
#include "support/Requests.h"

namespace {

using namespace quentest;

/**
 * Every line that the library writes for a request, scene by scene, against the texts in
 * request_path/transcripts, or, where the hardened build writes others, in its hardened folder.
 * "== " begins a step, "-- " the lines of other threads than the client's.
 */
class TranscriptsTest : public ProcessTest {
  protected:
    template <typename Step>
    void note(std::string const& title, Step&& step) {
        Transcript transcript;
        step(transcript);
        write("== " + title, transcript.linesOfThisThread());
        Lines const others = transcript.linesOfThisThread(false);
        write(others.empty() ? "" : "-- on the ISP's thread", others);
    }

    void expectScene(std::string const& name) const {
        std::ifstream file(QUEN_TRANSCRIPTS "/hardened/" + name + ".txt");
        if (!quen::kHardened || !file) {
            file = std::ifstream(QUEN_TRANSCRIPTS "/" + name + ".txt");
        }
        std::string const expected{std::istreambuf_iterator<char>(file), {}};
        EXPECT_FALSE(expected.empty()) << name;
        EXPECT_EQ(mText, expected) << name;
    }

  private:
    void write(std::string const& heading, Lines const& lines) {
        mText += heading.empty() ? "" : heading + '\n';
        for (std::string const& line : lines) {
            static std::regex const secondDescriptor("FD FD, [1-9][0-9]*");
            mText += std::regex_replace(steady(line), secondDescriptor, "FD FD, FD") + '\n';
        }
    }

    std::string mText;
};

TEST_F(TranscriptsTest, FirstRawRequestWithACallback) {
    MemoryBuffer const captured(kTuningBytes);
    MemoryBuffer const debug(kTuningBytes);
    int32_t const header[] = {12, 0, 0, 100, 0, 0, 0, 0, 4711};
    memcpy(debug.data(), header, sizeof(header));
    mThreeA->tuningFd = captured.fd();
    mThreeA->next = {debug.fd(), kTuningBytes, 7};
    mSettings.i64(tags::kCurrentMode, 2).i32(tags::kRequestNo, 12).i32(tags::kBufferIndex, 4);
    note("create", [&](auto&) { mSession.create(mRaw, {mYuv}); });
    note("process 100", [&](auto&) { EXPECT_EQ(develop(100, mClient), 0); });
    isphal::ISPRequest const& request = isp().requests.at(0);
    ASSERT_EQ(request.inputBuffers.size() * request.outputBuffers.size(), 1u);
    EXPECT_EQ(request.requestNumber, 100u);
    EXPECT_EQ(request.inputBuffers[0].tuningData->data[1], captured.fd());
    EXPECT_EQ(request.outputBuffers[0].tuningData->data[1], debug.fd());
    EXPECT_EQ(request.inputBuffers[0].reservedSize + request.outputBuffers[0].reservedSize, 0u);
    NSCam::IMetadata told;
    quen::convertToIMetadata(request.settings.data(), told);
    EXPECT_THAT(int32sOf(told, tags::kBufferIndex), testing::ElementsAre(7));
    note("result 100", [&](auto&) {
        isp().answer(100, isphal::Status::OK,
                     ispBuffer({ispRecord<int64_t>(tags::kCurrentMode, 2, {9})}));
    });
    note("destroy", [&](auto&) { mSession.device.destroy(); });
    expectScene("raw_request");
}

TEST_F(TranscriptsTest, RawRequestWithoutSettings) {
    mSession.create(mRaw, {mYuv});
    note("process 1", [&](auto&) { mSession.process(1, mRaw, {mYuv}, nullptr, mClient); });
    note("result 1", [&](auto&) { isp().answer(1); });
    expectScene("request_without_settings");
}

TEST_F(TranscriptsTest, SecondRequestReconfigures) {
    mSession.create(mRaw, {mYuv});
    develop(1, mClient);
    isp().answer(1);
    mSettings.i32(tags::kUiMode, 16);
    note("process 2", [&](auto&) { EXPECT_EQ(encode(2, mClient), 0); });
    note("failed result 2", [&](auto&) { isp().answer(2, isphal::Status::RESULT_ERROR); });
    expectScene("reconfiguring_request");
}

TEST_F(TranscriptsTest, SynchronousJpeg) {
    mThreeA->tuningFd = 0;  // the least descriptor that is taken
    mSettings.i32(tags::kCameraId, 1).i32(tags::kBufferIndex, 4);
    mSession.create(mYuv, {mJpeg});
    std::thread answerer;
    note("process 100", [&](Transcript const& transcript) {
        isp().onProcess = [&](isphal::ISPRequest const& request) {
            writeJpeg(request, 777);
            answerer = answerLater(100, transcript);
            return StandInDevice::ok();
        };
        EXPECT_EQ(encode(100), 777);
        answerer.join();
    });
    expectScene("synchronous_jpeg");
}

TEST_F(TranscriptsTest, SynchronousTimeOut) {
    mSession.create(mYuv, {mJpeg});
    setJpegTimeout("0");
    quen::gJpegResultStatus = 3;
    note("process 1", [&](auto&) { EXPECT_EQ(encode(1), quen::kHardened ? -110 : 0); });
    note("late result 1", [&](auto&) { isp().answer(1); });
    expectScene("synchronous_timeout");
}

TEST_F(TranscriptsTest, SynchronousRequestsOfTwoOutputs) {
    ImageBuffer const small = mYuvMemory.image(4, kYuv, 16, 12);
    mSession.create(mYuv, {mJpeg, small});
    answerAtOnce();
    auto const process = [&](int number, ImageBuffer const& input,
                             std::vector<ImageBuffer> const& outputs) {
        return mSession.process(number, input, outputs, mSettings.get(), nullptr);
    };
    note("process 1, the JPEG second", [&](auto&) {
        EXPECT_EQ(process(1, mYuv, {small, mJpeg}), 777);
    });
    note("process 2, the JPEG first", [&](auto&) {
        EXPECT_EQ(process(2, mYuv, {mJpeg, small}), 777);
    });
    // The second output's buffer is the client's own.
    std::vector<void*> const freed = mGraphics.mapper->freed;
    EXPECT_THAT(std::vector(freed.end() - 2, freed.end()),
                testing::ElementsAre(testing::Ne(small.buffer), small.buffer));
    note("process 3, without a JPEG", [&](auto&) { EXPECT_EQ(process(3, mYuv, {small}), -1); });
    note("process 4, raw", [&](auto&) { EXPECT_EQ(process(4, mRaw, {small}), 0); });
    expectScene("two_outputs");
}

TEST_F(TranscriptsTest, FastDisplaySequence) {
    answerAtOnce();
    mSession.create(mRaw, {mYuv});
    mSettings.i32(tags::kFastDisplay, 1);
    note("process 1, for display", [&](auto&) { EXPECT_EQ(develop(1, mClient), 0); });
    mSettings.i32(tags::kFastDisplay, 0);
    note("process 2, the capture", [&](auto&) { EXPECT_EQ(develop(2, mClient), 0); });
    note("process 3, its JPEG", [&](auto&) { EXPECT_EQ(encode(3, mClient), 0); });
    expectScene("fast_display_sequence");
}

TEST_F(TranscriptsTest, DrainedWaitThatGivesUp) {
    mSession.create(mRaw, {mYuv});
    develop(1, mClient);
    // A result takes request 1 over and is at work on it for longer than the drained wait lasts.
    auto const claimed = bridge::table(*mSession.peer.halInterface()).claim(1);
    note("process 2", [&](auto&) { EXPECT_EQ(encode(2, mClient), 0); });
    note("result 1, which nobody waits for", [&](auto&) { isp().answer(1); });
    expectScene("abandoned_request");
    quen::destroyOfflineRequest(claimed.request);
}

TEST_F(TranscriptsTest, RefusedRequests) {
    mSession.create(mYuv, {mJpeg});
    isp().onProcess = [](auto const&) -> StandInDevice::StatusReturn {
        return isphal::Status::REQUEST_ERROR;
    };
    note("process 1, nobody told", [&](auto&) { EXPECT_EQ(encode(1), 0); });
    note("process 2, with a callback", [&](auto&) { EXPECT_EQ(encode(2, mClient), 0); });
    EXPECT_EQ(mSession.isOutstanding(1) && mSession.isOutstanding(2), !quen::kHardened);
    note("process, nothing", [&](auto&) { EXPECT_EQ(mSession.device.process(nullptr, {}), -22); });
    expectScene("refused_requests");
}

}  // namespace
