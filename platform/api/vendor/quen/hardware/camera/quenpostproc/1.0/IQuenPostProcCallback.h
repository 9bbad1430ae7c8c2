#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/types.h>

namespace vendor::quen::hardware::camera::quenpostproc::V1_0 {

/**
 * Notifies a client of the post-processing service of the results of its requests.
 *
 * Called on a thread of the ISP HAL: the metadata first, then the end of the request.
 */
struct IQuenPostProcCallback : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    /** The request has ended. */
    virtual ::android::hardware::Return<void> notifyRequestResult(uint32_t requestNumber,
                                                                  Status status) = 0;

    /**
     * The result's metadata.
     *
     * @param metadata a flat `camera_metadata` buffer; valid during the call only
     */
    virtual ::android::hardware::Return<void> notifyResultMetadata(
            uint32_t requestNumber, const ::android::hardware::hidl_vec<uint8_t>& metadata,
            Status status) = 0;
};

}  // namespace vendor::quen::hardware::camera::quenpostproc::V1_0
