#include <limits>

#include "support/Formats.h"
#include "support/Lines.h"
#include "support/PlaneLayouts.h"
#include "support/ProcessTest.h"
#include "support/Requests.h"

namespace {

using namespace quentest;
using testing::ElementsAre;

/** Requests of neighbours that break the contract, in the build that survives them. */
class HardenedPathTest : public ProcessTest {
  protected:
    /** Encodes one request; the ISP answers within the submission unless told otherwise. */
    int encodeOne(uint32_t jpegBytes, std::function<void(isphal::ISPRequest const&)> answer = {}) {
        isp().onProcess = [=](isphal::ISPRequest const& request) {
            writeJpeg(request, jpegBytes);
            if (answer) {
                answer(request);
            } else {
                isp().answer(request.requestNumber);
            }
            return StandInDevice::ok();
        };
        return encode(++mNumber);
    }

    int32_t mNumber = 100;
};

TEST_F(HardenedPathTest, WaitEndsWithItsOwnResultAlone) {
    mSession.create(mYuv, {mJpeg});
    // A result that is there before the wait ends it at once: the time-out would be noticed.
    setJpegTimeout("1000");
    EXPECT_EQ(encodeOne(777), 777);
    EXPECT_EQ(encodeOne(777,
                        [&](auto& request) {
                            isp().answer(request.requestNumber, isphal::Status::RESULT_ERROR);
                        }),
              0);

    // Another waiting request's result neither changes its status nor ends it: 5 is recorded by
    // hand, so nobody waits for it.
    auto const record5 = [&] {
        mSession.peer.halInterface()->recordISPRequest(newRequest(5), nullptr);
    };
    record5();
    EXPECT_EQ(encodeOne(777,
                        [&](auto& request) {
                            isp().answer(request.requestNumber);
                            isp().answer(5, isphal::Status::RESULT_ERROR);
                        }),
              777);
    record5();
    setJpegTimeout("0");
    Transcript transcript;
    memset(mJpegMemory.data(), 0xEE, kJpegBytes);
    EXPECT_EQ(encodeOne(777, [&](auto&) { isp().answer(5); }), -110);
    std::string const number = std::to_string(mNumber);
    EXPECT_TRUE(transcript.has("E wait JPEG process timed out, request number " + number +
                               " has no result"));
    EXPECT_EQ(mJpegMemory.data()[0], 0xEE);

    // The number is still outstanding: tried again, its next result is the one that ends the wait.
    --mNumber;
    EXPECT_EQ(encodeOne(777), 777);
    EXPECT_FALSE(transcript.has("E cannot find capture request " + number));
    EXPECT_FALSE(mSession.isOutstanding(static_cast<uint32_t>(mNumber)));
}

TEST_F(HardenedPathTest, EveryWaitingCallEndsWithTheResultOfItsDeviceAndNumber) {
    setJpegTimeout("1000");
    struct Call {
        void const* bridge;
        uint32_t number;
        int32_t status;
        std::promise<void> hasBegun;
        std::future<int32_t> result;
    };
    int const bridges[2] = {};
    Call calls[] = {
            {&bridges[0], 7, 1, {}, {}}, {&bridges[1], 7, 2, {}, {}}, {bridges, 8, 3, {}, {}}};
    for (Call& call : calls) {
        call.result = std::async(std::launch::async, [&call] {
            quen::JpegHandover handover(call.bridge, call.number);
            handover.startTimeout();
            quen::MutexLock const lock(quen::gJpegMutex);
            call.hasBegun.set_value();  // the mutex is free again when it waits
            return handover.wait() ? handover.status() : -1;
        });
        call.hasBegun.get_future().wait();
    }
    // The others are woken too, and go on waiting.
    for (size_t const i : {2, 0, 1}) {
        quen::JpegHandover::signal(calls[i].bridge, calls[i].number, calls[i].status);
        EXPECT_EQ(calls[i].result.get(), calls[i].status);
        for (Call& other : calls) {
            EXPECT_TRUE(!other.result.valid() || other.result.wait_for(std::chrono::milliseconds(
                                                         50)) == std::future_status::timeout);
        }
    }
}

TEST_F(HardenedPathTest, RefusedRequestLeavesTheTable) {
    mSession.create(mYuv, {mJpeg});
    for (bool const isLost : {false, true}) {
        isp().onProcess = [&](auto const&) -> StandInDevice::StatusReturn {
            return isLost ? StandInDevice::transportError()
                          : StandInDevice::StatusReturn(isphal::Status::REQUEST_ERROR);
        };
        EXPECT_EQ(encode(1), 0);
        mGraphics.mapper->calls.clear();
        EXPECT_EQ(develop(2, mClient), 0);
        EXPECT_THAT(mGraphics.mapper->calls, ElementsAre("free"));  // its output tuning buffer
        EXPECT_EQ(bridge::outstanding(*mSession.peer.halInterface()), 0u);
    }
    // Refused, and answered all the same: the result has the record.
    isp().onProcess = [&](isphal::ISPRequest const& request) -> StandInDevice::StatusReturn {
        isp().answer(request.requestNumber);
        return isphal::Status::REQUEST_ERROR;
    };
    EXPECT_EQ(encode(3, mClient), 0);
    EXPECT_EQ(mClient->calls().size(), 2u);
    // Refused while a result is at work on it.
    android::sp<SlowClient> const slow = new SlowClient;
    std::thread result;
    isp().onProcess = [&](isphal::ISPRequest const& request) -> StandInDevice::StatusReturn {
        result = std::thread([&, number = request.requestNumber] { isp().answer(number); });
        slow->waitUntilTold();
        return isphal::Status::REQUEST_ERROR;
    };
    EXPECT_EQ(encode(4, slow), 0);
    EXPECT_TRUE(mSession.isOutstanding(4));
    slow->letGo();
    result.join();
}

TEST_F(HardenedPathTest, SecondRequestOfANumberIsFreedAtOnce) {
    mSession.create(mRaw, {mYuv});
    EXPECT_EQ(develop(1, mClient), 0);
    mGraphics.mapper->calls.clear();
    EXPECT_EQ(develop(1, mClient), 0);
    EXPECT_THAT(mGraphics.mapper->calls, ElementsAre("free"));  // its output tuning buffer
}

TEST_F(HardenedPathTest, TrailerHasToTellOfAJpegThatFits) {
    mSession.create(mYuv, {mJpeg});
    for (auto const& [bytes, result] :
         {std::pair(kJpegBytes - 8, static_cast<int>(kJpegBytes) - 8), {kJpegBytes - 7, -1}}) {
        EXPECT_EQ(encodeOne(bytes), result);
    }
    Transcript transcript;
    EXPECT_EQ(encodeOne(777,
                        [&](isphal::ISPRequest const& request) {
                            Mapping const memory(request.outputBuffers[0].buffer->data[0]);
                            memory.data()[kJpegBytes - 8] = 0xFE;
                            isp().answer(request.requestNumber);
                        }),
              -1);
    EXPECT_TRUE(transcript.has("E Invalid output buffer"));
}

TEST_F(HardenedPathTest, ImpossibleRequestsAreRefusedBeforeAnythingIsDone) {
    mSession.create(mYuv, {mJpeg});
    MemoryBuffer const shortMemory(kWidth * kHeight);
    ImageBuffer const narrow = mYuvMemory.image(2, kYuv, kWidth + 2, kHeight);
    ImageBuffer oversold = shortMemory.image(2, kYuv, kWidth, kHeight);
    oversold.size = kWidth * kHeight * 3 / 2;
    ImageBuffer empty = mYuv, flat = mYuv, bare = mYuv, unbacked = mYuv, sizeless = mJpeg;
    ImageBuffer oversoldBlob = mJpeg;
    BorrowedHandle const nothing({}, {-1});
    unbacked.buffer = nothing.get();
    empty.width = 0;
    flat.height = -1;
    bare.buffer = nullptr;
    sizeless.size = 0;
    oversoldBlob.size = kJpegBytes + 1;
    ImageBuffer const raw = mRawMemory.image(1, kRaw10, kWidth, kHeight + 1);
    auto const process = [&](ImageBuffer const* input, std::vector<ImageBuffer const*> outputs,
                             ClientSession::Client const& client = nullptr) {
        PostProcessParams params = {nullptr, 1, const_cast<ImageBuffer*>(input), {}, nullptr};
        for (ImageBuffer const* const output : outputs) {
            params.output_buffers.push_back(const_cast<ImageBuffer*>(output));
        }
        return mSession.device.process(&params, client);
    };
    EXPECT_EQ(process(nullptr, {&mJpeg}), -22);
    EXPECT_EQ(process(&mYuv, {}), -22);
    EXPECT_EQ(process(&mYuv, {&mJpeg, nullptr}), -22);
    for (ImageBuffer const& input : {narrow, oversold, empty, flat, bare, unbacked, raw}) {
        EXPECT_EQ(process(&input, {&mJpeg}), -22);
    }
    for (ImageBuffer const& output : {sizeless, oversoldBlob, bare}) {
        EXPECT_EQ(process(&mYuv, {&mJpeg, &output}), -22);
    }
    EXPECT_THAT(mGraphics.allocator->counts, ElementsAre());
    EXPECT_TRUE(isp().requests.empty());

    // Odd sides have their chroma rounded down; what nobody maps may be smaller than it says.
    MemoryBuffer const oddMemory(5 * 3 + 2 * 2);
    ImageBuffer const odd = oddMemory.image(2, kYuv, 5, 3);
    EXPECT_EQ(process(&odd, {&oversoldBlob}, mClient), 0);
    EXPECT_EQ(isp().requests.size(), 1u);
}

TEST_F(HardenedPathTest, ConfigurationNeedsAnOutput) {
    mSession.create(mYuv, {mJpeg});
    Transcript transcript;
    mSession.device.config({streamOf(mYuv, false)}, {}, nullptr);
    EXPECT_THAT(transcript.lines(), ElementsAre("E config: there are no output streams; the first "
                                                "one decides the stage"));
    EXPECT_EQ(isp().configurations.size(), 1u);
}

TEST_F(HardenedPathTest, DeviceBuffersOfAllOutputsAreFreed) {
    MemoryBuffer const second(kJpegBytes);
    ImageBuffer const otherJpeg = second.image(5, kBlob, kWidth, kHeight);
    ImageBuffer const yuv = mYuvMemory.image(4, kYuv, kWidth, kHeight);
    mSession.create(mYuv, {mJpeg, otherJpeg, yuv});
    answerAtOnce();
    mGraphics.mapper->calls.clear();
    EXPECT_EQ(mSession.process(1, mYuv, {yuv, mJpeg, otherJpeg, yuv}, nullptr, nullptr), 777);
    // The input's, both JPEGs', and the last output's, whosever it is; the first is the client's.
    Lines const& calls = mGraphics.mapper->calls;
    EXPECT_THAT(Lines(calls.end() - 6, calls.end()),
                ElementsAre("unlock", "free", "free", "free", "free", "free"));
}

TEST_F(HardenedPathTest, CallsWithoutAConnectionAnswerAndChangeNothing) {
    quenOfflineDevice unconnected;
    ImageBuffer input = mYuv, output = mJpeg;
    PostProcessParams const params = {nullptr, 1, &input, {&output}, nullptr};
    auto const callAll = [&](quenOfflineDevice& device, std::string const& why) {
        Transcript transcript;
        EXPECT_EQ(device.process(&params, mClient), -19);
        device.flush();
        device.config({}, {{1, kYuv, 64, 48, true}}, nullptr);
        device.setOfflineCallback(nullptr);
        device.destroy();
        Lines lines = transcript.take();
        EXPECT_EQ(lines.front(),
                  "I reprocess request stage " + DeviceInternals(device).stage() + " E");
        lines.erase(lines.begin());
        Lines expected;
        for (char const* const call :
             {"process", "flush", "config", "setOfflineCallback", "destroy"}) {
            expected.push_back(std::string("E ") + call + ": " + why);
        }
        EXPECT_EQ(lines, expected);
    };
    callAll(unconnected, "no ISP device is open, call create first");

    // A dead module's device is not closed, only let go of.
    mSession.create(mYuv, {mJpeg});
    (void)mSession.peer.halInterface()->callback()->serviceDied(1, nullptr);
    callAll(mSession.device, "the ISP module has died, its ISP device can only be released");
    EXPECT_FALSE(mSession.peer.isConnected());
    EXPECT_EQ(isp().closes, 0);
    callAll(mSession.device, "no ISP device is open, call create first");
}

TEST_F(HardenedPathTest, RequestWhoseModuleDiesBeforeItsRecordIsFreed) {
    mSession.create(mYuv, {mJpeg});
    isp().onConfigure = [&] {
        mSession.peer.halInterface()->callback()->serviceDied(1, nullptr);
        return StandInDevice::ok();
    };
    EXPECT_EQ(develop(1, mClient), -19);
    EXPECT_THAT(mGraphics.mapper->calls, ElementsAre("free"));  // its output tuning buffer
    EXPECT_TRUE(isp().requests.empty());
    mSession.device.destroy();
}

TEST_F(HardenedPathTest, DeathOfTheModuleIsNoSuccess) {
    mSession.create(mYuv, {mJpeg});
    setJpegTimeout("1000");
    EXPECT_EQ(encodeOne(777,
                        [&](auto&) {
                            mSession.peer.halInterface()->callback()->serviceDied(1, nullptr);
                        }),
              0);
    mSession.device.destroy();
}

TEST_F(HardenedPathTest, DeathOfTheModuleEndsWhatIsOutstanding) {
    mSession.create(mRaw, {mYuv});
    setJpegTimeout("1000");
    EXPECT_EQ(develop(1, mClient), 0);
    EXPECT_EQ(develop(2, mClient), 0);
    android::sp<SlowClient> const slow = new SlowClient;
    EXPECT_EQ(develop(4, slow), 0);
    std::thread result([&] { isp().answer(4); });
    slow->waitUntilTold();
    android::sp<HalInterface::ClientCallback> const callback =
            mSession.peer.halInterface()->callback();
    isp().onProcess = [&](auto const&) {
        callback->serviceDied(1, nullptr);
        return StandInDevice::ok();
    };
    mGraphics.mapper->calls.clear();
    Transcript transcript;
    EXPECT_EQ(develop(3, nullptr), 0);  // released, with a status that is no success
    // The tuning buffers of the three that ended, and what a synchronous request frees.
    EXPECT_THAT(mGraphics.mapper->calls, testing::SizeIs(3 + 2));
    EXPECT_TRUE(transcript.has("I all result process done, single waitForRequestDrained"));
    mGraphics.mapper->calls.clear();
    slow->letGo();
    result.join();
    EXPECT_THAT(mGraphics.mapper->calls, ElementsAre("free"));  // a result keeps what it claimed
    EXPECT_EQ(slow->calls().size(), 2u);
    std::vector<RecordingCallback::Call> calls = mClient->calls();
    ASSERT_EQ(calls.size(), 2u);
    for (RecordingCallback::Call const& call : calls) {
        EXPECT_FALSE(call.isMetadata);
        EXPECT_EQ(call.status, 7u);
    }
    EXPECT_EQ(calls[0].requestNumber + calls[1].requestNumber, 3u);
    transcript.take();
    (void)callback->processResult({1, {}, isphal::Status::OK}).isOk();
    EXPECT_THAT(transcript.take(), ElementsAre("E cannot find capture request 1"));

    // The bridge that outlives the module takes nothing more.
    HalInterface& hal = *mSession.peer.halInterface();
    OfflineRequest request = {9, nullptr, {}, {}, false, "RAW2YUV"};
    EXPECT_EQ(callback->record(&request, mClient), quen::RequestTable::Insertion::Closed);
    hal.recordISPRequest(&request, mClient);
    hal.waitForRequestDrained();
    EXPECT_THAT(transcript.take(),
                ElementsAre("E recordISPRequest after the ISP module has died",
                            "E waitForRequestDrained after the ISP module has died"));
    mSession.device.destroy();
}

}  // namespace
