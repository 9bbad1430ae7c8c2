#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/base/Properties.h"
#include "host/log/LogControl.h"
#include "support/Buffers.h"
#include "support/Graphics.h"
#include "support/Internals.h"
#include "support/StandInIsp.h"

namespace quentest {

/** How long a synchronous request waits for its result; null for the default. */
inline void setJpegTimeout(char const* seconds) {
    quen::host::setProperty("vendor.debug.camera.jpeg.timeout", seconds ? seconds : "");
}

/** A stream as a session configures it for a buffer of a request. */
inline StreamConfig streamOf(ImageBuffer const& buffer, bool isOutput) {
    return {buffer.streamId, buffer.format, static_cast<uint32_t>(buffer.width),
            static_cast<uint32_t>(buffer.height), isOutput};
}

/** A device object and what a client does with it, on the ISP that is registered when it is made.
 */
class ClientSession {
  public:
    using Client =
            android::sp<vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback>;

    /** What clients leave unsaid in their metadata is an error line a request: tests are quiet. */
    ClientSession() { quen::host::setLogLevel(quen::host::LogLevel::Silent); }

    void create(ImageBuffer const& input, std::vector<ImageBuffer> const& outputs,
                camera_metadata const* metadata = nullptr) {
        SessionParams params = {{streamOf(input, false)}, {}, metadata};
        for (ImageBuffer const& output : outputs) {
            params.output_streams.push_back(streamOf(output, true));
        }
        device.create(&params);
    }

    int process(int32_t frameNumber, ImageBuffer input, std::vector<ImageBuffer> outputs,
                camera_metadata* settings, Client const& client) {
        void* const session = reinterpret_cast<void*>(0x5e55);
        PostProcessParams params = {session, frameNumber, &input, {}, settings};
        for (ImageBuffer& output : outputs) {
            params.output_buffers.push_back(&output);
        }
        return device.process(&params, client);
    }

    bool isOutstanding(uint32_t number) {
        return bridge::isOutstanding(*peer.halInterface(), number);
    }

    /**
     * Waits until every request has left the table, which it does after its client was told.
     */
    void waitUntilDrained() {
        while (bridge::outstanding(*peer.halInterface()) != 0) {
            std::this_thread::yield();
        }
    }

    quenOfflineDevice device;
    DeviceInternals peer{device};
};

/** A client of a stand-in ISP; every request is answered before it ends. */
class StandInSession : public ClientSession {
  public:
    StandInSession() { EXPECT_EQ(mModule->registerAsService("internal/0"), 0); }
    ~StandInSession() {
        if (peer.isConnected()) {
            answerOutstanding();
            device.destroy();
        }
    }

    StandInDevice& isp() { return *mModule->device; }

    /** Answers every request that still waits for its result, with success. */
    void answerOutstanding() {
        for (isphal::ISPRequest const& request : isp().requests) {
            if (isOutstanding(request.requestNumber)) {
                isp().answer(request.requestNumber);
            }
        }
    }

  private:
    android::sp<StandInModule> const mModule = new StandInModule;
};

}  // namespace quentest
