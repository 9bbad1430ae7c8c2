#pragma once

#include <cstdint>

#include <quenOfflineDevice/quenOfflineDevice.h>

#include "client/RequestMetadata.h"
#include "client/ResultWaiter.h"
#include "report/Stopwatch.h"

namespace quen::reprocess {

/**
 * One device object of the library, for one request with one input and one output: created with the
 * streams of the request's own buffers, destroyed with the object.
 *
 * The stages of a picture have a session each: a request may only be submitted when the result
 * before it has been handled to the end, and destroying the device is what says so.
 */
class DeviceSession {
  public:
    /**
     * @param input, output kept for the request; the buffers must outlive the session
     * @param metadata the request's, which the session's is taken from; must outlive the session;
     * the library changes the 3A index in it
     * @param watch takes the times of create, process, wait and destroy
     */
    DeviceSession(ImageBuffer const& input, ImageBuffer const& output,
                  RequestMetadata const& metadata, Stopwatch& watch);
    ~DeviceSession();
    DeviceSession(DeviceSession const&) = delete;
    DeviceSession& operator=(DeviceSession const&) = delete;

    /** Submits the request with a callback of the session's own. */
    void submit(int32_t frameNumber);

    /** What the callback is told; none, and the device flushed, when nothing comes in time. */
    std::optional<ClientResult> wait(int timeoutSeconds);

    /**
     * Submits the request without a callback; the library waits.
     *
     * @return the JPEG's size, or what else `quenOfflineDevice::process` answers
     */
    int processAndWait(int32_t frameNumber);

  private:
    PostProcessParams request(int32_t frameNumber);

    ImageBuffer mInput;
    ImageBuffer mOutput;
    RequestMetadata const& mMetadata;
    Stopwatch& mWatch;
    android::sp<ResultWaiter> const mWaiter = new ResultWaiter;
    quenOfflineDevice mDevice;
};

}  // namespace quen::reprocess
