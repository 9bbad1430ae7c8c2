#define LOG_TAG "quen-isp"

#include "host/isp/device/SoftwareIspDevice.h"

#include <chrono>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <log/log.h>

#include "host/isp/device/Request.h"
#include "host/isp/device/RequestWork.h"

using android::sp;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::graphics::mapper::V4_0::IMapper;

namespace quen::host::isp {

namespace {

/** Runs an operation; RESOURCE_ERROR when memory runs out. */
template <typename Operation>
SoftwareIspDevice::Status guarded(Operation const& operation) {
    try {
        return operation();
    } catch (std::bad_alloc const&) {
        return SoftwareIspDevice::Status::RESOURCE_ERROR;
    }
}

/** Logs a refusal. */
void logRefusal(char const* what, SoftwareIspDevice::Status status, std::string const& problem) {
    if (status != SoftwareIspDevice::Status::OK) {
        ALOGE("%s is refused with %s: %s", what, toString(status).c_str(), problem.c_str());
    }
}

}  // namespace

SoftwareIspDevice::SoftwareIspDevice(SoftwareIspOptions const& options) : mOptions(options) {}

Return<SoftwareIspDevice::Status> SoftwareIspDevice::configureISPDevice(
        const ISPStreamConfiguration& config, const sp<ICallback>& callback) {
    std::string problem;
    Status const status = guarded([&] { return configure(config, callback, problem); });
    logRefusal("a configuration", status, problem);
    if (mOptions.observer) {
        mOptions.observer->onConfigured(config, status, problem);
    }
    return status;
}

SoftwareIspDevice::Status SoftwareIspDevice::configure(ISPStreamConfiguration const& config,
                                                       sp<ICallback> const& callback,
                                                       std::string& problem) {
    auto const configured = std::make_shared<IspConfiguration>();
    Status const status = readConfiguration(config, *configured, problem);
    if (status != Status::OK) {
        return status;
    }
    configured->callback = callback;
    std::shared_ptr<IspConfiguration const> replaced = configured;  // released after the lock
    MutexLock const guard(mLock);
    if (mClosed) {
        problem = "the device is closed";
        return Status::REQUEST_ERROR;
    }
    std::swap(mConfiguration, replaced);
    return Status::OK;
}

std::shared_ptr<IspConfiguration const> SoftwareIspDevice::configuration() {
    MutexLock const guard(mLock);
    return mConfiguration;
}

Return<SoftwareIspDevice::Status> SoftwareIspDevice::processISPRequest(
        const hidl_vec<ISPRequest>& requests) {
    return guarded([&] { return submit(requests); });
}

SoftwareIspDevice::Status SoftwareIspDevice::submit(hidl_vec<ISPRequest> const& requests) {
    std::shared_ptr<IspConfiguration const> const configured = configuration();
    sp<IMapper> const mapper = configured ? IMapper::getService() : nullptr;
    std::vector<std::unique_ptr<QueuedWork>> accepted;
    for (ISPRequest const& wanted : requests) {
        auto request = std::make_unique<Request>();
        std::string problem = configured ? "" : "no configuration is in force";
        Status const status = configured
                                      ? readRequest(wanted, configured, mapper, *request, problem)
                                      : Status::REQUEST_ERROR;
        logRefusal("a request", status, problem);
        if (mOptions.observer) {
            mOptions.observer->onRequest(wanted, status, problem);
        }
        if (status != Status::OK) {
            return status;
        }
        request->submitted = std::chrono::steady_clock::now();
        accepted.push_back(std::make_unique<RequestWork>(std::move(request), mOptions));
    }
    return mQueue.submit(std::move(accepted)) ? Status::OK : Status::REQUEST_ERROR;
}

Return<SoftwareIspDevice::Status> SoftwareIspDevice::flush() {
    mQueue.flush();
    return Status::OK;
}

Return<SoftwareIspDevice::Status> SoftwareIspDevice::closeISPDevice() {
    std::shared_ptr<IspConfiguration const> ended;  // released after the lock
    {
        MutexLock const guard(mLock);
        mClosed = true;
        std::swap(ended, mConfiguration);
    }
    mQueue.close();
    return Status::OK;
}

}  // namespace quen::host::isp
