#pragma once

#include <functional>
#include <vector>

#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "support/Graphics.h"

namespace quentest {

namespace isphal = vendor::mediatek::hardware::camera::isphal::V1_0;

/**
 * An ISP device that answers what a test tells it to and remembers what it was given. Without
 * further orders every call succeeds and no result is delivered.
 */
class StandInDevice : public isphal::IDevice {
  public:
    using StatusReturn = android::hardware::Return<isphal::Status>;

    StatusReturn configureISPDevice(isphal::ISPStreamConfiguration const& config,
                                    android::sp<isphal::ICallback> const& resultCallback) override {
        configurations.push_back(config);
        callback = resultCallback;
        return onConfigure();
    }
    StatusReturn processISPRequest(
            android::hardware::hidl_vec<isphal::ISPRequest> const& newRequests) override {
        for (auto const& request : newRequests) {
            requests.push_back(request);
        }
        return onProcess(newRequests[0]);
    }
    StatusReturn flush() override {
        ++flushes;
        return onFlush();
    }
    StatusReturn closeISPDevice() override {
        ++closes;
        return onClose();
    }

    /** Delivers a result as the ISP would, on the calling thread. */
    void answer(uint32_t number, isphal::Status status = isphal::Status::OK,
                std::vector<uint8_t> const& metadata = {}) {
        (void)callback->processResult({number, metadata, status}).isOk();
    }

    static StatusReturn ok() { return isphal::Status::OK; }
    static StatusReturn transportError() { return lostTransport(); }

    std::vector<isphal::ISPStreamConfiguration> configurations;
    std::vector<isphal::ISPRequest> requests;
    android::sp<isphal::ICallback> callback;
    int flushes = 0;
    int closes = 0;

    std::function<StatusReturn()> onConfigure = &ok;
    std::function<StatusReturn(isphal::ISPRequest const&)> onProcess = [](auto const&) {
        return ok();
    };
    std::function<StatusReturn()> onFlush = &ok;
    std::function<StatusReturn()> onClose = &ok;
};

/** A module that opens one stand-in device. */
class StandInModule : public isphal::IISPModule {
  public:
    android::hardware::Return<void> openISPDevice(openISPDevice_cb cb) override {
        if (transportFails) {
            return lostTransport();
        }
        cb(status, device);
        return android::hardware::Void();
    }

    android::sp<StandInDevice> device = new StandInDevice;
    isphal::Status status = isphal::Status::OK;
    bool transportFails = false;
};

}  // namespace quentest
