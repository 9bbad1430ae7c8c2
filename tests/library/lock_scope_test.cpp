#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <functional>
#include <utility>

#include <quenOfflineDevice/ProcessState.h>

#include "host/log/LogControl.h"
#include "support/Buffers.h"
#include "support/Formats.h"
#include "support/Lines.h"
#include "support/RecordingCallback.h"
#include "support/Requests.h"

namespace {

std::function<void(char const*)> gOnEvent;

}  // namespace

// In the place of the C library's: nobody waits here.
extern "C" int pthread_cond_signal(pthread_cond_t*) noexcept {
    gOnEvent("signal");
    return 0;
}
extern "C" int pthread_cond_timedwait(pthread_cond_t*, pthread_mutex_t*, timespec const*) {
    gOnEvent("wait");
    return ETIMEDOUT;
}
extern "C" int pthread_cond_broadcast(pthread_cond_t*) noexcept {
    gOnEvent("signal");
    return 0;
}

namespace {

using namespace quentest;
using testing::ElementsAre;

std::string const kResult =
        "reprocess result stage YUV2JPEG number 7 Result callback, result.status is OK 1 ";

/** Notes which locks are held when a line is written, a waiter woken, a client told or let go. */
class LockScopeTest : public testing::Test, public quen::host::LogSink {
  protected:
    /** A client that is told, and let go of, with whatever locks the library holds then. */
    class Client : public RecordingCallback {
      public:
        explicit Client(LockScopeTest& test) : mTest(test) {}
        ~Client() override { mTest.note("client let go"); }
        Return<void> notifyRequestResult(uint32_t, postproc::Status) override {
            mTest.note("client told");
            return android::hardware::Void();
        }
        Return<void> notifyResultMetadata(uint32_t, hidl_vec<uint8_t> const&,
                                          postproc::Status) override {
            mTest.note("client given metadata");
            return android::hardware::Void();
        }

      private:
        LockScopeTest& mTest;
    };

    LockScopeTest() {
        quen::host::setLogLevel(quen::host::LogLevel::Info);
        quen::host::setLogSink(this);
        gOnEvent = [this](char const* what) {
            size_t const outstanding = ((*mBridge.callback).*memberOf(TableOf())).size();
            note(what + (" with " + std::to_string(outstanding)) + " outstanding");
        };
    }
    ~LockScopeTest() override {
        quen::host::setLogSink(nullptr);
        gOnEvent = nullptr;
    }

    void write(char const*, int, char const* text) override {
        std::string const line(text);
        note(line.substr(line.find("() ") + 3));
    }

    /** Adds "<what> [<locks that the calling thread holds>]". */
    void note(std::string const& what) {
        std::vector<std::pair<char, quen::Mutex&>> locks = {
                {'J', quen::gJpegMutex}, {'C', (*mHal).*memberOf(CallbackLockOf())}};
        if (HalInterface::ClientCallback* const callback = mBridge.callback.get()) {
            locks.push_back({'D', callback->*memberOf(DrainLockOf())});
            locks.push_back({'T', (callback->*memberOf(TableOf())).*memberOf(TableLockOf())});
        }
        std::string held;
        for (auto const& [letter, lock] : locks) {
            if (lock.tryLock()) {
                lock.unlock();
            } else {
                held += letter;
            }
        }
        mNotes.push_back(what + " [" + held + "]");
    }

    Lines take() { return std::exchange(mNotes, {}); }

    hidl_handle const mTuning = allocateGraphic(16, 1, kBlob);
    HookedMapper& mMapper = *Graphics::fresh().mapper;
    Bridge mBridge;
    HalInterface* const mHal = mBridge.hal.get();
    Lines mNotes;
};

TEST_F(LockScopeTest, WaitersAreWokenWithTheLockOfWhatTheyWaitFor) {
    // In the hardened build the record leaves the table before its call is released.
    std::string const left = quen::kHardened ? "0" : "1";
    mBridge.hal->recordISPRequest(newRequest(7), nullptr);
    EXPECT_TRUE(mBridge.deliver(7));
    EXPECT_THAT(take(), ElementsAre(kResult + "E []", "JPEG callback []",
                                    "JPEG callback signal process [J]",
                                    "signal with " + left + " outstanding [J]",
                                    "all result process done, single waitForRequestDrained [D]",
                                    "signal with 0 outstanding [D]", kResult + "X []"));
}

TEST_F(LockScopeTest, ClientsAreToldAndLetGoWithNoLock) {
    android::sp<Client> client = new Client(*this);
    mBridge.hal->recordISPRequest(newRequest(7), std::exchange(client, nullptr));
    EXPECT_TRUE(mBridge.deliver(7));
    EXPECT_THAT(take(),
                ElementsAre(kResult + "E []", "get currentMode failed from resultMetadata []",
                            "client given metadata []", "client told []", "client let go []",
                            "all result process done, single waitForRequestDrained [D]",
                            "signal with 0 outstanding [D]", kResult + "X []"));

    // A request that is dropped, one that is withdrawn, one that a drained wait gives up.
    OfflineRequest* const kept = newRequest(7);
    OfflineRequest* const dropped = newRequest(7);
    mBridge.hal->recordISPRequest(kept, nullptr);
    mBridge.hal->recordISPRequest(dropped, new Client(*this));
    EXPECT_THAT(take(), ElementsAre("client let go []"));
    deleteRequest(dropped);
    mBridge.hal->withdraw(7, kept);

    OfflineRequest* const withdrawn = newRequest(8);
    mBridge.hal->recordISPRequest(withdrawn, new Client(*this));
    mBridge.hal->withdraw(8, withdrawn);
    EXPECT_THAT(take(), ElementsAre("client let go []"));

    OfflineRequest* const givenUp = newRequest(9);
    givenUp->inputTuningBuffer = mTuning;
    mBridge.hal->recordISPRequest(givenUp, new Client(*this));
    mBridge.hal->waitForRequestDrained();
    Lines notes = take();
    EXPECT_EQ(notes.back(), "client let go []");
    notes.pop_back();
    EXPECT_THAT(Lines(notes.begin(), notes.begin() + 3),
                ElementsAre("need wait request number 9 process done [D]",
                            "wait with 1 outstanding [D]",
                            "wait all result process failed, after remove all result "
                            "mOfflineRequestCallback size is 0 [D]"));
    EXPECT_TRUE(mBridge.deliver(9));
    EXPECT_THAT(take(), ElementsAre("cannot find capture request 9 []"));
    EXPECT_EQ(mMapper.calls, quen::kHardened ? Lines{"free"} : Lines());
    if (!quen::kHardened) {
        deleteRequest(givenUp);  // abandoned, so still allocated
    }
}

TEST_F(LockScopeTest, CallbackObjectEndsWithNoLock) {
    mBridge.hal->recordISPRequest(newRequest(7), new Client(*this));
    mBridge.callback = nullptr;
    mBridge.hal = nullptr;
    EXPECT_THAT(take(), ElementsAre("client let go []"));
}

TEST_F(LockScopeTest, DeathOfTheModuleIsToldWithNoLock) {
    mBridge.hal->recordISPRequest(newRequest(7), new Client(*this));
    mBridge.callback->serviceDied(1ull << 32, nullptr);
    if (!quen::kHardened) {
        EXPECT_THAT(take(), ElementsAre("ISPModule(4294967296) has died []"));
        EXPECT_TRUE(mBridge.deliver(7));  // it is in the table still
        EXPECT_THAT(take(), testing::Contains("client told []"));
        return;
    }
    EXPECT_THAT(take(), ElementsAre("ISPModule(4294967296) has died []", "client told []",
                                    "client let go []",
                                    "all result process done, single waitForRequestDrained [D]",
                                    "signal with 0 outstanding [D]"));
}

}  // namespace
