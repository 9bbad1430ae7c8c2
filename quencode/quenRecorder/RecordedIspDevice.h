#pragma once

#include <cstdint>
#include <memory>

#include <utils/StrongPointer.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IDevice.h>

#include "quenRecorder/Recorder.h"

namespace quen::recorder {

class SubmittedOutputs;

/** A device of the ISP: records what the library says to it, and passes it on. Any thread. */
class RecordedIspDevice : public vendor::mediatek::hardware::camera::isphal::V1_0::IDevice {
  public:
    using ICallback = vendor::mediatek::hardware::camera::isphal::V1_0::ICallback;
    using IDevice = vendor::mediatek::hardware::camera::isphal::V1_0::IDevice;
    using ISPRequest = vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest;
    using ISPStreamConfiguration =
            vendor::mediatek::hardware::camera::isphal::V1_0::ISPStreamConfiguration;
    using StatusReturn =
            android::hardware::Return<vendor::mediatek::hardware::camera::isphal::V1_0::Status>;

    /** @param session of the device object that has opened the device, 0 for none */
    RecordedIspDevice(std::shared_ptr<Recorder> recorder, uint32_t session,
                      android::sp<IDevice> const& device);
    ~RecordedIspDevice() override;

    StatusReturn configureISPDevice(ISPStreamConfiguration const& config,
                                    android::sp<ICallback> const& callback) override;
    StatusReturn processISPRequest(
            android::hardware::hidl_vec<ISPRequest> const& requests) override;
    StatusReturn flush() override;
    StatusReturn closeISPDevice() override;

  private:
    template <typename Forward>
    StatusReturn record(recording::Crossing& crossing, Forward const& forward);

    std::shared_ptr<Recorder> const mRecorder;
    uint32_t const mSession;
    android::sp<IDevice> const mDevice;
    std::shared_ptr<SubmittedOutputs> const mOutputs;  // shared with the device's result receivers
};

}  // namespace quen::recorder
