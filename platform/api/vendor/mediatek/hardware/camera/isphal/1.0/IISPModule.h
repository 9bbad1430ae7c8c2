#pragma once

#include <functional>
#include <string>

#include <android/hidl/base/1.0/IBase.h>
#include <utils/Errors.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IDevice.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

namespace vendor::mediatek::hardware::camera::isphal::V1_0 {

/** The service that opens offline ISP devices. */
struct IISPModule : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    using openISPDevice_cb =
            std::function<void(Status status, const ::android::sp<IDevice>& device)>;

    /** Opens a device; `cb` is called once, before the call returns. */
    virtual ::android::hardware::Return<void> openISPDevice(openISPDevice_cb cb) = 0;

    /** Finds the service; null when no such instance is registered. */
    static ::android::sp<IISPModule> getService(const std::string& serviceName = "default",
                                                bool getStub = false);

    /** Registers this object as the instance `serviceName`, in place of any earlier one. */
    ::android::status_t registerAsService(const std::string& serviceName = "default");
};

}  // namespace vendor::mediatek::hardware::camera::isphal::V1_0
