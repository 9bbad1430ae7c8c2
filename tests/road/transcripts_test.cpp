#include <fstream>
#include <iterator>

#include "support/Lines.h"
#include "support/ProcessTest.h"

namespace {

using namespace quentest;

/**
 * Every line that the library writes on a request's road, scene by scene, against the texts in
 * road/transcripts. "== " begins a step, "-- " the lines of other threads than the client's.
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
        std::ifstream file(QUEN_TRANSCRIPTS "/" + name + ".txt");
        std::string const expected{std::istreambuf_iterator<char>(file), {}};
        EXPECT_FALSE(expected.empty()) << name;
        EXPECT_EQ(mText, expected) << name;
    }

  private:
    void write(std::string const& heading, Lines const& lines) {
        mText += heading.empty() ? "" : heading + '\n';
        for (std::string const& line : lines) {
            static std::regex const secondDescriptor("FD FD, [0-9]+");
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
    mSettings.i64(tags::kCurrentMode, 2).i32(0xc00300a2, 12).i32(0xc00c0018, 4);
    note("create", [&](auto&) { mRoad.create(mRaw, {mYuv}); });
    note("process 100", [&](auto&) { EXPECT_EQ(develop(100, mClient), 0); });
    note("result 100", [&](auto&) {
        isp().answer(100, isphal::Status::OK,
                     ispBuffer({ispRecord<int64_t>(tags::kCurrentMode, 2, {9})}));
    });
    note("destroy", [&](auto&) { mRoad.device.destroy(); });
    expectScene("raw_request");
}

TEST_F(TranscriptsTest, SecondRequestReconfigures) {
    mRoad.create(mRaw, {mYuv});
    develop(1, mClient);
    isp().answer(1);
    mSettings.i32(tags::kUiMode, 16);
    note("process 2", [&](auto&) { EXPECT_EQ(encode(2, mClient), 0); });
    note("failed result 2", [&](auto&) { isp().answer(2, isphal::Status::RESULT_ERROR); });
    expectScene("reconfiguring_request");
}

TEST_F(TranscriptsTest, SynchronousJpeg) {
    mSettings.i32(tags::kCameraId, 1);
    mRoad.create(mYuv, {mJpeg});
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
    mRoad.create(mYuv, {mJpeg});
    setJpegTimeout("0");
    gJpegResultStatus = 3;
    note("process 1", [&](auto&) { EXPECT_EQ(encode(1), 0); });
    note("late result 1", [&](auto&) { isp().answer(1); });
    expectScene("synchronous_timeout");
}

TEST_F(TranscriptsTest, FastDisplaySequence) {
    isp().onProcess = [&](isphal::ISPRequest const& request) {
        isp().answer(request.requestNumber);
        return StandInDevice::ok();
    };
    mRoad.create(mRaw, {mYuv});
    mSettings.i32(tags::kFastDisplay, 1);
    note("process 1, for display", [&](auto&) { EXPECT_EQ(develop(1, mClient), 0); });
    mSettings.i32(tags::kFastDisplay, 0);
    note("process 2, the capture", [&](auto&) { EXPECT_EQ(develop(2, mClient), 0); });
    note("process 3, its JPEG", [&](auto&) { EXPECT_EQ(encode(3, mClient), 0); });
    expectScene("fast_display_sequence");
}

TEST_F(TranscriptsTest, DrainedWaitThatGivesUp) {
    mRoad.create(mRaw, {mYuv});
    develop(1, mClient);
    note("process 2", [&](auto&) { EXPECT_EQ(encode(2, mClient), 0); });
    note("result 1, which nobody waits for", [&](auto&) { isp().answer(1); });
    expectScene("abandoned_request");
}

TEST_F(TranscriptsTest, RefusedRequests) {
    mRoad.create(mYuv, {mJpeg});
    isp().onProcess = [](auto const&) -> StandInDevice::StatusReturn {
        return isphal::Status::REQUEST_ERROR;
    };
    note("process 1, nobody told", [&](auto&) { EXPECT_EQ(encode(1), 0); });
    note("process 2, with a callback", [&](auto&) { EXPECT_EQ(encode(2, mClient), 0); });
    expectScene("refused_requests");
}

}  // namespace
