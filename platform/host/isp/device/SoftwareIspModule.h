#pragma once

#include <utils/Errors.h>
#include <utils/StrongPointer.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "host/isp/device/SoftwareIspOptions.h"

namespace quen::host::isp {

/** The module service of the software ISP. Each call opens a new device. Thread-safe. */
class SoftwareIspModule : public vendor::mediatek::hardware::camera::isphal::V1_0::IISPModule {
  public:
    explicit SoftwareIspModule(SoftwareIspOptions options = {});

    ::android::hardware::Return<void> openISPDevice(openISPDevice_cb cb) override;

  private:
    SoftwareIspOptions const mOptions;
};

/**
 * Registers a software ISP as the module service "internal/0", in place of any earlier one.
 *
 * @return OK, or why it could not be registered
 */
::android::status_t registerSoftwareIsp(SoftwareIspOptions options = {});

}  // namespace quen::host::isp
