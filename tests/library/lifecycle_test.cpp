#define LOG_TAG "quenOfflineDevice"

#include <unistd.h>

#include <chrono>
#include <functional>
#include <thread>

#include <quenCommon/Log.h>
#include <quenOfflineDevice/ProcessState.h>

#include "support/DeviceTest.h"
#include "support/Formats.h"
#include "support/Transcript.h"

using namespace quentest;
using namespace testing;
using android::sp;
using android::wp;

namespace {

using LifecycleTest = DeviceTest;
using LifecycleDeathTest = DeviceTest;

TEST_F(LifecycleTest, CreateConnectsFirstAndNamesWhatIsMissing) {
    SessionParams none{};
    SessionParams noOutputs{{StreamConfig{}}, {}, nullptr};
    SessionParams noInputs{{}, {StreamConfig{}}, nullptr};
    std::pair<SessionParams*, std::string> const cases[] = {
            {nullptr, "1, input_streams is empty 1, output_streams is empty  1"},
            {&none, "0, input_streams is empty 1, output_streams is empty  1"},
            {&noOutputs, "0, input_streams is empty 0, output_streams is empty  1"},
            {&noInputs, "0, input_streams is empty 1, output_streams is empty  0"},
    };
    for (auto const& [params, flags] : cases) {
        quenOfflineDevice fresh;
        Transcript log;
        fresh.create(params);
        EXPECT_THAT(log.lines(), ElementsAre("I create E", "I init E", "I init X",
                                             "E pCreateParams is nullptr " + flags +
                                                     ", constructISPStream failed",
                                             "I create X"));
        EXPECT_TRUE(DeviceInternals(fresh).isConnected());
        EXPECT_EQ(DeviceInternals(fresh).stage(), "");
    }
    EXPECT_THAT(mIsp->configurations, IsEmpty());
}

TEST_F(LifecycleTest, ASecondInitReplacesEverythingAndClosesNothing) {
    mDevice->create(nullptr);
    sp<HalInterface> const hal = mPeer.halInterface();
    sp<StandInModule> const other = new StandInModule;
    other->registerAsService("internal/0");
    mDevice->create(nullptr);
    EXPECT_NE(mPeer.halInterface(), hal);
    mDevice->flush();
    EXPECT_EQ(mIsp->flushes, 0);
    EXPECT_EQ(other->device->flushes, 1);
    mDevice = nullptr;
    EXPECT_EQ(mIsp->closes + other->device->closes, 0);
}

/** Says when its object dies. */
template <typename T>
class Noting : public T {
  public:
    explicit Noting(std::function<void()> onDeath) : mOnDeath(std::move(onDeath)) {}
    ~Noting() override { mOnDeath(); }

  private:
    std::function<void()> mOnDeath;
};

/** Hands the only references to a module and an ISP device to `device`, and notes how they go. */
class ReleaseTest : public DeviceTest {
  protected:
    ReleaseTest() {
        mModule = new Noting<StandInModule>([this] { note("module"); });
        mIsp = nullptr;
        mModule->device = new Noting<StandInDevice>([this] { note("device"); });
        mModule->registerAsService("internal/0");
        mDevice->create(nullptr);
        mHal = mPeer.halInterface();
        forgetModule();
        mModule->device = nullptr;
        mModule = nullptr;
    }

    std::vector<std::string> mOrder;

  private:
    void note(std::string const& who) {
        mOrder.push_back(who + (mHal.promote() == nullptr ? " after" : " before") + " hal");
    }

    wp<HalInterface> mHal;
};

TEST_F(ReleaseTest, UinitReleasesDeviceThenModuleThenHalInterface) {
    mDevice->destroy();
    EXPECT_THAT(mOrder, ElementsAre("device before hal", "module before hal"));
    EXPECT_TRUE(mPeer.halInterface() == nullptr && !mPeer.hasConverter());
    mDevice = nullptr;
    EXPECT_EQ(mOrder.size(), 2u);
}

TEST_F(ReleaseTest, TheDestructorReleasesTheModuleFirstAndTheDeviceLast) {
    mDevice = nullptr;
    EXPECT_THAT(mOrder, ElementsAre("module before hal", "device after hal"));
}

TEST_F(LifecycleTest, DestroyClosesOnceAndKeepsTheConfiguration) {
    SessionParams params{{{1, kRaw16, 64, 48, false}}, {{2, kYuv, 64, 48, true}}, nullptr};
    mDevice->create(&params);
    quen::gFastDisplayQueue.push(1);
    quen::gPendingJpegRequestNos.push(7);
    mDevice->destroy();
    EXPECT_FALSE(mPeer.isConnected());
    // Both queues are the process's: a device that never used them empties them too.
    EXPECT_TRUE(quen::gFastDisplayQueue.empty());
    EXPECT_TRUE(quen::gPendingJpegRequestNos.empty());
    EXPECT_THAT(mPeer.inputStreams(), SizeIs(1));
    EXPECT_THAT(mPeer.outputStreams(), SizeIs(1));
    EXPECT_TRUE(mPeer.isNeedRaw14bit());
    mDevice = nullptr;
    EXPECT_EQ(mIsp->closes, 1);
}

TEST_F(LifecycleTest, FlushIgnoresEveryOutcomeInSilence) {
    mDevice->create(nullptr);
    Transcript log;
    mIsp->onFlush = &StandInDevice::transportError;
    mDevice->flush();
    mIsp->onFlush = answering(isphal::Status::INTERNAL_ERROR);
    mDevice->flush();
    EXPECT_EQ(mIsp->flushes, 2);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(LifecycleTest, SetOfflineCallbackInstallsTheHookAndKeepsNothing) {
    mDevice->create(nullptr);
    HalInterface& hal = *mPeer.halInterface();
    EXPECT_FALSE(bridge::hasHook(hal));
    sp<isphal::ICallback> const callback = hal.callback();
    int32_t const references = callback->getStrongCount();
    alarm(10);  // for a lock that is not given back
    mPeer.lock().lock();
    std::thread waits([&] { mDevice->setOfflineCallback(callback); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(bridge::hasHook(hal));  // the call has to wait for the lock
    mPeer.lock().unlock();
    waits.join();
    mDevice->setOfflineCallback(callback);
    alarm(0);
    EXPECT_TRUE(bridge::hasHook(hal));
    EXPECT_TRUE(hal.reserved() == nullptr);
    EXPECT_EQ(callback->getStrongCount(), references);
}

/** Opens devices without ever saying so. */
struct MuteModule : StandInModule {
    android::hardware::Return<void> openISPDevice(openISPDevice_cb /*cb*/) override {
        return android::hardware::Void();
    }
};

TEST_F(LifecycleDeathTest, InitFails) {
    mModule->transportFails = true;
    EXPECT_FATAL(mDevice->create(nullptr),
                 "Transaction error in openISPDevice from ISPModule:.*stand-in lost.*");
    mModule->transportFails = false;
    mModule->status = isphal::Status::RESOURCE_ERROR;
    EXPECT_FATAL(mDevice->create(nullptr), "openISPDevice failed:RESOURCE_ERROR");
    mModule->device = nullptr;  // the status stands before the device
    EXPECT_FATAL(mDevice->create(nullptr), "openISPDevice failed:RESOURCE_ERROR");
    mModule->status = isphal::Status::OK;
    EXPECT_FATAL(mDevice->create(nullptr), "invalid ISP device, mDevice is \\(nil\\)");
    forgetModule();
    EXPECT_FATAL(mDevice->create(nullptr), "no ISP module service, instance internal/0");
    sp<StandInModule> const mute = new MuteModule;
    mute->registerAsService("internal/0");
    EXPECT_FATAL(mDevice->create(nullptr), "invalid ISP device, mDevice is \\(nil\\)");
    mModule->registerAsService("internal/0");
    mModule->device = mIsp;
    mDevice->create(nullptr);
    mModule->device = nullptr;
    std::ostringstream old;
    old << static_cast<isphal::IDevice*>(mIsp.get());
    EXPECT_FATAL(mDevice->create(nullptr), "invalid ISP device, mDevice is " + old.str());
}

TEST_F(LifecycleDeathTest, UinitFails) {
    mDevice->create(nullptr);
    mIsp->onClose = &StandInDevice::transportError;
    EXPECT_FATAL(mDevice->destroy(),
                 "Transaction error in closeISPDevice from ISPDevice:.*stand-in lost.*");
    mIsp->onClose = answering(static_cast<isphal::Status>(6));  // has no name
    EXPECT_FATAL(mDevice->destroy(), "closeISPDevice failed:[0x]*6");
}

TEST(LogTest, ALineNamesItsPlaceAndIsCutAt1023Characters) {
    Transcript log;
    quen::logPrint("quenGralloc", quen::kLogWarning, "/far/away/Helper.cpp", 12, "doIt", "%s",
                   std::string(2000, 'x').c_str());
    std::string const head =
            g_logInfoLv[2].prefix + std::string("[quenGralloc] Helper.cpp:12 doIt() ");
    EXPECT_THAT(log.rawLines(), ElementsAre(head + std::string(1023 - head.size(), 'x')));
}

TEST(LogTest, ALineIsWantedByItsLettersLevelAndByItsFlag) {
    Transcript log;
    int evaluated = 0;
    auto const written = [&] {
        QLOGE("%d", ++evaluated);
        QLOGW("%d", ++evaluated);
        QLOGI("%d", ++evaluated);
        QLOGD("%d", ++evaluated);
        std::string letters;
        for (std::string const& line : log.take()) {
            letters += line[0];
        }
        return letters;
    };
    for (size_t i = 0; i < 4; ++i) {
        quen::host::setLogLevel(static_cast<quen::host::LogLevel>(i));
        EXPECT_EQ(written(), std::string("EWI").substr(0, i));
        quen::host::setLogLevel("debug");
        g_logInfoLv[i].enabled = false;
        std::string expected = "EWID";
        EXPECT_EQ(written(), expected.erase(expected.find("DEWI"[i]), 1));
        g_logInfoLv[i].enabled = true;
    }
    EXPECT_EQ(evaluated, 6 + 4 * 3);  // only what was written
}

}  // namespace
