#pragma once

#include <pthread.h>

#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include <quenOfflineDevice/quenOfflineDevice.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "host/base/Mutex.h"
#include "host/threea/ThreeAStore.h"
#include "metadata/Requests.h"
#include "support/Section.h"

namespace quenbench {

namespace isphal = vendor::mediatek::hardware::camera::isphal::V1_0;
using Client =
        android::sp<vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback>;

/** A client's callback that does nothing. */
Client makeClient();

/** A thread that answers with a delay, so that the client already waits. */
class Responder {
  public:
    /** @param prepare called before the delay, `answer` after it; both on the thread */
    Responder(std::function<void()> prepare, std::function<void()> answer);
    ~Responder();

    void ask();

    /** When the last answer started. Read once the answer has arrived. */
    Clock::time_point answeredAt() const { return mAnsweredAt; }

  private:
    bool waitUntilAsked();
    void loop();

    std::function<void()> const mPrepare;
    std::function<void()> const mAnswer;
    quen::host::Mutex mLock;
    quen::host::Condition mChanged;
    bool mAsked HOST_GUARDED_BY(mLock) = false;
    bool mEnded HOST_GUARDED_BY(mLock) = false;
    Clock::time_point mAnsweredAt;
    std::thread mThread;
};

/** When the stand-in ISP answers a request. */
enum class Answering {
    AtOnce,      ///< within the submission, on the client's thread
    WhenAsked,   ///< at a call of `answer`
    FromThread,  ///< on a Responder's thread, once the client waits
};

/** An ISP device that only answers requests, with 20 entries. */
class BenchIsp : public isphal::IDevice {
  public:
    using StatusReturn = android::hardware::Return<isphal::Status>;

    explicit BenchIsp(Answering answering);

    StatusReturn configureISPDevice(isphal::ISPStreamConfiguration const& config,
                                    android::sp<isphal::ICallback> const& callback) override;
    StatusReturn processISPRequest(
            android::hardware::hidl_vec<isphal::ISPRequest> const& requests) override;
    StatusReturn flush() override { return isphal::Status::OK; }
    StatusReturn closeISPDevice() override;

    void answer(uint32_t number);
    Clock::time_point answeredAt() const { return mResponder->answeredAt(); }

    /** Fills the tuning buffers of outputs from now on, all 2 MB. */
    void fillTuningBuffers() { mFillsTuning = true; }

  private:
    void leaveJpeg();

    Answering const mAnswering;
    bool mFillsTuning = false;
    std::vector<uint8_t> mResultBytes;
    isphal::ISPResult mResult;
    android::sp<isphal::ICallback> mCallback;
    isphal::ISPRequest const* mPending = nullptr;  // of the waiting client
    std::unique_ptr<Responder> mResponder;
};

/** The kind of a session's requests. */
enum class RequestKind {
    RawToYuv,        ///< tuning data in 3A buffers; the client's buffers pass through
    RawToYuvTuning,  ///< tuning data in a graphic buffer, brought back in the metadata
    YuvToJpeg,       ///< the picture goes into a device buffer, the JPEG comes from one
    Nv21ToJpeg,      ///< the picture passes through; no buffer is held until the answer
};

/**
 * A client, its device object and the ISP behind it. Sessions share the 3A buffers of the process:
 * several at a time must be of one kind, and end in reverse order.
 */
class BenchSession {
  public:
    BenchSession(RequestKind kind, Answering answering, RequestShape const& shape);
    ~BenchSession();
    BenchSession(BenchSession const&) = delete;
    BenchSession& operator=(BenchSession const&) = delete;

    /** Submits the next request. Returns its number. */
    uint32_t submit(Client const& client);

    BenchIsp& isp() { return *mIsp; }

  private:
    struct Memory;

    std::vector<std::unique_ptr<Memory>> mMemory;
    std::shared_ptr<quen::host::IThreeAStore> mThreeABefore;
    ClientMetadata const mSettings;
    ImageBuffer mInput;
    ImageBuffer mOutput;
    PostProcessParams mParams;
    android::sp<BenchIsp> const mIsp;
    quenOfflineDevice mDevice;
};

}  // namespace quenbench
