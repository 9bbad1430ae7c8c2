#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <utility>

#include "support/Buffers.h"
#include "support/Formats.h"
#include "support/Lines.h"
#include "support/RecordingCallback.h"
#include "support/Requests.h"

namespace {

using namespace quentest;
using testing::ElementsAre;

class HalInterfaceTest : public testing::Test {
  protected:
    hidl_handle const mTuning = allocateGraphic(16, 1, kBlob);
    HookedMapper& mMapper = *Graphics::fresh().mapper;
    Bridge mBridge;
};

bool hook() {
    ADD_FAILURE() << "a hook is never called";
    return false;
}

TEST_F(HalInterfaceTest, AnyThreadMayRegisterAHookAndAskForTheCallback) {
    auto const ask = [&] {
        for (int i = 0; i < 100; ++i) {
            EXPECT_TRUE(mBridge.hal->registerRequestCB(&hook));
            mBridge.hal->callback();
        }
    };
    std::thread other(ask);
    ask();
    mBridge.callback->serviceDied(1, nullptr);
    other.join();
    EXPECT_EQ(mBridge.hal->callback(), nullptr);
    mBridge.hal = nullptr;
    mBridge.callback->serviceDied(1, nullptr);  // nobody left to tell
}

/** A client that lets go of all it has of the library when it is told. */
class LeavingClient : public RecordingCallback {
  public:
    android::hardware::Return<void> notifyRequestResult(uint32_t, postproc::Status) override {
        bridge = nullptr;
        outlivedBridge = callback.promote() != nullptr;
        return android::hardware::Void();
    }
    std::unique_ptr<Bridge> bridge = std::make_unique<Bridge>();
    android::wp<HalInterface::ClientCallback> const callback = bridge->callback;
    bool outlivedBridge = false;
};

TEST_F(HalInterfaceTest, CallbackLivesAsLongAsAResultIsAtWork) {
    android::sp<LeavingClient> const client = new LeavingClient;
    client->bridge->hal->recordISPRequest(newRequest(7), client);
    HalInterface::ClientCallback& callback = *client->bridge->callback;
    EXPECT_TRUE(callback.processResult({7, {}, isphal::Status::OK}).isOk());
    EXPECT_TRUE(client->outlivedBridge);
    EXPECT_EQ(client->callback.promote(), nullptr);
}

TEST_F(HalInterfaceTest, ResultKeepsWhatItClaimedAndErasesNothingElse) {
    android::sp<SlowClient> const slow = new SlowClient;
    android::sp<RecordingCallback> const next = new RecordingCallback;
    OfflineRequest* const claimed = newRequest(7);
    claimed->inputTuningBuffer = mTuning;
    mBridge.hal->recordISPRequest(claimed, slow);
    std::thread result([&] { EXPECT_TRUE(mBridge.deliver(7)); });
    slow->waitUntilTold();

    // Until the result is done its number is taken, and a second result finds nothing.
    OfflineRequest* const dropped = newRequest(7);
    mBridge.hal->recordISPRequest(dropped, next);
    deleteRequest(dropped);
    Transcript transcript;
    EXPECT_TRUE(mBridge.deliver(7));
    EXPECT_THAT(transcript.take(), ElementsAre("E cannot find capture request 7"));

    // A drained wait gives the number up, not the record; what comes after it is another request.
    mBridge.hal->waitForRequestDrained();
    mBridge.hal->recordISPRequest(newRequest(7), next);
    EXPECT_THAT(mMapper.calls, ElementsAre());
    slow->letGo();
    result.join();
    EXPECT_THAT(mMapper.calls, ElementsAre("free"));
    EXPECT_EQ(slow->calls().size(), 2u);
    EXPECT_TRUE(bridge::isOutstanding(*mBridge.hal, 7));
    EXPECT_TRUE(mBridge.deliver(7));
    EXPECT_EQ(next->calls().size(), 2u);
}

TEST_F(HalInterfaceTest, StageTextIsTheRecordsWhateverItIs) {
    char gone[] = "RAW2YUV, then some more text than a stage has";
    mBridge.hal->recordISPRequest(newRequest(7, gone), nullptr);
    mBridge.hal->recordISPRequest(newRequest(8, nullptr), nullptr);
    std::string const text = gone;
    gone[0] = '\0';  // the device object is another one's, or gone, when the result comes
    for (auto const& [number, stage] : {std::pair(7, text.c_str()), {8, "(null)"}}) {
        Transcript transcript;
        EXPECT_TRUE(mBridge.deliver(static_cast<uint32_t>(number)));
        EXPECT_EQ(transcript.lines().front(), std::string("I reprocess result stage ") + stage +
                                                      " number " + std::to_string(number) +
                                                      " Result callback, result.status is OK 1 E");
    }
}

TEST_F(HalInterfaceTest, DrainedWaitEndsWithTheLastResult) {
    mBridge.hal->recordISPRequest(newRequest(7), nullptr);
    mBridge.hal->recordISPRequest(newRequest(9), nullptr);
    Transcript transcript;
    std::thread waiter([&] { mBridge.hal->waitForRequestDrained(); });
    long lastCycle = 0;
    for (size_t cycle = 1; cycle <= 3; ++cycle) {
        while (transcript.count("I need wait request number 7 process done") < cycle ||
               transcript.count("I need wait request number 9 process done") < cycle) {
            std::this_thread::yield();
        }
        if (cycle < 3) {
            auto const [start, deadline] = bridge::wakeDrainedWait(*mBridge.hal);
            EXPECT_EQ(deadline - start, 2000000);
            EXPECT_NE(start, std::exchange(lastCycle, start));
        }
    }
    std::string const signal = "I all result process done, single waitForRequestDrained";
    EXPECT_TRUE(mBridge.deliver(9));
    EXPECT_FALSE(transcript.has(signal));
    EXPECT_TRUE(mBridge.deliver(7));
    waiter.join();
    EXPECT_EQ(transcript.count(signal), 1u);
    EXPECT_EQ(transcript.count("I wait all result process done"), 3u);
    EXPECT_EQ(transcript.count("I need wait request number 7 process done"), 3u);
}

}  // namespace
