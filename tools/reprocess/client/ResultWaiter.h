#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include <system/camera_metadata.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>

#include "host/base/Mutex.h"

namespace quen::reprocess {

/** The result of a request, as the library reported it. */
struct ClientResult {
    struct Free {
        void operator()(camera_metadata* data) const { free_camera_metadata(data); }
    };

    vendor::quen::hardware::camera::quenpostproc::V1_0::Status status{};
    std::unique_ptr<camera_metadata, Free> metadata;  ///< null when none came
};

/** The client's callback: keeps the one result that it waits for. Thread-safe. */
class ResultWaiter
    : public vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback {
  public:
    using Status = vendor::quen::hardware::camera::quenpostproc::V1_0::Status;

    /** Waits for the result; none when the time is up first. */
    std::optional<ClientResult> waitFor(std::chrono::seconds limit);

    android::hardware::Return<void> notifyRequestResult(uint32_t requestNumber,
                                                        Status status) override;
    android::hardware::Return<void> notifyResultMetadata(
            uint32_t requestNumber, android::hardware::hidl_vec<uint8_t> const& metadata,
            Status status) override;

  private:
    host::Mutex mLock;
    host::Condition mEnded;
    ClientResult mResult HOST_GUARDED_BY(mLock);
    bool mHasEnded HOST_GUARDED_BY(mLock) = false;
};

}  // namespace quen::reprocess
