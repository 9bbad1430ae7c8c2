#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <quenOfflineDevice/quenOfflineDevice.h>

#include "quenRecorder/Recorder.h"

namespace quen::recorder {

/**
 * Stands between a client and a device object of the library: forwards every call, and records it
 * with what comes back, the notifications of the client's callbacks included. Used in the place of
 * a `quenOfflineDevice`, which documents the operations; threads as there.
 *
 * Records to the recorder that is current when the object is made; only forwards without one.
 */
class RecordedDevice {
  public:
    RecordedDevice();
    ~RecordedDevice();
    RecordedDevice(RecordedDevice const&) = delete;
    RecordedDevice& operator=(RecordedDevice const&) = delete;

    void create(SessionParams* params);
    void config(std::vector<StreamConfig> const& in, std::vector<StreamConfig> const& out,
                camera_metadata const* meta);
    int process(
            PostProcessParams const* params,
            android::sp<vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback>
                    callback);
    void flush();
    void destroy();
    void setOfflineCallback(
            android::sp<vendor::mediatek::hardware::camera::isphal::V1_0::ICallback> const&
                    callback);

  private:
    template <typename Forward>
    void record(recording::Crossing& call, Forward const& forward);

    std::shared_ptr<Recorder> const mRecorder;  // may be null
    uint32_t const mSession;
    std::optional<quenOfflineDevice> mDevice;  // there but for the construction and the end
};

}  // namespace quen::recorder
