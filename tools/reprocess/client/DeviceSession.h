#pragma once

#include <cstdint>

#include "client/RequestMetadata.h"
#include "client/ResultWaiter.h"
#include "quenRecorder/RecordedDevice.h"
#include "report/Stopwatch.h"

namespace quen::reprocess {

/**
 * One device object of the library, for one request with one input and one output: created with the
 * streams of the request's buffers, destroyed with the object.
 *
 * Each stage of a picture has a session of its own: a request may only be submitted once the
 * previous result is completely handled, which destroying the device guarantees.
 */
class DeviceSession {
  public:
    /**
     * @param input, output kept for the request; the buffers must outlive the session
     * @param metadata of the request, the session metadata is taken from it; must outlive the
     * session; the library overwrites the 3A index in it
     * @param watch measures create, process, wait and destroy
     */
    DeviceSession(ImageBuffer const& input, ImageBuffer const& output,
                  RequestMetadata const& metadata, Stopwatch& watch);
    ~DeviceSession();
    DeviceSession(DeviceSession const&) = delete;
    DeviceSession& operator=(DeviceSession const&) = delete;

    /** Submits the request with a callback of the session's own. */
    void submit(int32_t frameNumber);

    /** The result that the callback got; none after the time-out, when the device is flushed. */
    std::optional<ClientResult> wait(int timeoutSeconds);

    /**
     * Submits the request without a callback; the library waits.
     *
     * @return the size of the JPEG, or what `quenOfflineDevice::process` returns otherwise
     */
    int processAndWait(int32_t frameNumber);

  private:
    PostProcessParams request(int32_t frameNumber);

    ImageBuffer mInput;
    ImageBuffer mOutput;
    RequestMetadata const& mMetadata;
    Stopwatch& mWatch;
    android::sp<ResultWaiter> const mWaiter = new ResultWaiter;
    recorder::RecordedDevice mDevice;
};

}  // namespace quen::reprocess
