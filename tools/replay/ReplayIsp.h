#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include <utils/StrongPointer.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/ICallback.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "ThreadReplay.h"
#include "host/base/Mutex.h"
#include "host/isp/device/ClientThread.h"
#include "quenRecorder/SubmittedOutputs.h"

namespace quen::replay {

/**
 * The ISP of a recording: answers what it answered, and delivers its results. Any thread of the
 * replay.
 */
class ReplayIsp {
  public:
    using ICallback = vendor::mediatek::hardware::camera::isphal::V1_0::ICallback;
    using IISPModule = vendor::mediatek::hardware::camera::isphal::V1_0::IISPModule;

    ReplayIsp() = default;
    ReplayIsp(ReplayIsp const&) = delete;
    ReplayIsp& operator=(ReplayIsp const&) = delete;

    /** Registers the module service that opens its devices; the object must outlive them. */
    void install();

    /** Makes a recorded call of the ISP. */
    void perform(ThreadReplay& thread, size_t index);

    /** The calling thread will wait for the result of what it submits now, or will not. */
    void setWaits(bool waits);

    /** Lets go of what the library gave to a session's devices. */
    void forget(uint32_t session);

  private:
    class Device;
    class Module;

    /** What a device object of the library has told its devices. */
    struct Session {
        android::sp<ICallback> callback;
        recorder::SubmittedOutputs outputs;
        std::multimap<uint32_t, host::isp::ClientThread> waiting;  // by request number
    };

    std::shared_ptr<Session> session(uint32_t number);
    std::optional<host::isp::ClientThread> takeWaiting(Session& session, uint32_t number);
    void leaveOutputs(Session& session, recording::ResultCall const& call);

    host::Mutex mLock;
    // The sessions' callbacks and waiting threads are guarded by mLock too.
    std::map<uint32_t, std::shared_ptr<Session>> mSessions HOST_GUARDED_BY(mLock);
};

}  // namespace quen::replay
