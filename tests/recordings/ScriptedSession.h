#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <future>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <quenOfflineDevice/bridge/ClientCallback.h>

#include "host/base/Properties.h"
#include "host/gralloc/GraphicsServices.h"
#include "host/hidl/ServiceRegistry.h"
#include "host/isp/device/ClientThread.h"
#include "host/log/LogControl.h"
#include "host/metadata/EventText.h"
#include "host/threea/ThreeAStore.h"
#include "quenRecorder/BufferRecord.h"
#include "quenRecorder/RecordedDevice.h"
#include "quenRecorder/RecordedIsp.h"
#include "quenRecorder/RecordedReceiver.h"
#include "support/Formats.h"
#include "support/MetadataBuilder.h"

namespace quentest {

namespace isphal = vendor::mediatek::hardware::camera::isphal::V1_0;
namespace postproc = vendor::quen::hardware::camera::quenpostproc::V1_0;
using android::sp;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;
using quen::recorder::BufferAccess;
using quen::recorder::RecordedDevice;
using quen::recorder::Recorder;

using quen::host::Layout;
using quen::host::MemfdAllocator;
using PixelFormat = MemfdAllocator::PixelFormat;

inline android::sp<MemfdAllocator> gAllocator;  // of the whole process

constexpr int kWidth = 32;
constexpr int kHeight = 24;
constexpr int kJpegBytes = 1024;

/** Bytes unlike those of any other seed. */
inline void paint(uint8_t* bytes, size_t size, uint32_t seed) {
    for (size_t i = 0; i < size; ++i) {
        seed = seed * 1664525 + 1013904223;
        bytes[i] = static_cast<uint8_t>(seed >> 24);
    }
}

inline android::hardware::Status lost() {
    return android::hardware::Status::fromExceptionCode(
            android::hardware::Status::EX_TRANSACTION_FAILED, "by script");
}

/** What the ISP does with the next request. */
struct Answer {
    isphal::Status status = isphal::Status::OK;
    std::vector<uint8_t> metadata = ispBuffer({ispRecord<int64_t>(tags::kCurrentMode, 2, {3})});
    std::vector<isphal::Status> early;
    int results = 1;
    bool strays = false;   // a result of a number that nobody knows comes first
    bool refuses = false;  // the submission
    bool loses = false;    // the answer to the submission
    bool atOnce = false;   // answers within the submission
    bool unheard = false;  // the client loses what it is told
    int delay = 0;         // ms
    int tuningBytes = 0;   // what the tuning buffer's header tells
    uint32_t jpegBytes = 300;
};

/** The ISP: one device a session, answers on threads of its own. */
class ScriptedIsp : public isphal::IISPModule {
  public:
    Return<void> openISPDevice(openISPDevice_cb cb) override {
        cb(isphal::Status::OK, new Device(*this));
        return Void();
    }

    /** Waits until everything is answered. */
    void settle() {
        for (std::thread& answering : mAnswering) {
            answering.join();
        }
        mAnswering.clear();
    }

    /** The module dies. */
    void die() {
        static_cast<quen::recorder::RecordedReceiver*>(mLatest.get())->serviceDied(7, nullptr);
    }

    Answer next;

  private:
    class Device : public isphal::IDevice {
      public:
        explicit Device(ScriptedIsp& isp) : mIsp(isp) {}
        Return<isphal::Status> configureISPDevice(isphal::ISPStreamConfiguration const&,
                                                  sp<isphal::ICallback> const& callback) override {
            mCallback = callback;
            mIsp.mLatest = callback;
            return isphal::Status::OK;
        }
        Return<isphal::Status> processISPRequest(
                hidl_vec<isphal::ISPRequest> const& requests) override {
            Answer const answer = std::exchange(mIsp.next, {});
            leaveOutputs(requests[0], answer);
            if (answer.refuses) {
                return isphal::Status::RESOURCE_ERROR;
            }
            if (answer.loses) {
                return lost();
            }
            auto const tell = [callback = mCallback, answer, number = requests[0].requestNumber] {
                for (isphal::Status const status : answer.early) {
                    (void)callback->processEarlyResult({number, {}, status}).isOk();
                }
                if (answer.strays) {
                    (void)callback->processResult({4711, answer.metadata, answer.status}).isOk();
                }
                for (int i = 0; i < answer.results; ++i) {
                    (void)callback->processResult({number, answer.metadata, answer.status}).isOk();
                }
            };
            if (answer.atOnce) {
                tell();
                return isphal::Status::OK;
            }
            auto const client = quen::host::isp::ClientThread::current();
            mIsp.mAnswering.emplace_back([tell, client, delay = answer.delay] {
                std::this_thread::sleep_for(std::chrono::milliseconds(delay));
                client.waitUntilAsleep(std::chrono::milliseconds(50));
                tell();
            });
            return isphal::Status::OK;
        }
        Return<isphal::Status> flush() override { return isphal::Status::OK; }
        Return<isphal::Status> closeISPDevice() override {
            mIsp.settle();
            mCallback = nullptr;
            return isphal::Status::OK;
        }

      private:
        static void leaveOutputs(isphal::ISPRequest const& request, Answer const& answer) {
            for (isphal::ISPBuffer const& output : request.outputBuffers) {
                BufferAccess picture(output.buffer.getNativeHandle());
                bool const isJpeg = output.streamId == 3;
                if (picture.map(SIZE_MAX, true)) {
                    size_t const painted = isJpeg ? answer.jpegBytes : picture.size();
                    paint(picture.data(), std::min(painted, picture.size()),
                          request.requestNumber + static_cast<uint32_t>(output.streamId));
                    uint32_t const trailer[] = {0xff, answer.jpegBytes};
                    if (isJpeg) {
                        memcpy(picture.data() + picture.size() - sizeof(trailer), trailer,
                               sizeof(trailer));
                    }
                }
                BufferAccess tuning(output.tuningData.getNativeHandle());
                if (answer.tuningBytes > 0 && tuning.map(SIZE_MAX, true)) {
                    paint(tuning.data(), static_cast<size_t>(answer.tuningBytes), 99);
                    memcpy(tuning.data() + 32, &answer.tuningBytes, sizeof(answer.tuningBytes));
                }
            }
        }

        ScriptedIsp& mIsp;
        sp<isphal::ICallback> mCallback;
    };

    std::vector<std::thread> mAnswering;
    sp<isphal::ICallback> mLatest;
};

/** A callback that can be waited for. */
class Listener : public postproc::IQuenPostProcCallback {
  public:
    explicit Listener(bool loses) : mLoses(loses) {}

    Return<void> notifyRequestResult(uint32_t, postproc::Status) override {
        mEnded.set_value();
        return mLoses ? lost() : Void();
    }
    Return<void> notifyResultMetadata(uint32_t, hidl_vec<uint8_t> const&,
                                      postproc::Status) override {
        return mLoses ? lost() : Void();
    }
    void wait() { mEnded.get_future().wait(); }

  private:
    bool const mLoses;
    std::promise<void> mEnded;
};

/** Plain memory behind a handle, painted. */
class Memory {
  public:
    explicit Memory(int bytes, uint32_t seed)
        : mHandle(native_handle_create(1, 0)), mFile(memfd_create("client", MFD_CLOEXEC)) {
        std::vector<uint8_t> content(static_cast<size_t>(bytes));
        paint(content.data(), content.size(), seed);
        if (write(mFile, content.data(), content.size()) != bytes) {
            abort();
        }
        mHandle->data[0] = mFile;
    }
    ~Memory() {
        native_handle_close(mHandle);
        native_handle_delete(mHandle);
    }
    native_handle_t* handle() const { return mHandle; }

  private:
    native_handle_t* const mHandle;
    int const mFile;
};

/** A client of one device object. */
class Client {
  public:
    explicit Client(ScriptedIsp& isp) : mIsp(isp) {}
    ~Client() { mDevice.destroy(); }

    RecordedDevice& device() { return mDevice; }
    MetadataBuilder& settings() { return mSettings; }

    /** A picture of the client's: streams 1 raw, 2 YUV, 3 JPEG, 4 a second YUV. */
    ImageBuffer image(int stream, int format, int width = kWidth, int height = kHeight) {
        int const bytes = format == kBlob    ? kJpegBytes
                          : format == kRaw10 ? width * height * 5 / 4
                          : format == kRaw16 ? width * height * 2
                                             : width * height * 3 / 2;
        Memory const& memory =
                mMemory.emplace_back(bytes, static_cast<uint32_t>(stream * 100 + ++mImages));
        return {stream, format, bytes, width, height, memory.handle()};
    }

    void create(ImageBuffer const& input, std::vector<ImageBuffer> const& outputs) {
        SessionParams params = {{streamOf(input)}, {}, mSettings.get()};
        for (ImageBuffer const& output : outputs) {
            params.output_streams.push_back(streamOf(output));
        }
        mDevice.create(&params);
    }
    void develop(int number, Answer const& answer = {}) {
        process(number, image(1, kRaw10), {image(2, kYuv)}, answer);
    }
    int encode(int number, Answer const& answer = {}) {
        return call(number, image(2, kYuv), {image(3, kBlob)}, answer, nullptr);
    }

    /** Submits a request and waits for its end, unless none will come. */
    void process(int number, ImageBuffer input, std::vector<ImageBuffer> outputs,
                 Answer const& answer) {
        sp<Listener> const listener = new Listener(answer.unheard);
        call(number, input, std::move(outputs), answer, listener);
        if (!answer.refuses && !answer.loses && answer.delay == 0) {
            listener->wait();
            mIsp.settle();
        }
    }

  private:
    static StreamConfig streamOf(ImageBuffer const& buffer) {
        return {buffer.streamId, buffer.format, static_cast<uint32_t>(buffer.width),
                static_cast<uint32_t>(buffer.height), buffer.streamId != 1};
    }
    int call(int number, ImageBuffer input, std::vector<ImageBuffer> outputs, Answer const& answer,
             sp<Listener> const& listener) {
        mIsp.next = answer;
        PostProcessParams params = {this, number, &input, {}, mSettings.get()};
        for (ImageBuffer& output : outputs) {
            params.output_buffers.push_back(&output);
        }
        return mDevice.process(&params, listener);
    }

    ScriptedIsp& mIsp;
    MetadataBuilder mSettings;
    std::deque<Memory> mMemory;
    int mImages = 0;
    RecordedDevice mDevice;
};

}  // namespace quentest
