#pragma once

#include <chrono>
#include <future>

#include <hidl/HidlSupport.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>

/** Hears of the end of one request. Called on a thread of the ISP, waited for on the client's. */
class ResultListener
    : public vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback {
  public:
    using Status = vendor::quen::hardware::camera::quenpostproc::V1_0::Status;

    /** Whether the request succeeds within a time; a refused one never gets a result. */
    bool succeedsWithin(std::chrono::seconds limit) {
        std::future<Status> ended = mEnded.get_future();
        return ended.wait_for(limit) == std::future_status::ready && ended.get() == Status::OK;
    }

    android::hardware::Return<void> notifyRequestResult(uint32_t /*requestNumber*/,
                                                        Status status) override {
        mEnded.set_value(status);
        return android::hardware::Void();
    }

    /** The bytes are the library's and end with this call; this client has no use for them. */
    android::hardware::Return<void> notifyResultMetadata(
            uint32_t /*requestNumber*/, android::hardware::hidl_vec<uint8_t> const& /*metadata*/,
            Status /*status*/) override {
        return android::hardware::Void();
    }

  private:
    std::promise<Status> mEnded;
};
