#include <vendor/mediatek/hardware/camera/isphal/1.0/ICallback.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IDevice.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "host/hidl/ServiceRegistry.h"

namespace vendor::mediatek::hardware::camera::isphal::V1_0 {

const char* ICallback::descriptor("vendor.mediatek.hardware.camera.isphal@1.0::ICallback");
const char* IDevice::descriptor("vendor.mediatek.hardware.camera.isphal@1.0::IDevice");
const char* IISPModule::descriptor("vendor.mediatek.hardware.camera.isphal@1.0::IISPModule");

android::sp<IISPModule> IISPModule::getService(std::string const& serviceName, bool /*getStub*/) {
    return quen::host::obtainServiceOf<IISPModule>(serviceName);
}

android::status_t IISPModule::registerAsService(std::string const& serviceName) {
    return quen::host::registerService(descriptor, serviceName, this);
}

}  // namespace vendor::mediatek::hardware::camera::isphal::V1_0
