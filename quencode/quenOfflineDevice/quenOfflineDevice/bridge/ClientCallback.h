#pragma once

#include <sys/time.h>

#include <cstdint>
#include <ctime>
#include <vector>

#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <nscam/IMetadata.h>
#include <nscam/IMetadataConverter.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/ICallback.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>

#include "quenCommon/Export.h"
#include "quenCommon/Mutex.h"
#include "quenOfflineDevice/bridge/HalInterface.h"
#include "quenOfflineDevice/bridge/RequestTable.h"

/**
 * Receives the ISP device's results, and keeps the table of requests that wait for one.
 *
 * Requests are recorded on the client's thread; results arrive on the ISP HAL's threads, several at
 * a time. The table locks itself; mDrainLock covers the test for an empty table with the wait or
 * the signal that goes with it, and is the one lock that may be held around the table's.
 */
class HalInterface::ClientCallback
    : public vendor::mediatek::hardware::camera::isphal::V1_0::ICallback,
      public android::hardware::hidl_death_recipient {
  public:
    using ISPResult = vendor::mediatek::hardware::camera::isphal::V1_0::ISPResult;
    using IQuenPostProcCallback =
            vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;

    ClientCallback(android::wp<HalInterface> const& parent,
                   android::sp<NSCam::IMetadataConverter> const& converter);

    /** Destroys the records that are still in the table: no result can reach them any more. */
    QUEN_EXPORT ~ClientCallback() override;

    /**
     * Delivers a final result to whoever waits for it, destroys the request's record and wakes a
     * drained wait when it was the last one. A failed result is delivered like a good one, with its
     * status. Of several results for one number the first is delivered. A thread of the ISP HAL.
     */
    QUEN_EXPORT android::hardware::Return<void> processResult(ISPResult const& result) override;

    /** Logs a failed early result; nothing else. A thread of the ISP HAL. */
    QUEN_EXPORT android::hardware::Return<void> processEarlyResult(
            ISPResult const& result) override;

    /**
     * The ISP module died: the parent releases this object, and nothing may be recorded or
     * drained through it from then on. Requests stay outstanding; in the hardened build their
     * clients are told. Any thread.
     */
    QUEN_EXPORT void serviceDied(uint64_t cookie,
                                 android::wp<android::hidl::base::V1_0::IBase> const& who) override;

    /** Records a request; see HalInterface::recordISPRequest. The client's thread. */
    quen::RequestTable::Insertion record(OfflineRequest* request,
                                         android::sp<IQuenPostProcCallback> callback);

    /**
     * Takes back a request that the ISP device refused, and destroys its record, unless a result is
     * being handled. The client's thread.
     */
    void withdraw(uint32_t requestNumber, OfflineRequest* request);

    /**
     * Blocks until the table is empty. Gives up when two seconds pass without a signal: the table
     * is then emptied and its requests are abandoned, not deleted; in the hardened build they are
     * destroyed. The client's thread.
     */
    void waitForRequestDrained() QUEN_EXCLUDES(mDrainLock);

    using IspStatus = vendor::mediatek::hardware::camera::isphal::V1_0::Status;
    using ClientStatus = vendor::quen::hardware::camera::quenpostproc::V1_0::Status;

    /** Client status of an ISP status; the ISP's value 6 has no name and is reported as success. */
    static ClientStatus convertStatus(IspStatus status);

    /** Forwards to quen::convertToIMetadata, which documents it. */
    static bool convertToIMetadata(void const* data, NSCam::IMetadata& out);

  private:
    using Claim = quen::RequestTable::Claim;
    void deliverToClient(ISPResult const& result, Claim const& claim);
    std::vector<Claim> drain() QUEN_EXCLUDES(mDrainLock);
    void signalWhenDrained() QUEN_EXCLUDES(mDrainLock);
    void tellModuleDied();

    quen::RequestTable mOfflineRequestCallback;
    android::wp<HalInterface> mParent;
    android::sp<NSCam::IMetadataConverter> mMetadataConverter;
    quen::Mutex mDrainLock;
    quen::Condition mDrainCond;                           // signalled when the table is empty
    timeval mDrainStart QUEN_GUARDED_BY(mDrainLock);      // scratch of one wait cycle
    timespec mDrainDeadline QUEN_GUARDED_BY(mDrainLock);  // scratch of one wait cycle
};
