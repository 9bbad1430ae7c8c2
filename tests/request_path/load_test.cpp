#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <deque>
#include <map>
#include <mutex>
#include <thread>

#include "host/log/LogControl.h"
#include "support/Formats.h"
#include "support/MetadataBuilder.h"
#include "support/ProcessTest.h"

namespace {

using namespace quentest;

constexpr uint32_t kNobodys = 1u << 30;  // a number that no request has

/** An ISP that answers from several threads, some requests twice, and numbers that nobody asked. */
class BusyIsp : public isphal::IDevice {
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
    Return<isphal::Status> configureISPDevice(isphal::ISPStreamConfiguration const&,
                                              android::sp<isphal::ICallback> const& cb) override {
        std::lock_guard<std::mutex> const lock(mLock);
        mCallback = cb;
        return isphal::Status::OK;
    }
    Return<isphal::Status> processISPRequest(
            hidl_vec<isphal::ISPRequest> const& requests) override {
        uint32_t const number = requests[0].requestNumber;
        {
            std::lock_guard<std::mutex> const lock(mLock);
            for (uint32_t const answer : {number, number % 3 ? number : kNobodys}) {
                mResults.push_back({mCallback, answer});
            }
        }
        mChanged.notify_all();
        return isphal::Status::OK;
    }
    Return<isphal::Status> flush() override { return isphal::Status::OK; }
    Return<isphal::Status> closeISPDevice() override {
        std::lock_guard<std::mutex> const lock(mLock);
        mCallback = nullptr;
        return isphal::Status::OK;
    }

  private:
    struct Result {
        android::sp<isphal::ICallback> callback;
        uint32_t number;
    };

    void work() {
        std::unique_lock<std::mutex> lock(mLock);
        for (;;) {
            mChanged.wait(lock, [this] { return mEnded || !mResults.empty(); });
            if (mResults.empty()) {
                return;
            }
            Result const result = std::move(mResults.front());
            mResults.pop_front();
            lock.unlock();
            (void)result.callback->processResult({result.number, {}, isphal::Status::OK}).isOk();
            lock.lock();
        }
    }

    std::mutex mLock;
    std::condition_variable mChanged;
    android::sp<isphal::ICallback> mCallback;  // guarded by mLock
    std::deque<Result> mResults;               // guarded by mLock
    bool mEnded = false;                       // guarded by mLock
    std::array<std::thread, 4> mThreads;
};

class BusyModule : public isphal::IISPModule {
  public:
    Return<void> openISPDevice(openISPDevice_cb cb) override {
        cb(isphal::Status::OK, device);
        return android::hardware::Void();
    }
    android::sp<BusyIsp> const device = new BusyIsp;
};

/** Counts what it was told, by number. */
class CountingClient : public postproc::IQuenPostProcCallback {
  public:
    Return<void> notifyRequestResult(uint32_t number, postproc::Status) override {
        std::lock_guard<std::mutex> const lock(mLock);
        ++mEnds[number];
        return android::hardware::Void();
    }
    Return<void> notifyResultMetadata(uint32_t, hidl_vec<uint8_t> const&,
                                      postproc::Status) override {
        return android::hardware::Void();
    }
    std::map<uint32_t, int> ends() {
        std::lock_guard<std::mutex> const lock(mLock);
        return mEnds;
    }

  private:
    std::mutex mLock;
    std::map<uint32_t, int> mEnds;  // guarded by mLock
};

class LoadTest : public testing::Test {
  protected:
    LoadTest() {
        Graphics::fresh();
        quen::host::setLogLevel(quen::host::LogLevel::Silent);
        EXPECT_EQ(mModule->registerAsService("internal/0"), 0);
    }
    int process(ClientSession& session, int32_t number, ClientSession::Client const& client) {
        return session.process(number, mNv21, {mYuv}, mSettings.get(), client);
    }

    android::sp<BusyModule> const mModule = new BusyModule;
    android::sp<CountingClient> const mClient = new CountingClient;
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
    std::map<uint32_t, int> const ends = mClient->ends();
    EXPECT_EQ(ends.size(), static_cast<size_t>(kRequests));
    for (auto const& [number, count] : ends) {
        EXPECT_EQ(count, 1) << number;
    }
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
