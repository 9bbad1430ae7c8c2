#include <fstream>

#include <quenOfflineDevice/request/RequestNumbers.h>

#include "support/Formats.h"
#include "support/Lines.h"
#include "support/PlaneLayouts.h"
#include "support/ProcessTest.h"

namespace {

using namespace quentest;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using Answer = StandInDevice::StatusReturn;

bool deadlineHasPassed() {
    timespec now;
    clock_gettime(CLOCK_REALTIME, &now);
    return std::pair(now.tv_sec, now.tv_nsec) >=
           std::pair(quen::gJpegDeadline.tv_sec, quen::gJpegDeadline.tv_nsec);
}

/** How many mappings of clients' memory there are. */
int clientMappings() {
    std::ifstream maps("/proc/self/maps");
    int count = 0;
    for (std::string line; std::getline(maps, line);) {
        count += line.find("memfd:client") != std::string::npos;
    }
    return count;
}

TEST_F(ProcessTest, JpegRequestWaitsAndCopies) {
    std::iota(mYuvMemory.data(), mYuvMemory.data() + mYuvMemory.size(), uint8_t{0});
    memset(mJpegMemory.data(), 0xEE, kJpegBytes);
    std::vector<uint8_t> expected(kJpegBytes, 0xEE);
    MemoryBuffer const second(kJpegBytes);  // the first of two BLOBs gets the JPEG
    ImageBuffer const other = second.image(kJpegStream + 1, kBlob, kWidth / 2, kHeight / 2);
    mSession.create(mYuv, {mJpeg, other});
    // The first result ends the wait, whatever its status.
    for (auto const& [status, size] :
         {std::pair(isphal::Status::RESULT_ERROR, 0), {isphal::Status::OK, 777}}) {
        Transcript transcript;
        std::thread answerer;
        isp().onProcess = [&, status = status](isphal::ISPRequest const& request) {
            Mapping const input(request.inputBuffers[0].buffer->data[0]);
            EXPECT_EQ(input.bytes(kWidth), mYuvMemory.bytes(kWidth));
            writeJpeg(request, 777);
            answerer = answerLater(100, transcript, status);
            return StandInDevice::ok();
        };
        EXPECT_EQ(mSession.process(100, mYuv, {mJpeg, other}, nullptr, nullptr), size);
        EXPECT_FALSE(deadlineHasPassed());
        EXPECT_EQ(quen::gJpegDeadline.tv_sec - quen::gJpegDeadlineBase.tv_sec, 4);
        EXPECT_EQ(quen::gJpegDeadline.tv_nsec, quen::gJpegDeadlineBase.tv_usec * 1000);
        answerer.join();
        std::iota(expected.begin(), expected.begin() + size, uint8_t{1});
        EXPECT_EQ(mJpegMemory.bytes(kJpegBytes), expected);
        EXPECT_EQ(second.data()[0], 0);
    }
    EXPECT_EQ(mGraphics.mapper->lockUsage, 0x33u);
    EXPECT_THAT(mGraphics.mapper->lockedRegion(), ElementsAre(0, 0, 777, 1));
}

/** Which lines are written while the JPEG's mutex is held; dumps of metadata included. */
struct MutexWatch : Transcript {
    void write(char const* /*tag*/, int /*level*/, char const* text) override {
        bool const isFree = quen::gJpegMutex.tryLock();
        if (isFree) {
            quen::gJpegMutex.unlock();
        }
        (isFree ? whileFree : whileHeld).emplace_back(text);
    }
    Lines whileFree, whileHeld;
};

TEST_F(ProcessTest, DumpComesBeforeTheCheckAndTheMutexIsHeldUntilTheSizeIsTold) {
    mSession.create(mRaw, {mYuv});
    answerAtOnce();
    EXPECT_EQ(develop(1, mClient), 0);
    MutexWatch watch;
    EXPECT_EQ(encode(2), 777);
    EXPECT_THAT(watch.whileFree[3], HasSubstr("frame 2 stage RAW2YUV:"));
    EXPECT_THAT(watch.whileHeld[0], EndsWith("JPEG callback signal process"));
    EXPECT_THAT(watch.whileHeld[1], EndsWith("JPEG process done"));
    EXPECT_THAT(watch.whileHeld.back(), EndsWith("jpegSize is 777"));
}

TEST_F(ProcessTest, BuffersThatCannotBeMappedOrLockedGiveNoJpeg) {
    mSession.create(mYuv, {mJpeg});
    answerAtOnce();
    BorrowedHandle const nothing({-1});
    ImageBuffer inaccessible = mJpeg;
    inaccessible.buffer = nothing.get();
    std::vector<uint8_t> device(kJpegBytes);
    uint32_t const trailer[] = {0xFF, 777};
    memcpy(device.data() + kJpegBytes - sizeof(trailer), trailer, sizeof(trailer));
    std::vector<void*> addresses{nullptr, device.data(), nullptr};  // the input's comes last
    for (ImageBuffer const& output : {inaccessible, mJpeg}) {
        Transcript transcript;
        EXPECT_EQ(mSession.process(1, mYuv, {output}, mSettings.get(), nullptr), -1);
        EXPECT_TRUE(transcript.has("I get JPEG size is 777 from output buffer X"));
        EXPECT_TRUE(transcript.has("E Invalid output buffer"));
        // Next the device buffer is locked for its trailer alone.
        mGraphics.mapper->onLock = [&](auto const&, auto const& cb) -> Return<void> {
            cb(Error::NONE, addresses.back());
            addresses.pop_back();
            return android::hardware::Void();
        };
    }
    // Without a trailer there is a JPEG of no bytes, which needs no memory.
    mGraphics.mapper->onLock = giving(Error::NO_RESOURCES, static_cast<void*>(nullptr));
    EXPECT_EQ(encode(2), quen::kHardened ? -1 : 0);
}

TEST_F(ProcessTest, MissingDeviceBufferHasNoJpeg) {
    mSession.create(mYuv, {mJpeg});
    setJpegTimeout("0");
    auto& allocator = *mGraphics.allocator;
    allocator.onAllocate = [&](auto const& wanted, auto const& cb) -> Return<void> {
        bool const isJpeg = static_cast<int>(mGraphics.mapper->described.format) == kBlob;
        return isJpeg ? giving(Error::NO_RESOURCES, 0u, hidl_vec<hidl_handle>())(wanted, cb)
                      : allocator.Real::allocate(wanted, 1, cb);
    };
    isp().onProcess = [&](isphal::ISPRequest const& request) {
        isp().answer(request.requestNumber);
        return StandInDevice::ok();
    };
    int const mappings = clientMappings();
    Transcript transcript;
    EXPECT_EQ(encode(3), -1);
    EXPECT_TRUE(transcript.has(std::string("I get JPEG size is ") + (quen::kHardened ? "-1" : "0") +
                               " from output buffer X"));
    EXPECT_TRUE(transcript.has("E Invalid output buffer"));
    EXPECT_EQ(clientMappings(), mappings + (quen::kHardened ? 0 : 1));
}

enum class Isp { Answers, Silent, Refuses, Lost };

/** How a synchronous request goes, and what its client gets. */
struct Outcome {
    char const* name;
    Isp isp;
    uint32_t status;      // the result's
    int32_t staleStatus;  // what an earlier result left
    uint32_t jpegBytes;   // what the ISP writes
    int result;
    int timeout = -1;  // seconds
};

// What a suite's listing names the parameter by.
void PrintTo(Outcome const& outcome, std::ostream* out) {
    *out << outcome.name;
}

class SynchronousOutcomeTest : public ProcessTest, public testing::WithParamInterface<Outcome> {};

// The result comes during the submission, so its signal is lost and the wait runs to its end.
TEST_P(SynchronousOutcomeTest, OfTheDefaultBuild) {
    if (quen::kHardened) {
        GTEST_SKIP() << "the hardened build's outcomes have a test of their own";
    }
    Outcome const& c = GetParam();
    mSession.create(mYuv, {mJpeg});
    Fence const fence;
    fenceUnlocks(*mGraphics.mapper, fence);
    quen::gJpegResultStatus = c.staleStatus;
    quen::gJpegDeadline = {};
    quen::gJpegDeadlineBase = {};
    memset(mJpegMemory.data(), 0xEE, kJpegBytes);
    isp().onProcess = [&](isphal::ISPRequest const& request) -> Answer {
        EXPECT_TRUE(mSession.isOutstanding(request.requestNumber));
        writeJpeg(request, c.jpegBytes);
        if (c.isp == Isp::Answers) {
            isp().answer(request.requestNumber, static_cast<isphal::Status>(c.status));
        }
        return c.isp == Isp::Lost      ? StandInDevice::transportError()
               : c.isp == Isp::Refuses ? Answer(isphal::Status::RESOURCE_ERROR)
                                       : StandInDevice::ok();
    };
    int const descriptors = openDescriptors();
    int const mappings = clientMappings();
    setJpegTimeout(std::to_string(c.timeout).c_str());
    Transcript transcript;
    EXPECT_EQ(encode(1), c.result);

    bool const refused = c.isp == Isp::Refuses || c.isp == Isp::Lost;
    EXPECT_TRUE(deadlineHasPassed());
    EXPECT_EQ(quen::gJpegDeadline.tv_sec - quen::gJpegDeadlineBase.tv_sec, refused ? 0 : c.timeout);
    EXPECT_EQ(transcript.has("E Invalid output buffer"), c.result == -1);
    EXPECT_EQ(transcript.has("E ISPDevice process failed result"), refused);
    EXPECT_EQ(transcript.has("I wait JPEG process"), !refused);
    EXPECT_EQ(mSession.isOutstanding(1), c.isp != Isp::Answers);
    EXPECT_EQ(mJpegMemory.data()[0], c.result > 0 ? 1 : 0xEE);
    // Both device buffers are freed at the end, whatever happened.
    Lines const& calls = mGraphics.mapper->calls;
    EXPECT_THAT(Lines(calls.end() - 2, calls.end()), ElementsAre("free", "free"));
    mSession.answerOutstanding();
    isp().requests.clear();
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(clientMappings(), mappings);
}

INSTANTIATE_TEST_SUITE_P(
        ProcessTest, SynchronousOutcomeTest,
        testing::Values(Outcome{"Encoded", Isp::Answers, 0, 5, 777, 777, 1},
                        Outcome{"Failed", Isp::Answers, 5, 0, 777, 0},
                        Outcome{"OfAStatusWithoutAName", Isp::Answers, 6, 99, 777, 777, 0},
                        Outcome{"Refused", Isp::Refuses, 0, 0, 777, 0},
                        Outcome{"LostOnItsWay", Isp::Lost, 0, 0, 777, 0},
                        Outcome{"NeverAnswered", Isp::Silent, 0, 0, 777, 777},
                        Outcome{"NeverAnsweredAfterAFailure", Isp::Silent, 0, 3, 777, 0},
                        Outcome{"AsLargeAsTheBuffer", Isp::Answers, 0, 0, 4096, 4096},
                        Outcome{"LargerThanTheBuffer", Isp::Answers, 0, 0, 4097, -1},
                        Outcome{"OfANegativeSize", Isp::Answers, 0, 0, 0xFFFFFFFE, -1}),
        [](auto const& outcome) { return outcome.param.name; });

TEST_F(ProcessTest, DestroyLeavesOutstandingRequestsToTheirResults) {
    mSession.create(mRaw, {mYuv});
    EXPECT_EQ(develop(1, mClient), 0);
    android::sp<RecordingCallback> const unanswered = new RecordingCallback;
    EXPECT_EQ(develop(2, unanswered), 0);
    mGraphics.mapper->calls.clear();
    Transcript transcript;
    mSession.device.destroy();  // does not wait
    EXPECT_THAT(transcript.take(),
                ElementsAre("I quenOfflineDevice uinit E", "I quenOfflineDevice uinit X"));
    EXPECT_EQ(isp().closes, 1);
    EXPECT_THAT(mGraphics.mapper->calls, ElementsAre());
    isp().answer(1);  // the ISP still has whom to tell
    EXPECT_EQ(mClient->calls().size(), 2u);
    EXPECT_THAT(mGraphics.mapper->calls, Contains("free"));
    mGraphics.mapper->calls.clear();
    isp().callback = nullptr;
    EXPECT_THAT(mGraphics.mapper->calls, ElementsAre("free"));
    EXPECT_EQ(unanswered->calls().size(), 0u);
    EXPECT_EQ(unanswered->getStrongCount(), 1);
}

TEST_F(ProcessTest, JpegTakesTheNumberOverFromTheFastDisplaySequence) {
    mSession.create(mRaw, {mYuv});
    answerAtOnce();
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
                          {'R', 4, 2, 4, 1, 0},  // no such value
                          {'J', 4, 0, 4, 1, 0},
                          {'R', 5, 0, 5, 0, 1},
                          {'J', 6, -1, 6, 0, 1},  // keeps its own without the tag
                          {'J', 7, 1, 5, 0, 0},
                          {'R', 8, 1, 8, 1, 0},
                          {'R', 9, 1, 9, 2, 0},
                          {'R', 10, 0, 10, 1, 1},
                          {'R', 11, 0, 11, 0, 2},
                          {'J', 12, 0, 10, 0, 1},
                          {'J', 13, 2, 11, 0, 0},
                          {'R', 14, 1, 14, 1, 0}}) {
        mSettings = MetadataBuilder();
        if (c.tag != -1) {
            mSettings.i32(tags::kFastDisplay, c.tag);
        }
        Transcript transcript;
        // The numbers are the process's: a client may come from another thread each time.
        std::thread([&] {
            EXPECT_EQ(c.stage == 'R' ? develop(c.frame, mClient) : encode(c.frame, mClient), 0);
        }).join();
        char line[120];
        snprintf(line, sizeof(line),
                 "D read QUEN_CONTROL_ISFASTDISPLAYREQUEST %d res %d pRequesNo %u frame_num %d",
                 c.tag, c.tag != -1, c.number, c.frame);
        EXPECT_TRUE(transcript.has(line)) << line;
        EXPECT_EQ(isp().requests.back().requestNumber, c.number);
        EXPECT_EQ(quen::gFastDisplayQueue.size(), c.markers) << line;
        EXPECT_EQ(quen::gPendingJpegRequestNos.size(), c.pending) << line;
        EXPECT_TRUE(c.markers == 0 || quen::gFastDisplayQueue.front() == 1);
    }
    mSession.device.destroy();  // forgets what is queued
    EXPECT_TRUE(quen::gFastDisplayQueue.empty());
    EXPECT_TRUE(quen::gPendingJpegRequestNos.empty());
}

}  // namespace
