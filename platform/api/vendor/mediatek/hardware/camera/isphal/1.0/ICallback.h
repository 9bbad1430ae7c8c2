#pragma once

#include <android/hidl/base/1.0/IBase.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

namespace vendor::mediatek::hardware::camera::isphal::V1_0 {

/**
 * Receives the results of the requests of an ISP device.
 *
 * Called on threads of the ISP HAL. The software ISP delivers one result at a time.
 */
struct ICallback : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    /** Receives the final result of a request, exactly once per request. */
    virtual ::android::hardware::Return<void> processResult(const ISPResult& result) = 0;

    /** Receives an early notice of a request whose final result is still to come. */
    virtual ::android::hardware::Return<void> processEarlyResult(const ISPResult& result) = 0;
};

}  // namespace vendor::mediatek::hardware::camera::isphal::V1_0
