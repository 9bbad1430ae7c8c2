#pragma once

#include <memory>

#include <utils/Errors.h>
#include <utils/StrongPointer.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "quenRecorder/Recorder.h"

namespace quen::recorder {

/**
 * Stands between the library and the ISP's module: opens the module's devices, and records what is
 * said to them and what they and their results say. Any thread.
 */
class RecordedModule : public vendor::mediatek::hardware::camera::isphal::V1_0::IISPModule {
  public:
    using IISPModule = vendor::mediatek::hardware::camera::isphal::V1_0::IISPModule;

    RecordedModule(std::shared_ptr<Recorder> recorder, android::sp<IISPModule> const& module);

    android::hardware::Return<void> openISPDevice(openISPDevice_cb cb) override;

  private:
    std::shared_ptr<Recorder> const mRecorder;
    android::sp<IISPModule> const mModule;
};

/**
 * Registers a RecordedModule as the module service that the library looks up, in front of the one
 * that is registered now.
 *
 * @return NAME_NOT_FOUND when there is none, or why it could not be registered
 */
android::status_t recordIsp(std::shared_ptr<Recorder> const& recorder);

}  // namespace quen::recorder
