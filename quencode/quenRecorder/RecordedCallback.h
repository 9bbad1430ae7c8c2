#pragma once

#include <cstdint>
#include <memory>

#include <utils/StrongPointer.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>

#include "quenRecorder/Recorder.h"
#include "recording.pb.h"

namespace quen::recorder {

/** A client's callback for one request: records each notification and passes it on. Any thread. */
class RecordedCallback
    : public vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback {
  public:
    using IQuenPostProcCallback =
            vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;
    using Status = vendor::quen::hardware::camera::quenpostproc::V1_0::Status;

    /** @param processCall the call that gives the callback to the library */
    RecordedCallback(std::shared_ptr<Recorder> recorder, uint32_t session, uint64_t processCall,
                     android::sp<IQuenPostProcCallback> const& client);

    android::hardware::Return<void> notifyRequestResult(uint32_t requestNumber,
                                                        Status status) override;
    android::hardware::Return<void> notifyResultMetadata(
            uint32_t requestNumber, android::hardware::hidl_vec<uint8_t> const& metadata,
            Status status) override;

  private:
    template <typename Forward>
    android::hardware::Return<void> record(recording::NotifyCall::Kind kind, uint32_t number,
                                           Status status,
                                           android::hardware::hidl_vec<uint8_t> const* metadata,
                                           Forward const& forward);

    std::shared_ptr<Recorder> const mRecorder;
    uint32_t const mSession;
    uint64_t const mProcessCall;
    android::sp<IQuenPostProcCallback> const mClient;
};

}  // namespace quen::recorder
