#pragma once

#include <memory>
#include <string>

#include <vendor/mediatek/hardware/camera/isphal/1.0/ICallback.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IDevice.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "host/base/Mutex.h"
#include "host/isp/device/IspConfiguration.h"
#include "host/isp/device/SoftwareIspOptions.h"
#include "host/isp/device/WorkQueue.h"

namespace quen::host::isp {

/**
 * The offline ISP, in software.
 *
 * Requests are checked when they are submitted, and refused at once when they are invalid (see
 * readRequest). Accepted ones are executed in order on the device's thread, which delivers each
 * result, no lock held; a failure becomes the status of the result (see processRequest). Before a
 * configuration and after the close every request is refused with REQUEST_ERROR, and so is a
 * configuration after the close.
 *
 * A configuration applies to the requests after it; those in the queue keep theirs, callback
 * included. Thread-safe; a result callback may call the device. The destructor closes it.
 */
class SoftwareIspDevice : public vendor::mediatek::hardware::camera::isphal::V1_0::IDevice {
  public:
    using ICallback = vendor::mediatek::hardware::camera::isphal::V1_0::ICallback;
    using ISPRequest = vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest;
    using ISPStreamConfiguration =
            vendor::mediatek::hardware::camera::isphal::V1_0::ISPStreamConfiguration;
    using Status = vendor::mediatek::hardware::camera::isphal::V1_0::Status;

    explicit SoftwareIspDevice(SoftwareIspOptions const& options);

    /** See readConfiguration; on ILLEGAL_ARGUMENT the previous configuration stays in place. */
    ::android::hardware::Return<Status> configureISPDevice(
            const ISPStreamConfiguration& config,
            const ::android::sp<ICallback>& callback) override;

    /** Takes all of the requests or none of them. */
    ::android::hardware::Return<Status> processISPRequest(
            const ::android::hardware::hidl_vec<ISPRequest>& requests) override;

    /**
     * Has the device's thread answer every request not yet started with REQUEST_ERROR; the running
     * one finishes. Waits for neither.
     */
    ::android::hardware::Return<Status> flush() override;

    /**
     * Flushes, and waits until every request is answered. Called from a result callback, it answers
     * the queued requests itself; no result follows that one.
     */
    ::android::hardware::Return<Status> closeISPDevice() override;

  private:
    Status configure(ISPStreamConfiguration const& config, ::android::sp<ICallback> const& callback,
                     std::string& problem);
    Status submit(::android::hardware::hidl_vec<ISPRequest> const& requests);
    std::shared_ptr<IspConfiguration const> configuration();

    SoftwareIspOptions const mOptions;
    Mutex mLock;
    /** Null before a configuration. */
    std::shared_ptr<IspConfiguration const> mConfiguration HOST_GUARDED_BY(mLock);
    bool mClosed HOST_GUARDED_BY(mLock) = false;
    WorkQueue mQueue;
};

}  // namespace quen::host::isp
