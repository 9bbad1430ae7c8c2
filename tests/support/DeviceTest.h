#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>

#include <host/hidl/ServiceRegistry.h>

#include "support/Peers.h"
#include "support/StandInIsp.h"

namespace quentest {

/** A device object, not connected yet, and the stand-in ISP that it will find. */
class DeviceTest : public testing::Test {
  protected:
    DeviceTest() { module->registerAsService("internal/0"); }
    ~DeviceTest() override { forgetModule(); }

    void forgetModule() {
        quen::host::unregisterService(isphal::IISPModule::descriptor, "internal/0");
    }

    android::sp<StandInModule> module = new StandInModule;
    android::sp<StandInDevice> isp = module->device;
    std::unique_ptr<quenOfflineDevice> device = std::make_unique<quenOfflineDevice>();
    quenOfflineDevicePeer peer{*device};
};

/** Answers with a status, as a call of the stand-in. */
inline auto answering(isphal::Status status) {
    return [status](auto const&...) -> StandInDevice::StatusReturn { return status; };
}

}  // namespace quentest

/** Expects the library to end the process itself: the error line, then the place of the failure. */
#define EXPECT_FATAL(statement, message)                 \
    EXPECT_EXIT(                                         \
            statement, testing::KilledBySignal(SIGABRT), \
            std::string("\\[Fatal\\] ") + (message) + ".*\\([A-Za-z]+\\)\\{#[0-9]+:.*\\.cpp\\}")
