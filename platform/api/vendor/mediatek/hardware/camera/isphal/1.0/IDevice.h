#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/ICallback.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

namespace vendor::mediatek::hardware::camera::isphal::V1_0 {

/** One offline ISP: develops or encodes images that were captured already. */
struct IDevice : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    /**
     * Replaces the active streams and names the receiver of results.
     *
     * @param config streams and session settings; read during the call only
     * @param callback receiver of results from now on; held until the next call or the close
     */
    virtual ::android::hardware::Return<Status> configureISPDevice(
            const ISPStreamConfiguration& config, const ::android::sp<ICallback>& callback) = 0;

    /**
     * Accepts requests. Delivers a result for each through ICallback::processResult.
     *
     * @param requests the caller owns the handles in it; the device keeps clones of what it needs
     */
    virtual ::android::hardware::Return<Status> processISPRequest(
            const ::android::hardware::hidl_vec<ISPRequest>& requests) = 0;

    /** Delivers the results of all outstanding requests as soon as it can. */
    virtual ::android::hardware::Return<Status> flush() = 0;

    /** Closes the device; no result arrives once the call has returned. */
    virtual ::android::hardware::Return<Status> closeISPDevice() = 0;
};

}  // namespace vendor::mediatek::hardware::camera::isphal::V1_0
