#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/bridge/HalInterface.h"

#include <utility>

#include "quenCommon/Hardened.h"
#include "quenCommon/Log.h"
#include "quenOfflineDevice/bridge/ClientCallback.h"

using android::sp;
using quen::MutexLock;
using quen::RequestTable;
using vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;

// NOLINTNEXTLINE(performance-unnecessary-value-param): an exported signature
HalInterface::HalInterface(sp<NSCam::IMetadataConverter> converter)
    : mRequestCB(nullptr), mCallback(new ClientCallback(this, converter)) {}

HalInterface::~HalInterface() {
    mReserved = nullptr;
    takeCallback();
}

bool HalInterface::registerRequestCB(bool (*cb)()) {
    MutexLock const lock(mLock);
    mRequestCB = cb;
    return true;
}

bool HalInterface::requestCallback() {
    return true;
}

void HalInterface::recordISPRequest(OfflineRequest* request, sp<IQuenPostProcCallback> callback) {
    record(request, std::move(callback));
}

void HalInterface::waitForRequestDrained() {
    sp<ClientCallback> const callback = this->callback();
    if constexpr (quen::kHardened) {
        if (callback == nullptr) {
            QLOGE("waitForRequestDrained after the ISP module has died");
            return;
        }
    }
    callback->waitForRequestDrained();
}

sp<HalInterface::ClientCallback> HalInterface::callback() const {
    MutexLock const lock(mCallbackLock);
    return mCallback;
}

/** Releases the callback object. Returns it, for the caller to release without a lock. */
sp<HalInterface::ClientCallback> HalInterface::takeCallback() {
    MutexLock const lock(mCallbackLock);
    sp<ClientCallback> taken = mCallback;
    mCallback = nullptr;
    return taken;
}

RequestTable::Insertion HalInterface::record(OfflineRequest* request,
                                             sp<IQuenPostProcCallback> callback) {
    sp<ClientCallback> const results = this->callback();
    if constexpr (!quen::kHardened) {
        return results->record(request, std::move(callback));
    }
    // The module may die between the two steps.
    RequestTable::Insertion const insertion = results == nullptr
                                                      ? RequestTable::Insertion::Closed
                                                      : results->record(request, callback);
    if (insertion == RequestTable::Insertion::Closed) {
        QLOGE("recordISPRequest after the ISP module has died");
    }
    return insertion;
}

void HalInterface::withdraw(uint32_t requestNumber, OfflineRequest* request) {
    sp<ClientCallback> const results = this->callback();
    if (results != nullptr) {
        results->withdraw(requestNumber, request);
    }
}
