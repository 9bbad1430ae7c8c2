#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "support/Formats.h"
#include "support/MetadataBuilder.h"
#include "support/ProcessTest.h"

namespace {

using namespace quentest;

constexpr uint32_t kNobodys = 1u << 30;  // a number that no request has

/** An ISP that answers from many threads, some requests twice, and numbers that nobody asked. */
class BusyIsp : public StandInDevice {
  public:
    ~BusyIsp() override {
        while (mAtWork != 0) {
            std::this_thread::yield();
        }
    }
    StatusReturn processISPRequest(hidl_vec<isphal::ISPRequest> const& submitted) override {
        uint32_t const number = submitted[0].requestNumber;
        for (uint32_t const answer : {number, number % 3 ? number : kNobodys}) {
            ++mAtWork;
            std::thread([this, to = callback, answer]() mutable {
                (void)to->processResult({answer, {}, isphal::Status::OK}).isOk();
                to = nullptr;
                --mAtWork;
            }).detach();
        }
        return ok();
    }
    StatusReturn closeISPDevice() override {
        callback = nullptr;
        return ok();
    }

  private:
    std::atomic<int> mAtWork{0};
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
