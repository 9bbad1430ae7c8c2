#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <thread>
#include <utility>

#include <quenOfflineDevice/jpeg/JpegHandover.h>

#include "support/ClientSession.h"
#include "support/Formats.h"
#include "support/MetadataBuilder.h"
#include "support/RecordingCallback.h"
#include "support/ScriptedThreeA.h"
#include "support/Transcript.h"

namespace quentest {

/** A client of small pictures and a stand-in ISP: RAW10 to YUV, YUV to JPEG. */
class ProcessTest : public testing::Test {
  protected:
    static constexpr int kWidth = 64;
    static constexpr int kHeight = 48;
    static constexpr uint32_t kJpegBytes = 4096;
    static constexpr int kJpegStream = 3;

    ProcessTest() {
        quen::gJpegResultStatus = 0;
        setJpegTimeout(nullptr);
    }

    StandInDevice& isp() { return mSession.isp(); }
    int develop(int32_t frameNumber, ClientSession::Client const& client) {
        return mSession.process(frameNumber, mRaw, {mYuv}, mSettings.get(), client);
    }
    int encode(int32_t frameNumber, ClientSession::Client const& client = nullptr) {
        return mSession.process(frameNumber, mYuv, {mJpeg}, mSettings.get(), client);
    }
    /** Writes what the ISP leaves in a BLOB buffer: JPEG bytes, and their number at its end. */
    static void writeJpeg(isphal::ISPRequest const& request, uint32_t bytes) {
        for (auto const& output : request.outputBuffers) {
            if (output.streamId == kJpegStream) {
                Mapping const memory(output.buffer->data[0]);
                std::iota(memory.data(), memory.data() + std::min(bytes, 1000u), uint8_t{1});
                uint32_t const trailer[] = {0xFF, bytes};
                memcpy(memory.data() + kJpegBytes - sizeof(trailer), trailer, sizeof(trailer));
            }
        }
    }
    /** Makes the ISP encode and answer during the submission: the client's wait runs to its end. */
    void answerAtOnce() {
        setJpegTimeout("0");
        isp().onProcess = [&](isphal::ISPRequest const& request) {
            writeJpeg(request, 777);
            isp().answer(request.requestNumber);
            return StandInDevice::ok();
        };
    }
    /** Answers a request on a thread of the ISP's, some time after its client began to wait. */
    std::thread answerLater(uint32_t number, Transcript const& transcript,
                            isphal::Status status = isphal::Status::OK) {
        return std::thread([this, number, &transcript, status] {
            while (!transcript.has("I wait JPEG process")) {
                std::this_thread::yield();
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            isp().answer(number, status);
        });
    }

    Graphics& mGraphics = Graphics::fresh();
    std::shared_ptr<ScriptedThreeA> const mThreeA = std::make_shared<ScriptedThreeA>();
    ScriptedThreeA::Guard const mInstalled{mThreeA};
    MemoryBuffer const mRawMemory{kWidth * kHeight * 10 / 8};
    MemoryBuffer const mYuvMemory{kWidth * kHeight * 3 / 2};
    MemoryBuffer const mJpegMemory{kJpegBytes};
    ImageBuffer const mRaw = mRawMemory.image(1, kRaw10, kWidth, kHeight);
    ImageBuffer const mYuv = mYuvMemory.image(2, kYuv, kWidth, kHeight);
    ImageBuffer const mJpeg = mJpegMemory.image(kJpegStream, kBlob, kWidth / 2, kHeight / 2);
    MetadataBuilder mSettings;
    android::sp<RecordingCallback> const mClient = new RecordingCallback;
    StandInSession mSession;
};

}  // namespace quentest
