#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/HalInterface.h"

#include <utility>

#include "quenCommon/Log.h"

using android::sp;
using android::wp;
using android::hidl::base::V1_0::IBase;
using vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;

namespace {

constexpr time_t kDrainTimeoutSeconds = 2;
constexpr long kNanosecondsPerMicrosecond = 1000;

}  // namespace

HalInterface::HalInterface(sp<NSCam::IMetadataConverter> converter) : mRequestCB(nullptr) {
    pthread_mutex_init(&mLock, nullptr);
    mCallback = new ClientCallback(this, converter);
}

HalInterface::~HalInterface() {
    mReserved = nullptr;
    pthread_mutex_destroy(&mLock);
    mCallback = nullptr;
}

bool HalInterface::registerRequestCB(bool (*cb)()) {
    pthread_mutex_lock(&mLock);
    mRequestCB = cb;
    pthread_mutex_unlock(&mLock);
    return true;
}

bool HalInterface::requestCallback() {
    return true;
}

void HalInterface::recordISPRequest(OfflineRequest* request, sp<IQuenPostProcCallback> callback) {
    // No lock, see ClientCallback. A number that stands already keeps its entry.
    mCallback->mOfflineRequestCallback.try_emplace(
            request->requestNumber,
            ClientCallback::offlineRequestCallback{request, std::move(callback)});
}

void HalInterface::waitForRequestDrained() {
    mCallback->waitForRequestDrained();
}

HalInterface::ClientCallback::ClientCallback(wp<HalInterface> const& parent,
                                             sp<NSCam::IMetadataConverter> const& converter)
    : mParent(parent),
      mMetadataConverter(converter),
      mDrainLock(PTHREAD_MUTEX_INITIALIZER),
      mDrainCond(PTHREAD_COND_INITIALIZER),
      mDrainStart{},
      mDrainDeadline{} {}

HalInterface::ClientCallback::~ClientCallback() {
    for (auto const& [number, entry] : mOfflineRequestCallback) {
        if (entry.request != nullptr) {
            delete entry.request->metadata;
            delete entry.request;
        }
    }
}

/**
 * Each cycle waits two seconds at most, from its own start: as long as results keep coming there is
 * no overall limit. The caller cannot tell a drained table from one that was given up.
 */
void HalInterface::ClientCallback::waitForRequestDrained() {
    pthread_mutex_lock(&mDrainLock);
    while (!mOfflineRequestCallback.empty()) {
        for (auto const& entry : mOfflineRequestCallback) {
            QLOGI("need wait request number %d process done", entry.first);
        }
        gettimeofday(&mDrainStart, nullptr);
        mDrainDeadline.tv_sec = mDrainStart.tv_sec + kDrainTimeoutSeconds;
        mDrainDeadline.tv_nsec = mDrainStart.tv_usec * kNanosecondsPerMicrosecond;
        if (pthread_cond_timedwait(&mDrainCond, &mDrainLock, &mDrainDeadline) != 0) {
            // The records stay allocated: a result may be being handled at this moment.
            mOfflineRequestCallback.clear();
            QLOGE("wait all result process failed, after remove all result "
                  "mOfflineRequestCallback size is %d",
                  static_cast<int>(mOfflineRequestCallback.size()));
            break;
        }
        QLOGI("wait all result process done");
    }
    pthread_mutex_unlock(&mDrainLock);
}

/**
 * Nothing is signalled and no client is told: whoever waits already runs into a time-out of its
 * own.
 */
void HalInterface::ClientCallback::serviceDied(uint64_t cookie, wp<IBase> const& /*who*/) {
    QLOGI("ISPModule(%lu) has died", static_cast<unsigned long>(cookie));
    sp<HalInterface> const parent = mParent.promote();
    if (parent != nullptr) {
        parent->mCallback = nullptr;
    }
}
