#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/bridge/ClientCallback.h"

#include <utility>

#include <system/camera_metadata.h>

#include "quenCommon/Hardened.h"
#include "quenCommon/Log.h"
#include "quenOfflineDevice/Stage.h"
#include "quenOfflineDevice/bridge/ResultMetadata.h"
#include "quenOfflineDevice/jpeg/JpegHandover.h"
#include "quenOfflineDevice/metadata/IspMetadata.h"

using android::sp;
using android::wp;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;
using android::hidl::base::V1_0::IBase;
using NSCam::IMetadata;
using quen::MutexLock;
using quen::RequestTable;
using vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;

namespace {

constexpr time_t kDrainTimeoutSeconds = 2;

}  // namespace

HalInterface::ClientCallback::ClientCallback(wp<HalInterface> const& parent,
                                             sp<NSCam::IMetadataConverter> const& converter)
    : mParent(parent), mMetadataConverter(converter), mDrainStart{}, mDrainDeadline{} {}

HalInterface::ClientCallback::~ClientCallback() {
    // No result is at work here: each holds a reference until it is done.
    for (Claim const& claim : mOfflineRequestCallback.clear()) {
        quen::destroyOfflineRequest(claim.request);
    }
}

RequestTable::Insertion HalInterface::ClientCallback::record(OfflineRequest* request,
                                                             sp<IQuenPostProcCallback> callback) {
    return mOfflineRequestCallback.insert(request, std::move(callback));
}

void HalInterface::ClientCallback::withdraw(uint32_t requestNumber, OfflineRequest* request) {
    if (mOfflineRequestCallback.withdraw(requestNumber, request)) {
        quen::destroyOfflineRequest(request);
    }
}

/**
 * Each cycle waits two seconds at most, from its own start: as long as results keep coming there is
 * no overall limit. The caller cannot tell a drained table from one that was given up.
 */
void HalInterface::ClientCallback::waitForRequestDrained() {
    std::vector<Claim> const givenUp = drain();
    if constexpr (quen::kHardened) {
        for (Claim const& claim : givenUp) {
            quen::destroyOfflineRequest(claim.request);
        }
    }
}

/**
 * Waits for an empty table, or gives up and empties it.
 *
 * @return the entries given up that no result has claimed: their callbacks are released by the
 * caller, without a lock; the records stay allocated, and the hardened build destroys them
 */
std::vector<HalInterface::ClientCallback::Claim> HalInterface::ClientCallback::drain() {
    std::vector<Claim> givenUp;
    MutexLock const lock(mDrainLock);
    while (!mOfflineRequestCallback.empty()) {
        for (uint32_t const number : mOfflineRequestCallback.numbers()) {
            QLOGI("need wait request number %d process done", number);
        }
        gettimeofday(&mDrainStart, nullptr);
        mDrainDeadline = quen::deadlineAfter(mDrainStart, kDrainTimeoutSeconds);
        if (mDrainCond.waitUntil(mDrainLock, mDrainDeadline) != 0) {
            givenUp = mOfflineRequestCallback.clear();
            QLOGE("wait all result process failed, after remove all result "
                  "mOfflineRequestCallback size is %d",
                  static_cast<int>(mOfflineRequestCallback.size()));
            break;
        }
        QLOGI("wait all result process done");
    }
    return givenUp;
}

/** Wakes a drained wait when no request is outstanding any more. */
void HalInterface::ClientCallback::signalWhenDrained() {
    MutexLock const lock(mDrainLock);
    if (mOfflineRequestCallback.empty()) {
        QLOGI("all result process done, single waitForRequestDrained");
        mDrainCond.signal();
    }
}

/** In the default build calls that already wait end by their own time-outs. */
void HalInterface::ClientCallback::serviceDied(uint64_t cookie, wp<IBase> const& /*who*/) {
    // The parent's reference may be the last one.
    sp<ClientCallback> const self = this;
    QLOGI("ISPModule(%lu) has died", static_cast<unsigned long>(cookie));
    sp<HalInterface> const parent = mParent.promote();
    if (parent != nullptr) {
        parent->takeCallback();
    }
    if constexpr (quen::kHardened) {
        tellModuleDied();
    }
}

/** Ends every outstanding request as failed: no result will come for it. */
void HalInterface::ClientCallback::tellModuleDied() {
    for (Claim const& claim : mOfflineRequestCallback.close()) {
        if (claim.callback == nullptr) {
            quen::JpegHandover::signal(this, claim.number,
                                       static_cast<int32_t>(ClientStatus::INTERNAL_ERROR));
        } else {
            (void)claim.callback->notifyRequestResult(claim.number, ClientStatus::INTERNAL_ERROR)
                    .isOk();
        }
        quen::destroyOfflineRequest(claim.request);
    }
    signalWhenDrained();
}

HalInterface::ClientCallback::ClientStatus HalInterface::ClientCallback::convertStatus(
        IspStatus status) {
    static constexpr ClientStatus kClientStatus[] = {
            ClientStatus::ILLEGAL_ARGUMENT,         // 1
            ClientStatus::RESOURCE_ERROR,           // 2
            ClientStatus::REQUEST_ERROR,            // 3
            ClientStatus::REQUEST_STREAM_ID_ERROR,  // 4
            ClientStatus::RESULT_ERROR,             // 5
            ClientStatus::OK,                       // 6
            ClientStatus::INTERNAL_ERROR,           // 7
    };
    uint32_t const index = static_cast<uint32_t>(status) - 1;
    bool const known = index < sizeof(kClientStatus) / sizeof(kClientStatus[0]);
    return known ? kClientStatus[index] : ClientStatus::OK;
}

/** The same text as for a final result, on purpose: log readers search for it. */
Return<void> HalInterface::ClientCallback::processEarlyResult(ISPResult const& result) {
    if (result.status != IspStatus::OK) {
        QLOGE("processResult %u failed", result.reqNumber);
    }
    return Void();
}

/**
 * A waiting `process` is released before its record leaves the table, so that its next request
 * under the same number can find the number taken; in the hardened build the record leaves first.
 */
Return<void> HalInterface::ClientCallback::processResult(ISPResult const& result) {
    // Once notified, the client may destroy the device and the ISP may release this object.
    sp<ClientCallback> const self = this;
    Claim claim = mOfflineRequestCallback.claim(result.reqNumber);
    if (!claim) {
        QLOGE("cannot find capture request %u", result.reqNumber);
        return Void();
    }
    bool const isOk = result.status == IspStatus::OK;
    QLOGI("reprocess result stage %s number %d Result callback, result.status is OK %d E",
          claim.stage.c_str(), result.reqNumber, isOk);
    if (!isOk) {
        QLOGE("processResult %u failed", result.reqNumber);
    }
    if (claim.callback == nullptr) {
        QLOGI("JPEG callback");
        if constexpr (quen::kHardened) {
            mOfflineRequestCallback.erase(claim);
        }
        quen::JpegHandover::signal(this, claim.number,
                                   static_cast<int32_t>(convertStatus(result.status)));
    } else {
        deliverToClient(result, claim);
    }
    quen::destroyOfflineRequest(claim.request);
    mOfflineRequestCallback.erase(claim);
    claim.callback = nullptr;
    signalWhenDrained();
    QLOGI("reprocess result stage %s number %d Result callback, result.status is OK %d X",
          claim.stage.c_str(), result.reqNumber, isOk);
    return Void();
}

/** Gives a result's metadata, then the end of the request, to the client. */
void HalInterface::ClientCallback::deliverToClient(ISPResult const& result, Claim const& claim) {
    QLOGD("callback request");
    OfflineRequest const& request = *claim.request;
    IMetadata resultMetadata;
    if constexpr (quen::kHardened) {
        quen::convertCheckedToIMetadata(result.resultMetadata.data(), result.resultMetadata.size(),
                                        resultMetadata);
    } else {
        convertToIMetadata(result.resultMetadata.data(), resultMetadata);
    }
    quen::carry3ABufferIndex(resultMetadata, *request.metadata);
    resultMetadata += *request.metadata;
    quen::logCurrentMode(resultMetadata);
    if (quen::isRawToYuv(claim.stage.c_str())) {
        native_handle const* const tuningData = request.outputTuningBuffer.getNativeHandle();
        if (request.tuningBufferIsExternal) {
            quen::logExternalTuningData(tuningData);
        } else {
            quen::takeTuningData(tuningData, resultMetadata);
        }
    }
    hidl_vec<uint8_t> clientMetadata;  // points at the converter's buffer without owning it
    mMetadataConverter->convert(resultMetadata, clientMetadata);
    ClientStatus const status = convertStatus(result.status);
    // The outcome is ignored on purpose, but a Return that is never checked can abort the process.
    (void)claim.callback->notifyResultMetadata(result.reqNumber, clientMetadata, status).isOk();
    (void)claim.callback->notifyRequestResult(result.reqNumber, status).isOk();
    free_camera_metadata(reinterpret_cast<camera_metadata*>(clientMetadata.data()));
}

bool HalInterface::ClientCallback::convertToIMetadata(void const* data, IMetadata& out) {
    return quen::convertToIMetadata(data, out);
}
