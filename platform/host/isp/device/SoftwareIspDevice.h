#pragma once

#include <memory>

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
 * Requests are checked when they are submitted and refused at once when something is wrong with
 * them (see readRequest); accepted ones are done in order on one thread of the device's, which
 * delivers each result, no lock held. What goes wrong meanwhile is the result's status (see
 * processRequest). Before a configuration and after the close every request is refused with
 * REQUEST_ERROR, and so is a configuration after the close.
 *
 * A configuration holds for the requests after it; those in the queue keep theirs, callback
 * included. Any thread may call, the device's own within a result included. The destructor closes.
 */
class SoftwareIspDevice : public vendor::mediatek::hardware::camera::isphal::V1_0::IDevice {
  public:
    using ICallback = vendor::mediatek::hardware::camera::isphal::V1_0::ICallback;
    using ISPRequest = vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest;
    using ISPStreamConfiguration =
            vendor::mediatek::hardware::camera::isphal::V1_0::ISPStreamConfiguration;
    using Status = vendor::mediatek::hardware::camera::isphal::V1_0::Status;

    explicit SoftwareIspDevice(SoftwareIspOptions const& options);

    /** ILLEGAL_ARGUMENT leaves the configuration before in place; see readConfiguration. */
    ::android::hardware::Return<Status> configureISPDevice(
            const ISPStreamConfiguration& config,
            const ::android::sp<ICallback>& callback) override;

    /** Takes all of the requests or none of them. */
    ::android::hardware::Return<Status> processISPRequest(
            const ::android::hardware::hidl_vec<ISPRequest>& requests) override;

    /**
     * Has every request that is not begun answered with REQUEST_ERROR, by the device's thread; the
     * one in work is finished. Does not wait for either.
     */
    ::android::hardware::Return<Status> flush() override;

    /**
     * Flushes, and waits until everything is answered. Called within a result, it answers the queue
     * itself, and the result is the last one.
     */
    ::android::hardware::Return<Status> closeISPDevice() override;

  private:
    Status configure(ISPStreamConfiguration const& config,
                     ::android::sp<ICallback> const& callback);
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
