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
    EXPECT_THAT(isp->configurations, IsEmpty());
}

TEST_F(LifecycleTest, ASecondInitReplacesEverythingAndClosesNothing) {
    device->create(nullptr);
    sp<HalInterface> const hal = peer.halInterface();
    sp<StandInModule> const other = new StandInModule;
    other->registerAsService("internal/0");
    device->create(nullptr);
    EXPECT_NE(peer.halInterface(), hal);
    device->flush();
    EXPECT_EQ(isp->flushes, 0);
    EXPECT_EQ(other->device->flushes, 1);
    device = nullptr;
    EXPECT_EQ(isp->closes + other->device->closes, 0);
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
        module = new Noting<StandInModule>([this] { note("module"); });
        isp = nullptr;
        module->device = new Noting<StandInDevice>([this] { note("device"); });
        module->registerAsService("internal/0");
        device->create(nullptr);
        mHal = peer.halInterface();
        forgetModule();
        module->device = nullptr;
        module = nullptr;
    }

    std::vector<std::string> order;

  private:
    void note(std::string const& who) {
        order.push_back(who + (mHal.promote() == nullptr ? " after" : " before") + " hal");
    }

    wp<HalInterface> mHal;
};

TEST_F(ReleaseTest, UinitReleasesDeviceThenModuleThenHalInterface) {
    device->destroy();
    EXPECT_THAT(order, ElementsAre("device before hal", "module before hal"));
    EXPECT_EQ(peer.halInterface(), nullptr);
    device = nullptr;
    EXPECT_EQ(order.size(), 2u);
}

TEST_F(ReleaseTest, TheDestructorReleasesTheModuleFirstAndTheDeviceLast) {
    device = nullptr;
    EXPECT_THAT(order, ElementsAre("module before hal", "device after hal"));
}

TEST_F(LifecycleTest, DestroyClosesOnceAndKeepsTheConfiguration) {
    SessionParams params{{{1, kRaw16, 64, 48, false}}, {{2, kYuv, 64, 48, true}}, nullptr};
    device->create(&params);
    quen::gFastDisplayQueue.push(1);
    quen::gPendingJpegRequestNos.push(7);
    device->destroy();
    EXPECT_FALSE(peer.isConnected());
    // Both queues are the process's: a device that never used them empties them too.
    EXPECT_TRUE(quen::gFastDisplayQueue.empty());
    EXPECT_TRUE(quen::gPendingJpegRequestNos.empty());
    EXPECT_THAT(peer.inputStreams(), SizeIs(1));
    EXPECT_THAT(peer.outputStreams(), SizeIs(1));
    EXPECT_TRUE(peer.isNeedRaw14bit());
    device = nullptr;
    EXPECT_EQ(isp->closes, 1);
}

TEST_F(LifecycleTest, FlushIgnoresEveryOutcomeInSilence) {
    device->create(nullptr);
    Transcript log;
    isp->onFlush = &StandInDevice::transportError;
    device->flush();
    isp->onFlush = answering(isphal::Status::INTERNAL_ERROR);
    device->flush();
    EXPECT_EQ(isp->flushes, 2);
    EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(LifecycleTest, SetOfflineCallbackInstallsTheHookAndKeepsNothing) {
    device->create(nullptr);
    HalInterface& hal = *peer.halInterface();
    EXPECT_FALSE(bridge::hasHook(hal));
    sp<isphal::ICallback> const callback = hal.callback();
    int32_t const references = callback->getStrongCount();
    alarm(10);  // for a lock that is not given back
    peer.lock().lock();
    std::thread waits([&] { device->setOfflineCallback(callback); });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(bridge::hasHook(hal));  // the call has to wait for the lock
    peer.lock().unlock();
    waits.join();
    device->setOfflineCallback(callback);
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
    module->transportFails = true;
    EXPECT_FATAL(device->create(nullptr),
                 "Transaction error in openISPDevice from ISPModule:.*stand-in lost.*");
    module->transportFails = false;
    module->status = isphal::Status::RESOURCE_ERROR;
    EXPECT_FATAL(device->create(nullptr), "openISPDevice failed:RESOURCE_ERROR");
    module->device = nullptr;  // the status stands before the device
    EXPECT_FATAL(device->create(nullptr), "openISPDevice failed:RESOURCE_ERROR");
    module->status = isphal::Status::OK;
    EXPECT_FATAL(device->create(nullptr), "invalid ISP device, mDevice is \\(nil\\)");
    forgetModule();
    EXPECT_FATAL(device->create(nullptr), "no ISP module service, instance internal/0");
    sp<StandInModule> const mute = new MuteModule;
    mute->registerAsService("internal/0");
    EXPECT_FATAL(device->create(nullptr), "invalid ISP device, mDevice is \\(nil\\)");
    module->registerAsService("internal/0");
    module->device = isp;
    device->create(nullptr);
    module->device = nullptr;
    std::ostringstream old;
    old << static_cast<isphal::IDevice*>(isp.get());
    EXPECT_FATAL(device->create(nullptr), "invalid ISP device, mDevice is " + old.str());
}

TEST_F(LifecycleDeathTest, UinitFails) {
    device->create(nullptr);
    isp->onClose = &StandInDevice::transportError;
    EXPECT_FATAL(device->destroy(),
                 "Transaction error in closeISPDevice from ISPDevice:.*stand-in lost.*");
    isp->onClose = answering(static_cast<isphal::Status>(6));  // has no name
    EXPECT_FATAL(device->destroy(), "closeISPDevice failed:[0x]*6");
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
