#pragma once

#include <cstdint>
#include <ctime>

#include "quenCommon/Mutex.h"
#include "quenOfflineDevice/ProcessState.h"

/**
 * The hand-over of a result to the `process` call that waits for it: one for the whole process.
 *
 * There is no flag that says a result has arrived: a signal sent before the wait has begun is lost,
 * any result's signal ends the wait, and so does its time-out, with the status that the latest
 * result left. In the hardened build each waiting call has a flag and a status of its own, by the
 * number of its request.
 *
 * gJpegMutex is never held together with another lock.
 */

namespace quen {

/** The waiting side of one synchronous request. Lives on the thread that waits. */
class JpegHandover {
  public:
    /**
     * In the hardened build the request's result is kept from here on: construct before recording.
     *
     * @param bridge identifies the device: request numbers are per device. Compared, never
     * dereferenced
     */
    JpegHandover(void const* bridge, uint32_t requestNumber) QUEN_EXCLUDES(gJpegMutex);
    ~JpegHandover() QUEN_EXCLUDES(gJpegMutex);

    JpegHandover(JpegHandover const&) = delete;
    JpegHandover& operator=(JpegHandover const&) = delete;

    /**
     * Sets the deadline: "vendor.debug.camera.jpeg.timeout" seconds (4 by default) from now. Called
     * without the lock.
     */
    void startTimeout() QUEN_EXCLUDES(gJpegMutex);

    /**
     * Waits for the result until the deadline.
     *
     * @return false when the time-out is known to have ended the wait: in the hardened build only
     */
    bool wait() QUEN_REQUIRES(gJpegMutex);

    /** Client status that `wait` ended with. */
    int32_t status() const QUEN_REQUIRES(gJpegMutex);

    /** Stores a result's client status and wakes who waits for it. A thread of the ISP HAL. */
    static void signal(void const* bridge, uint32_t requestNumber, int32_t clientStatus)
            QUEN_EXCLUDES(gJpegMutex);

  private:
    void const* const mBridge;
    uint32_t const mRequestNumber;
    timespec mDeadline = {};
    JpegHandover* mNext QUEN_GUARDED_BY(gJpegMutex) = nullptr;
    bool mHasResult QUEN_GUARDED_BY(gJpegMutex) = false;
    int32_t mStatus QUEN_GUARDED_BY(gJpegMutex) = 0;
};

}  // namespace quen
