#pragma once

#include <hidl/HidlSupport.h>
#include <nscam/IMetadataConverter.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>

#include "quenCommon/Export.h"
#include "quenCommon/Mutex.h"
#include "quenOfflineDevice/OfflineRequest.h"
#include "quenOfflineDevice/RequestTable.h"

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
     * recorded nor deleted. Nor is one that comes after the ISP module's death, in the hardened
     * build.
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
    friend class quenOfflineDevice;  // records, withdraws, hands the callback to the ISP device
    friend class HalInterfacePeer;   // the tests' way to the members below

    android::sp<ClientCallback> callback() const QUEN_EXCLUDES(mCallbackLock);
    android::sp<ClientCallback> takeCallback() QUEN_EXCLUDES(mCallbackLock);
    quen::RequestTable::Insertion record(
            OfflineRequest* request,
            android::sp<vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback>
                    callback);
    void withdraw(uint32_t requestNumber, OfflineRequest* request);

    bool (*mRequestCB)() QUEN_GUARDED_BY(mLock);
    android::sp<ClientCallback> mCallback QUEN_GUARDED_BY(mCallbackLock);
    quen::Mutex mLock;                        // guards mRequestCB, nothing else
    android::sp<android::RefBase> mReserved;  // always null
    mutable quen::Mutex mCallbackLock;        // guards mCallback; nothing is called with it held
};
