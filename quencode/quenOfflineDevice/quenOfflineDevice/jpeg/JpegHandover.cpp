#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/jpeg/JpegHandover.h"

#include <cutils/properties.h>

#include "quenCommon/Hardened.h"
#include "quenCommon/Log.h"
#include "quenOfflineDevice/ProcessState.h"

namespace quen {
namespace {

constexpr char kTimeoutProperty[] = "vendor.debug.camera.jpeg.timeout";
constexpr int32_t kDefaultTimeoutSeconds = 4;

}  // namespace

JpegHandover::JpegHandover(void const* bridge, uint32_t requestNumber)
    : mBridge(bridge), mRequestNumber(requestNumber) {
    if constexpr (kHardened) {
        MutexLock const lock(gJpegMutex);
        mNext = gJpegWaiting;
        gJpegWaiting = this;
    }
}

JpegHandover::~JpegHandover() {
    if constexpr (kHardened) {
        MutexLock const lock(gJpegMutex);
        JpegHandover** link = &gJpegWaiting;
        while (*link != this) {
            link = &(*link)->mNext;
        }
        *link = mNext;
    }
}

void JpegHandover::startTimeout() {
    int32_t const timeoutSeconds = property_get_int32(kTimeoutProperty, kDefaultTimeoutSeconds);
    gettimeofday(&gJpegDeadlineBase, nullptr);
    gJpegDeadline = deadlineAfter(gJpegDeadlineBase, timeoutSeconds);
    mDeadline = gJpegDeadline;
}

/** The default build waits once, whatever ends the wait: clients rely on its time-outs. */
bool JpegHandover::wait() {
    if constexpr (!kHardened) {
        gJpegCond.waitUntil(gJpegMutex, mDeadline);
        return true;
    }
    while (!mHasResult && gJpegCond.waitUntil(gJpegMutex, mDeadline) == 0) {
    }
    return mHasResult;
}

int32_t JpegHandover::status() const {
    return kHardened ? mStatus : gJpegResultStatus;
}

void JpegHandover::signal(void const* bridge, uint32_t requestNumber, int32_t clientStatus) {
    MutexLock const lock(gJpegMutex);
    gJpegResultStatus = clientStatus;
    QLOGI("JPEG callback signal process");
    if constexpr (!kHardened) {
        gJpegCond.signal();
        return;
    }
    for (JpegHandover* waiting = gJpegWaiting; waiting != nullptr; waiting = waiting->mNext) {
        if (waiting->mBridge == bridge && waiting->mRequestNumber == requestNumber) {
            waiting->mHasResult = true;
            waiting->mStatus = clientStatus;
        }
    }
    gJpegCond.broadcast();  // a client that breaks the contract may have several calls wait
}

}  // namespace quen
