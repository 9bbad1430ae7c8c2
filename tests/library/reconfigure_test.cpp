#include <atomic>
#include <chrono>
#include <thread>

#include "support/DeviceTest.h"
#include "support/Formats.h"
#include "support/Lines.h"
#include "support/MetadataBuilder.h"

using namespace quentest;
using namespace testing;

namespace {

/** A session of the RAW16 inputs 64x48 and 128x96 and the YUV outputs 64x48 and 32x24. */
class ReconfigureTest : public DeviceTest {
  protected:
    void createSession() {
        mPeer.inputStreams().clear();
        mPeer.outputStreams().clear();
        SessionParams params{{{1, kRaw16, 64, 48, false}, {4, kRaw16, 128, 96, false}},
                             {{2, kYuv, 64, 48, true}, {3, kYuv, 32, 24, true}},
                             nullptr};
        mDevice->create(&params);
        mLog.take();
    }

    void check(ImageBuffer input, std::vector<ImageBuffer> outputs,
               camera_metadata const* settings = nullptr) {
        std::vector<ImageBuffer*> pointers;
        for (ImageBuffer& output : outputs) {
            pointers.push_back(&output);
        }
        mPeer.checkReconfigure(&input, pointers, settings);
    }

    static ImageBuffer image(int32_t streamId, int32_t format, int32_t width, int32_t height) {
        return {streamId, format, 0, width, height, nullptr};
    }

    size_t configurations() const { return mIsp->configurations.size(); }

    Transcript mLog;
    ImageBuffer const mInput = image(1, kRaw16, 64, 48);
    ImageBuffer const mLarge = image(2, kYuv, 64, 48);
    ImageBuffer const mSmall = image(3, kYuv, 32, 24);
};

TEST_F(ReconfigureTest, ARequestOfTheConfiguredStreamsChangesNothing) {
    createSession();
    std::string const last = "I last config output stream info streamIndex ";
    check(mInput, {mSmall, mLarge});
    Lines const lines = mLog.lines();
    EXPECT_THAT(Lines(lines.begin() + 2, lines.begin() + 5),
                ElementsAre(last + "0, width = 64, height = 48, format is equal 1",
                            last + "1, width = 32, height = 24, format is equal 1",
                            last + "0, width = 64, height = 48, format is equal 1"));
    EXPECT_EQ(configurations(), 1u);
}

TEST_F(ReconfigureTest, WhatDiffersCounts) {
    struct {
        char const* what;
        ImageBuffer input;
        std::vector<ImageBuffer> outputs;
        bool reconfigures;
    } const cases[] = {
            {"other stream ids", image(9, kRaw16, 64, 48), {image(8, kYuv, 64, 48)}, false},
            {"fewer outputs", mInput, {mSmall}, false},
            {"one more of a known size", mInput, {mLarge, mSmall, mSmall}, false},
            {"the second input", image(4, kRaw16, 128, 96), {mLarge}, true},
            {"input width", image(1, kRaw16, 65, 48), {mLarge}, true},
            {"input height", image(1, kRaw16, 64, 47), {mLarge}, true},
            {"input format", image(1, kYuv, 64, 48), {mLarge}, true},
            {"one more of a new width", mInput, {mLarge, mSmall, image(3, kYuv, 33, 24)}, true},
            {"a new one before a known one", mInput, {image(3, kYuv, 32, 25), mLarge}, true},
            {"output format", mInput, {image(2, kBlob, 64, 48)}, true},
            {"sizes of two outputs mixed", mInput, {image(2, kYuv, 64, 24)}, true},
    };
    for (auto const& c : cases) {
        SCOPED_TRACE(c.what);
        createSession();
        size_t const before = configurations();
        check(c.input, c.outputs);
        EXPECT_EQ(configurations() - before, c.reconfigures ? 1u : 0u);
        EXPECT_EQ(mIsp->flushes + mIsp->closes, 0);
    }
}

TEST_F(ReconfigureTest, TheNewConfigurationIsMadeFromTheRequest) {
    createSession();
    check(image(-6, kYuv, 640, 480), {image(7, kBlob, 641, 481), mLarge});
    EXPECT_EQ(mPeer.stage(), "YUV2JPEG");

    ASSERT_EQ(configurations(), 2u);
    auto const isStream = [](uint64_t id, int32_t format, uint32_t width, uint32_t height) {
        using isphal::ISPStream;
        return AllOf(Field(&ISPStream::id, id), Field(&ISPStream::format, format),
                     Field(&ISPStream::width, width), Field(&ISPStream::height, height));
    };
    auto const& told = mIsp->configurations.back();
    EXPECT_THAT(told.inputStreams[0], isStream(0xfffffffffffffffa, kYuv, 640, 480));
    EXPECT_THAT(std::vector<isphal::ISPStream>(told.outputStreams),
                ElementsAre(isStream(7, kBlob, 641, 481), isStream(2, kYuv, 64, 48)));
    // The old streams are forgotten: there were two inputs.
    EXPECT_THAT(mPeer.inputStreams(), ElementsAre(Key(0)));
    EXPECT_THAT(mPeer.outputStreams(), ElementsAre(Key(1), Key(2)));
}

TEST_F(ReconfigureTest, AnotherRawDepthCounts) {
    createSession();
    MetadataBuilder settings;
    settings.i32(tags::kUiMode, 16);
    check(mInput, {mLarge}, settings.get());
    EXPECT_TRUE(mLog.has("I current snapshot IsNeedRaw14bit 0, last snapshot IsNeedRaw14bit 1"));
    EXPECT_FALSE(mPeer.isNeedRaw14bit());
    ASSERT_EQ(configurations(), 2u);
    // The flag changes before the configuration is made: no 14-bit entry in it.
    EXPECT_EQ(std::vector<uint8_t>(mIsp->configurations[1].sessionSettings),
              ispBuffer({ispRecord<int32_t>(tags::kUiMode, 1, {16})}));

    check(mInput, {mLarge}, settings.get());
    EXPECT_EQ(configurations(), 2u);
    check(mInput, {mLarge});
    EXPECT_EQ(configurations(), 3u);
    EXPECT_TRUE(mPeer.isNeedRaw14bit());
}

TEST_F(ReconfigureTest, OfTwoEmptyTablesOnlyTheOutputsForcesAConfiguration) {
    mDevice->create(nullptr);
    check(image(1, kRaw10, 64, 48), {});
    EXPECT_EQ(configurations(), 0u);
    check(image(1, kRaw10, 64, 48), {mLarge});
    EXPECT_EQ(configurations(), 1u);
    mPeer.inputStreams().clear();
    mLog.take();
    check(image(1, kRaw10, 64, 48), {mLarge});
    EXPECT_EQ(configurations(), 1u);
    EXPECT_THAT(mLog.lines()[1], HasSubstr("last config output stream"));
}

TEST_F(ReconfigureTest, AnUnconnectedDeviceOnlyNotesTheRawDepth) {
    createSession();
    mPeer.halInterface() = nullptr;
    check(image(1, kRaw10, 65, 48), {mLarge});
    EXPECT_TRUE(mLog.has("I needReconfigure 1"));
    EXPECT_EQ(configurations(), 1u);
    EXPECT_EQ(mPeer.inputStreams().size() + mPeer.outputStreams().size(), 4u);
    EXPECT_FALSE(mPeer.isNeedRaw14bit());
}

TEST_F(ReconfigureTest, AnRgbInputIsConfiguredForEveryRequest) {
    createSession();
    for (size_t i = 2; i < 4; ++i) {
        check(image(1, kRaw16, 600, 48), {image(2, kYuv, 100, 48)});
        EXPECT_EQ(configurations(), i);
    }
    EXPECT_TRUE(mLog.has(
            "I last config input stream info width = 200, height = 48, format is equal 0"));
}

TEST_F(ReconfigureTest, ItWaitsForOutstandingRequests) {
    createSession();
    mPeer.halInterface()->recordISPRequest(
            new OfflineRequest{7, new NSCam::IMetadata, {}, {}, true, "RAW2YUV"}, nullptr);
    check(mInput, {mLarge});  // changes nothing, so it does not wait either
    ImageBuffer input = image(1, kRaw16, 64, 50);
    ImageBuffer output = mLarge;
    std::atomic<bool> checked{false};
    size_t atAnswer = 0;
    std::thread ispThread([&] {
        while (!checked && !mLog.has("I need wait request number 7 process done")) {
            std::this_thread::yield();
        }
        // The line is written on the way to the wait, while the table is being read.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        atAnswer = configurations() + mPeer.inputStreams().size() + mPeer.outputStreams().size();
        output.width = 1;  // what was compared is configured
        mIsp->answer(7);
    });
    mPeer.checkReconfigure(&input, {&output}, nullptr);
    checked = true;
    ispThread.join();
    EXPECT_EQ(atAnswer, 1u + 2u + 2u);  // neither configured anew nor forgotten
    ASSERT_EQ(configurations(), 2u);
    EXPECT_EQ(mIsp->configurations[1].outputStreams[0].width, 64u);
    EXPECT_TRUE(mLog.has("I wait all result process done"));
}

}  // namespace
