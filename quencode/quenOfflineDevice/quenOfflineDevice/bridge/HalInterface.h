#pragma once

#include <hidl/HidlSupport.h>
#include <nscam/IMetadataConverter.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>

#include "quenCommon/Export.h"
#include "quenCommon/Mutex.h"
#include "quenOfflineDevice/bridge/OfflineRequest.h"
#include "quenOfflineDevice/bridge/RequestTable.h"

/**
 * The bridge between a device object and the ISP HAL: owns the ClientCallback that the ISP device
 * delivers results to, and passes requests and waits on to it.
 */
class HalInterface : public virtual android::RefBase {
  public:
    class ClientCallback;  // ClientCallback.h

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
     * recorded nor deleted. In the hardened build a request after the ISP module's death is not
     * recorded either.
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

    /** The callback object; null after the ISP module's death. Any thread. */
    android::sp<ClientCallback> callback() const QUEN_EXCLUDES(mCallbackLock);

    /** As recordISPRequest, and returns what became of the request. The client's thread. */
    quen::RequestTable::Insertion record(
            OfflineRequest* request,
            android::sp<vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback>
                    callback);

    /**
     * Takes back a request that the ISP device refused and destroys it, unless a result or the
     * module's death has already done so. The client's thread.
     */
    void withdraw(uint32_t requestNumber, OfflineRequest* request);

    /** A copy of the reserved reference, which is always null. */
    android::sp<android::RefBase> reserved() const { return mReserved; }

  private:
    android::sp<ClientCallback> takeCallback() QUEN_EXCLUDES(mCallbackLock);

    bool (*mRequestCB)() QUEN_GUARDED_BY(mLock);
    android::sp<ClientCallback> mCallback QUEN_GUARDED_BY(mCallbackLock);
    quen::Mutex mLock;
    android::sp<android::RefBase> mReserved;  // always null
    mutable quen::Mutex mCallbackLock;        // nothing is called with it held
};
