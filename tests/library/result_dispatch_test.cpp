#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <numeric>

#include <quenOfflineDevice/jpeg/JpegHandover.h>

#include "support/Formats.h"
#include "support/Lines.h"
#include "support/MetadataBuilder.h"
#include "support/PlaneLayouts.h"
#include "support/RecordingCallback.h"
#include "support/Requests.h"

namespace {

using namespace quentest;
using testing::ElementsAre;

class ResultDispatchTest : public testing::Test {
  protected:
    /** Records a request for the client, delivers its result and expects these lines of it. */
    void exchange(OfflineRequest* request, std::vector<uint8_t> const& metadata,
                  std::string const& lines) {
        std::string const frame = std::string("I reprocess result stage ") + request->stage +
                                  " number 7 Result callback, result.status is OK 1 ";
        mBridge.hal->recordISPRequest(request, mClient);
        Transcript transcript;
        EXPECT_TRUE(mBridge.deliver(7, 0, metadata));
        mLines = transcript.lines();
        EXPECT_EQ(deviceLines(transcript),
                  linesOf(frame + "E\nD callback request\n" + lines +
                          "\nI all result process done, single waitForRequestDrained\n" + frame +
                          "X"));
        auto const calls = mClient->calls();
        mTold = calls.at(calls.size() - 2).metadata;
    }
    /** An entry of the metadata that the client was told of last; null when there is none. */
    camera_metadata_ro_entry_t const* told(uint32_t tag) {
        auto const* const metadata = reinterpret_cast<camera_metadata const*>(mTold.data());
        return find_camera_metadata_ro_entry(metadata, tag, &mEntry) == 0 ? &mEntry : nullptr;
    }
    /** Writes what the ISP leaves at the start of an output tuning buffer. */
    static void writeTuning(Mapping const& memory, int32_t usedBytes) {
        std::iota(memory.data(), memory.data() + 256, uint8_t{0});
        for (auto const& [offset, value] : {std::pair(0, 11), {12, 22}, {32, usedBytes}}) {
            memcpy(memory.data() + offset, &value, sizeof(value));
        }
    }

    HookedMapper& mMapper = *Graphics::fresh().mapper;
    Bridge mBridge;
    android::sp<RecordingCallback> const mClient = new RecordingCallback;
    std::vector<uint8_t> mTold;
    Lines mLines;
    camera_metadata_ro_entry_t mEntry;
};

uint32_t clientStatus(uint32_t status) {
    return static_cast<uint32_t>(
            HalInterface::ClientCallback::convertStatus(static_cast<isphal::Status>(status)));
}

TEST_F(ResultDispatchTest, StatusMapping) {
    uint32_t const mapping[] = {0, 1, 2, 3, 4, 5, 0, 7, 0};
    for (uint32_t status = 0; status < 9; ++status) {
        EXPECT_EQ(clientStatus(status), mapping[status]);
    }
    EXPECT_EQ(clientStatus(0x80000000), 0u);
    EXPECT_EQ(clientStatus(0xFFFFFFFF), 0u);
}

TEST_F(ResultDispatchTest, UnknownAndEarlyResultsChangeNothing) {
    mBridge.hal->recordISPRequest(newRequest(7), mClient);
    Transcript transcript;
    EXPECT_TRUE(mBridge.deliver(8, 5));
    EXPECT_TRUE(mBridge.callback->processEarlyResult({7, {}, isphal::Status::OK}).isOk());
    EXPECT_TRUE(mBridge.callback->processEarlyResult({7, {}, isphal::Status(6)}).isOk());
    EXPECT_THAT(transcript.take(),
                ElementsAre("E cannot find capture request 8", "E processResult 7 failed"));
    EXPECT_EQ(bridge::outstanding(*mBridge.hal), 1u);
    EXPECT_EQ(mClient->calls().size(), 0u);
    EXPECT_TRUE(mBridge.deliver(7));
    transcript.take();
    EXPECT_TRUE(mBridge.deliver(7));
    EXPECT_THAT(transcript.take(), ElementsAre("E cannot find capture request 7"));
}

TEST_F(ResultDispatchTest, ClientIsToldTheMetadataThenTheEnd) {
    OfflineRequest* const request = newRequest(7);
    setItems<int64_t>(*request->metadata, tags::kCurrentMode, {-5});
    mBridge.hal->recordISPRequest(request, mClient);
    mBridge.hal->recordISPRequest(newRequest(8), mClient);
    quen::gJpegResultStatus = 99;
    Transcript transcript;
    EXPECT_TRUE(mBridge.deliver(7, 5, ispBuffer({})));
    EXPECT_TRUE(mBridge.deliver(8, 6));  // without metadata; the status has no name
    EXPECT_EQ(transcript.lines(), linesOf(R"(
            I reprocess result stage YUV2JPEG number 7 Result callback, result.status is OK 0 E
            E processResult 7 failed
            D callback request
            D ISPMeta entry count : 0
            I resultMetadata currentMode -5
            I reprocess result stage YUV2JPEG number 7 Result callback, result.status is OK 0 X
            I reprocess result stage YUV2JPEG number 8 Result callback, result.status is OK 0 E
            E processResult 8 failed
            D callback request
            E get currentMode failed from resultMetadata
            I all result process done, single waitForRequestDrained
            I reprocess result stage YUV2JPEG number 8 Result callback, result.status is OK 0 X)"));
    std::vector<std::string> calls;
    for (RecordingCallback::Call const& call : mClient->calls()) {
        calls.push_back((call.isMetadata ? "metadata " : "end ") +
                        std::to_string(call.requestNumber) + ":" + std::to_string(call.status));
    }
    EXPECT_THAT(calls, ElementsAre("metadata 7:5", "end 7:5", "metadata 8:0", "end 8:0"));
    EXPECT_EQ(mClient->getStrongCount(), 1);
    EXPECT_EQ(quen::gJpegResultStatus, 99);
}

class LostClient : public RecordingCallback {
    Return<void> notifyRequestResult(uint32_t, postproc::Status) override {
        return lostTransport();
    }
    Return<void> notifyResultMetadata(uint32_t, hidl_vec<uint8_t> const&,
                                      postproc::Status) override {
        return lostTransport();
    }
};

TEST_F(ResultDispatchTest, LostClientIsIgnored) {
    mBridge.hal->recordISPRequest(newRequest(7), new LostClient);
    EXPECT_TRUE(mBridge.deliver(7, 0, ispBuffer({})));
    EXPECT_EQ(bridge::outstanding(*mBridge.hal), 0u);
}

TEST_F(ResultDispatchTest, RequestsEntriesWinTheMergeButForTheBufferIndex) {
    constexpr int kNone = -1000;
    struct Case {
        int inResult, inRequest, told;
    };
    for (Case const& c : {Case{5, 3, 5},
                          {5, kNone, 5},
                          {kNone, 3, 3},
                          {-1, 3, 3},
                          {0, 3, 0},
                          {kNone, kNone, kNone}}) {
        OfflineRequest* const request = newRequest(7);
        setItems<int32_t>(*request->metadata, tags::kTuningMode, {6003});
        std::vector<IspRecordBytes> records = {
                ispRecord<int32_t>(tags::kTuningMode, 1, {1}),
                ispRecord<int32_t>(tags::kNeedMsnr, 1, {1}),
                ispRecord<int64_t>(tags::kCurrentMode, 2, {1LL << 40})};
        std::string lines = R"(
                D tag : 0x800B000E
                D tag : 0x800B000B
                D tag : 0xC0030014)";
        if (c.inRequest != kNone) {
            setItems<int32_t>(*request->metadata, tags::kBufferIndex, {c.inRequest, 9});
        }
        if (c.inResult != kNone) {
            records.push_back(ispRecord<int32_t>(tags::kBufferIndex, 1, {c.inResult, 8}));
            lines += "\nD tag : 0xC00C0018";
        }
        exchange(request, ispBuffer(records),
                 "D ISPMeta entry count : " + std::to_string(records.size()) + lines +
                         "\nI resultMetadata currentMode 1099511627776");
        EXPECT_EQ(told(tags::kTuningMode)->data.i32[0], 6003);
        EXPECT_EQ(told(tags::kNeedMsnr)->data.i32[0], 1);
        EXPECT_EQ(told(tags::kBufferIndex) ? mEntry.data.i32[0] : kNone, c.told);
        // Only the first item changes.
        EXPECT_TRUE(c.inRequest == kNone || (mEntry.count == 2 && mEntry.data.i32[1] == 9));
        EXPECT_EQ(told(tags::kYuvTuning), nullptr);  // not a raw stage
    }
}

TEST_F(ResultDispatchTest, TuningDataOfARawStageComesWithTheMetadata) {
    hidl_handle const graphic = allocateGraphic(kTuningBytes, 1, kBlob);
    Mapping const memory(graphic->data[0]);
    Fence const fence;
    // A buffer has no more bytes than its size, whatever its header says.
    for (auto const& [usedBytes, toldBytes] :
         {std::pair(41, 41), {0, 0}, {-1, 0}, {kTuningBytes + 1, kTuningBytes}}) {
        writeTuning(memory, usedBytes);
        mMapper.calls.clear();
        fenceUnlocks(mMapper, fence);
        OfflineRequest* const request = newRequest(7, "RAW2YUV");
        request->inputTuningBuffer = graphic;
        request->outputTuningBuffer = graphic;
        int const descriptors = openDescriptors();
        exchange(request, ispBuffer({}),
                 R"(
                D ISPMeta entry count : 0
                E get currentMode failed from resultMetadata
                I requestNo 11, frameNumber 22, totalUsedBytes )" +
                         std::to_string(usedBytes));
        ASSERT_NE(told(tags::kYuvTuning), nullptr);
        EXPECT_EQ(std::vector<uint8_t>(mEntry.data.u8, mEntry.data.u8 + mEntry.count),
                  memory.bytes(static_cast<size_t>(toldBytes)));
        // The last two frees are of the request's own buffers.
        EXPECT_THAT(mMapper.calls, ElementsAre("import", "lock", "unlock", "free", "free", "free"));
        EXPECT_EQ(mMapper.lockUsage, 3u);
        EXPECT_THAT(mMapper.lockedRegion(), ElementsAre(0, 0, kTuningBytes, 1));
        EXPECT_EQ(openDescriptors(), descriptors - 2);
    }
}

TEST_F(ResultDispatchTest, ExternalTuningDataStaysWhereItIs) {
    MemoryBuffer const shared(kTuningBytes);
    writeTuning(shared, 41);
    int const descriptors = openDescriptors();
    // A buffer that cannot be mapped has a header of zeroes.
    for (auto const& [descriptor, header] :
         {std::pair(shared.fd(), "requestNo 11, frameNumber 22, totalUsedBytes 41, bufferFd "),
          {-1, "requestNo 0, frameNumber 0, totalUsedBytes 0, bufferFd "}}) {
        OfflineRequest* const request = newRequest(7, "RAW2YUV");
        {
            BorrowedHandle const form({0}, {descriptor, 0});
            hidl_handle const borrowed(form.get());
            request->inputTuningBuffer = borrowed;  // clones
            request->outputTuningBuffer = borrowed;
        }
        request->tuningBufferIsExternal = true;
        std::string const fd = std::to_string(descriptor);
        std::string const line = std::string("I ") + header + fd;
        exchange(request, ispBuffer({}),
                 "D ISPMeta entry count : 0\nE get currentMode failed from resultMetadata\n" +
                         steady(line) + "\nD inputTuningData FD FD, " + fd +
                         "\nD outputTuningData FD FD, " + fd);
        EXPECT_THAT(mLines, testing::Contains(line));
        EXPECT_EQ(told(tags::kYuvTuning), nullptr);
        EXPECT_THAT(mMapper.calls, ElementsAre());
        EXPECT_EQ(openDescriptors(), descriptors);  // only the clones' slots are closed
    }
}

}  // namespace
