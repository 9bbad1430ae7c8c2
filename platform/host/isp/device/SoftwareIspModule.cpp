#include "host/isp/device/SoftwareIspModule.h"

#include <utility>

#include "host/isp/device/SoftwareIspDevice.h"

using android::sp;
using android::hardware::Return;
using vendor::mediatek::hardware::camera::isphal::V1_0::Status;

namespace quen::host::isp {

namespace {

constexpr char kInstance[] = "internal/0";

}  // namespace

SoftwareIspModule::SoftwareIspModule(SoftwareIspOptions options) : mOptions(std::move(options)) {}

Return<void> SoftwareIspModule::openISPDevice(openISPDevice_cb cb) {
    cb(Status::OK, sp<SoftwareIspDevice>(new SoftwareIspDevice(mOptions)));
    return android::hardware::Void();
}

android::status_t registerSoftwareIsp(SoftwareIspOptions options) {
    sp<SoftwareIspModule> const module = new SoftwareIspModule(std::move(options));
    return module->registerAsService(kInstance);
}

}  // namespace quen::host::isp

/** For the platform, which loads this library where nobody registered a module. */
extern "C" vendor::mediatek::hardware::camera::isphal::V1_0::IISPModule* quenSoftwareIspModule() {
    return new quen::host::isp::SoftwareIspModule;
}
