#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <memory>
#include <string>

#include <host/hidl/ServiceRegistry.h>
#include <host/log/LogControl.h>

#include "support/Internals.h"
#include "support/StandInIsp.h"

namespace quentest {

/** A device object, not connected yet, and the stand-in ISP that it will find. */
class DeviceTest : public testing::Test {
  protected:
    DeviceTest() { mModule->registerAsService("internal/0"); }
    ~DeviceTest() override { forgetModule(); }

    void forgetModule() {
        quen::host::unregisterService(isphal::IISPModule::descriptor, "internal/0");
    }

    android::sp<StandInModule> mModule = new StandInModule;
    android::sp<StandInDevice> mIsp = mModule->device;
    std::unique_ptr<quenOfflineDevice> mDevice = std::make_unique<quenOfflineDevice>();
    DeviceInternals mPeer{*mDevice};
};

/** Answers with a status, as a call of the stand-in. */
inline auto answering(isphal::Status status) {
    return [status](auto const&...) -> StandInDevice::StatusReturn { return status; };
}

/** Writes lines to standard error as they are: "<level or priority> <tag> <text>|". */
struct BareLog : quen::host::LogSink {
    BareLog() { quen::host::setLogSink(this); }
    void write(char const* tag, int level, char const* text) override {
        fprintf(stderr, "%d %s %s|", level, tag, text);
    }
    void writeAndroid(char const* tag, int priority, char const* text) override {
        write(tag, priority, text);
    }
};

}  // namespace quentest

/**
 * Expects the library to end the process itself: the error line, which ends with the message (a
 * pattern), then the place of the failure.
 */
#define EXPECT_FATAL(statement, message)                                                  \
    EXPECT_EXIT((quentest::BareLog(), statement), testing::KilledBySignal(SIGABRT),       \
                std::string("1 quenOfflineDevice [^|]*\\(\\) \\[Fatal\\] ") + (message) + \
                        "\\|7 quenOfflineDevice \\([A-Za-z]+\\)\\{#[0-9]+:[^|]*\\.cpp\\}\r\n\\|")
