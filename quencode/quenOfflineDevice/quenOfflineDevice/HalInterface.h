#pragma once

#include <pthread.h>
#include <sys/time.h>
#include <time.h>

#include <cstdint>
#include <unordered_map>

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
#include "quenOfflineDevice/OfflineRequest.h"

/**
 * The bridge between a device object and the ISP HAL: owns the ClientCallback that the ISP device
 * delivers results to, and passes requests and waits on to it.
 */
class HalInterface : public virtual android::RefBase {
  public:
    class ClientCallback;

    QUEN_EXPORT explicit HalInterface(android::sp<NSCam::IMetadataConverter> converter);
    QUEN_EXPORT ~HalInterface() override;

    /** Stores a request hook. Any thread. Always true. */
    QUEN_EXPORT bool registerRequestCB(bool (*cb)());

    /** The hook that the device object registers; answers true and does nothing. */
    QUEN_EXPORT static bool requestCallback();

    /**
     * Puts a request into the table of outstanding requests, before it is submitted.
     *
     * A number that is outstanding already keeps its first request; the new one is then neither
     * recorded nor deleted.
     *
     * @param request owned by the table once recorded
     * @param callback the client's, null when `process` waits for the result itself
     */
    QUEN_EXPORT void recordISPRequest(
            OfflineRequest* request,
            android::sp<vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback>
                    callback);

    /** Blocks until no request is outstanding, or gives up; see ClientCallback. */
    QUEN_EXPORT void waitForRequestDrained();

  private:
    friend class quenOfflineDevice;  // hands mCallback to the ISP device, touches mReserved
    friend class HalInterfacePeer;   // the tests' way to the members below

    bool (*mRequestCB)();  // guarded by mLock
    android::sp<ClientCallback> mCallback;
    pthread_mutex_t mLock;                    // guards mRequestCB, nothing else
    android::sp<android::RefBase> mReserved;  // always null
};

/**
 * Receives the ISP device's results, and keeps the table of requests that wait for one.
 *
 * The client's thread inserts into the table (recordISPRequest) and the ISP HAL's threads look up
 * and erase (processResult), both without a lock, which is kept so: an insert or an erase that
 * meets an erase is a data race. A synchronous `process` is released a moment before its request
 * goes. mDrainLock covers only the test for an empty table and the wait or signal that goes with
 * it.
 */
class HalInterface::ClientCallback
    : public vendor::mediatek::hardware::camera::isphal::V1_0::ICallback,
      public android::hardware::hidl_death_recipient {
  public:
    using ISPResult = vendor::mediatek::hardware::camera::isphal::V1_0::ISPResult;

    ClientCallback(android::wp<HalInterface> const& parent,
                   android::sp<NSCam::IMetadataConverter> const& converter);

    /** Deletes the records that are still in the table: nobody answers them any more. */
    QUEN_EXPORT ~ClientCallback() override;

    QUEN_EXPORT android::hardware::Return<void> processResult(ISPResult const& result) override;
    QUEN_EXPORT android::hardware::Return<void> processEarlyResult(
            ISPResult const& result) override;

    /**
     * The ISP module died: the parent lets go of this object. Requests stay outstanding; nothing
     * may be recorded or drained through the parent from then on.
     */
    QUEN_EXPORT void serviceDied(uint64_t cookie,
                                 android::wp<android::hidl::base::V1_0::IBase> const& who) override;

    /**
     * Blocks until the table is empty. Gives up when two seconds pass without a signal: the table
     * is then emptied and its requests are abandoned, not deleted.
     */
    void waitForRequestDrained();

  private:
    friend class HalInterface;      // records requests
    friend class HalInterfacePeer;  // the tests' way to the operations below

    using IspStatus = vendor::mediatek::hardware::camera::isphal::V1_0::Status;
    using ClientStatus = vendor::quen::hardware::camera::quenpostproc::V1_0::Status;
    using IQuenPostProcCallback =
            vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;

    /** An outstanding request and who is to be told of its result. */
    struct offlineRequestCallback {
        OfflineRequest* request;                      // owned
        android::sp<IQuenPostProcCallback> callback;  // null: `process` waits for the result
    };

    // ResultDispatch.cpp
    static ClientStatus convertStatus(IspStatus status);
    void deliverToClient(ISPResult const& result, offlineRequestCallback const& entry,
                         char const* stage);

    // IspMetadataDecoder.cpp
    bool convertToIMetadata(void const* data, NSCam::IMetadata& out);

    std::unordered_map<uint32_t, offlineRequestCallback> mOfflineRequestCallback;
    android::wp<HalInterface> mParent;
    android::sp<NSCam::IMetadataConverter> mMetadataConverter;
    pthread_mutex_t mDrainLock;
    pthread_cond_t mDrainCond;
    timeval mDrainStart;      // scratch of one wait cycle
    timespec mDrainDeadline;  // scratch of one wait cycle
};
