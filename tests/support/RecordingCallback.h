#pragma once

#include <condition_variable>
#include <future>
#include <mutex>
#include <vector>

#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>

namespace quentest {

namespace postproc = vendor::quen::hardware::camera::quenpostproc::V1_0;

/** A client that remembers what it was told, in order, and can be waited for. */
class RecordingCallback : public postproc::IQuenPostProcCallback {
  public:
    /** One call: the metadata's bytes, or the end of the request when there are none. */
    struct Call {
        bool isMetadata;
        uint32_t requestNumber;
        uint32_t status;
        std::vector<uint8_t> metadata;
    };

    android::hardware::Return<void> notifyRequestResult(uint32_t requestNumber,
                                                        postproc::Status status) override {
        return add({false, requestNumber, static_cast<uint32_t>(status), {}});
    }
    android::hardware::Return<void> notifyResultMetadata(
            uint32_t requestNumber, android::hardware::hidl_vec<uint8_t> const& metadata,
            postproc::Status status) override {
        return add({true,
                    requestNumber,
                    static_cast<uint32_t>(status),
                    {metadata.begin(), metadata.end()}});
    }

    /** Waits for `count` calls in all; false after ten seconds. */
    bool waitFor(size_t count) {
        std::unique_lock<std::mutex> lock(mLock);
        return mArrived.wait_for(lock, std::chrono::seconds(10),
                                 [&] { return mCalls.size() >= count; });
    }

    std::vector<Call> calls() {
        std::lock_guard<std::mutex> lock(mLock);
        return mCalls;
    }

  private:
    android::hardware::Return<void> add(Call call) {
        std::lock_guard<std::mutex> lock(mLock);
        mCalls.push_back(std::move(call));
        mArrived.notify_all();
        return android::hardware::Void();
    }

    std::mutex mLock;
    std::condition_variable mArrived;
    std::vector<Call> mCalls;  // guarded by mLock
};

/** A client that keeps the ISP's thread until it is let go. */
class SlowClient : public RecordingCallback {
  public:
    android::hardware::Return<void> notifyRequestResult(uint32_t requestNumber,
                                                        postproc::Status status) override {
        mTold.set_value();
        mLetGo.get_future().wait();
        return RecordingCallback::notifyRequestResult(requestNumber, status);
    }
    void waitUntilTold() { mTold.get_future().wait(); }
    void letGo() { mLetGo.set_value(); }

  private:
    std::promise<void> mTold;
    std::promise<void> mLetGo;
};

}  // namespace quentest
