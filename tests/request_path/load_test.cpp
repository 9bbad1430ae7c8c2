#include <gtest/gtest.h>

#include <array>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

#include "support/Formats.h"
#include "support/MetadataBuilder.h"
#include "support/ProcessTest.h"

namespace {

using namespace quentest;

constexpr uint32_t kNobodys = 1u << 30;  // a number that no request has

/** An ISP that answers from several threads, some requests twice, and numbers that nobody asked. */
class BusyIsp : public StandInDevice {
  public:
    BusyIsp() {
        for (std::thread& thread : mThreads) {
            thread = std::thread([this] { work(); });
        }
    }
    ~BusyIsp() override {
        {
            std::lock_guard<std::mutex> const lock(mLock);
            mEnded = true;
        }
        mChanged.notify_all();
        for (std::thread& thread : mThreads) {
            thread.join();
        }
    }
    StatusReturn processISPRequest(hidl_vec<isphal::ISPRequest> const& submitted) override {
        uint32_t const number = submitted[0].requestNumber;
        {
            std::lock_guard<std::mutex> const lock(mLock);
            for (uint32_t const answer : {number, number % 3 ? number : kNobodys}) {
                mResults.emplace_back(callback, answer);
            }
        }
        mChanged.notify_all();
        return ok();
    }
    StatusReturn closeISPDevice() override {
        callback = nullptr;
        return ok();
    }

  private:
    void work() {
        std::unique_lock<std::mutex> lock(mLock);
        for (;;) {
            mChanged.wait(lock, [this] { return mEnded || !mResults.empty(); });
            if (mResults.empty()) {
                return;
            }
            auto const [to, number] = std::move(mResults.front());
            mResults.pop_front();
            lock.unlock();
            (void)to->processResult({number, {}, isphal::Status::OK}).isOk();
            lock.lock();
        }
    }

    std::mutex mLock;
    std::condition_variable mChanged;
    std::deque<std::pair<android::sp<isphal::ICallback>, uint32_t>> mResults;  // guarded by mLock
    bool mEnded = false;                                                       // guarded by mLock
    std::array<std::thread, 4> mThreads;
};

class LoadTest : public testing::Test {
  protected:
    LoadTest() {
        Graphics::fresh();
        mModule->device = new BusyIsp;
        EXPECT_EQ(mModule->registerAsService("internal/0"), 0);
    }
    int process(ClientSession& session, int32_t number, ClientSession::Client const& client) {
        return session.process(number, mNv21, {mYuv}, mSettings.get(), client);
    }

    android::sp<StandInModule> const mModule = new StandInModule;
    android::sp<RecordingCallback> const mClient = new RecordingCallback;
    MemoryBuffer const mMemory{64 * 48 * 3 / 2};
    ImageBuffer const mNv21 = mMemory.image(1, kNv21, 64, 48);
    ImageBuffer const mYuv = mMemory.image(2, kYuv, 64, 48);
    MetadataBuilder mSettings;
};

TEST_F(LoadTest, OverlappingRequestsAreToldOfOnceEach) {
    constexpr int kRequests = 3000;
    ClientSession session;
    session.create(mNv21, {mYuv});
    for (int number = 0; number < kRequests; ++number) {
        EXPECT_EQ(process(session, number, mClient), 0);
        if (number % 500 == 0) {  // another raw depth: drains what is outstanding
            mSettings = MetadataBuilder();
            mSettings.i32(tags::kUiMode, number % 1000 ? 16 : 0);
        }
    }
    session.waitUntilDrained();
    std::vector<int> ends(kRequests);
    for (RecordingCallback::Call const& call : mClient->calls()) {
        ends.at(call.requestNumber) += !call.isMetadata;
    }
    EXPECT_THAT(ends, testing::Each(1));
    session.device.destroy();
}

TEST_F(LoadTest, DevicesMayEndInTheMiddle) {
    for (int round = 0; round < 200; ++round) {
        ClientSession session;
        session.create(mNv21, {mYuv});
        for (int number = 0; number < 5; ++number) {
            EXPECT_EQ(process(session, number, mClient), 0);
        }
        if (round % 20 == 0) {
            setJpegTimeout("1");
            process(session, 5, nullptr);  // and directly after a call was released
        }
        session.device.destroy();
    }
}

}  // namespace
