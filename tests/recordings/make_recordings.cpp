// Records the sessions that this folder keeps: a client and an ISP by script, small pictures,
// whole. Usage: quen-make-recordings FOLDER

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

namespace {

using namespace quentest;
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

android::sp<MemfdAllocator> gAllocator;  // of the whole process

constexpr int kWidth = 32;
constexpr int kHeight = 24;
constexpr int kJpegBytes = 1024;

/** Bytes unlike those of any other seed. */
void paint(uint8_t* bytes, size_t size, uint32_t seed) {
    for (size_t i = 0; i < size; ++i) {
        seed = seed * 1664525 + 1013904223;
        bytes[i] = static_cast<uint8_t>(seed >> 24);
    }
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
                return android::hardware::Status::fromExceptionCode(
                        android::hardware::Status::EX_TRANSACTION_FAILED, "by script");
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
    Return<void> notifyRequestResult(uint32_t, postproc::Status) override {
        mEnded.set_value();
        return Void();
    }
    Return<void> notifyResultMetadata(uint32_t, hidl_vec<uint8_t> const&,
                                      postproc::Status) override {
        return Void();
    }
    void wait() { mEnded.get_future().wait(); }

  private:
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
        sp<Listener> const listener = new Listener;
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

void index3A(Client& client) {
    client.settings().i32(tags::kBufferIndex, 1).i32(tags::kCameraId, 2);
}

/** Entries of every type that metadata has, some of which the ISP's lacks. */
void addEveryType(camera_metadata* settings) {
    float const gains[] = {1.5f, 1, 1, 2.25f};
    double const place[] = {48.1, 11.6, 500};
    camera_metadata_rational_t const neutral[] = {{1, 2}, {1, 1}, {3, 4}};
    int32_t const crop[] = {2, 4, 24, 16};
    std::vector<uint8_t> const long1(60, 7);
    add_camera_metadata_entry(settings, ANDROID_COLOR_CORRECTION_GAINS, gains, 4);
    add_camera_metadata_entry(settings, ANDROID_JPEG_GPS_COORDINATES, place, 3);
    add_camera_metadata_entry(settings, ANDROID_SENSOR_NEUTRAL_COLOR_POINT, neutral, 3);
    add_camera_metadata_entry(settings, ANDROID_SCALER_CROP_REGION, crop, 4);
    add_camera_metadata_entry(settings, tags::kRawTuning, long1.data(), long1.size());
    add_camera_metadata_entry(settings, tags::kRawBitDepth, crop, 2);
}

/** Captures of many kinds: what the ISP is told of each. */
void recordModes(ScriptedIsp& isp) {
    Client client(isp);
    index3A(client);
    addEveryType(client.settings().get());
    client.create(client.image(1, kRaw10), {client.image(2, kYuv)});
    int number = 0;
    for (int const bit : {1, 2, 3, 18, 24, 27, 35, 51, 55}) {
        quen::host::setEventString("APP_NAME", bit == 24 ? "StarPlate" : "Other");
        client.settings()
                .i64(tags::kCurrentMode, int64_t{1} << bit)
                .i32(tags::kUiMode, bit == 55 ? 40 : 16)
                .i32(tags::kSceneMode, bit == 27 ? 0x280000 : 0x400000)
                .i32(tags::kFeedback, bit == 51 ? 0x8 : 0x9);
        client.develop(++number);
    }
    quen::host::clearEventString("APP_NAME");
    struct {
        int64_t mode;
        int32_t scene;
        int32_t feedback;
    } const captures[] = {
            {1ll << 27, 0x180000, 0x10}, {1ll << 27, 0x300000, 0x8}, {1ll << 27 | 1ll << 35, 0, 0}};
    for (auto const& capture : captures) {
        client.settings()
                .i64(tags::kCurrentMode, capture.mode)
                .i32(tags::kSceneMode, capture.scene)
                .i32(tags::kFeedback, capture.feedback);
        client.develop(++number);
    }
    client.settings().i64(tags::kCurrentMode, 4).i32(tags::kFeedback, 1).i32(tags::kUiMode, 1);
    client.process(++number, client.image(1, kRaw16), {client.image(2, kYuv)}, {});
    for (int const index : {0, 5}) {
        Answer answer;
        answer.metadata = ispBuffer({ispRecord<int32_t>(tags::kBufferIndex, 1, {index})});
        client.develop(++number, answer);
    }
    client.settings().i32(tags::kForDepth, 1).i32(tags::kFusion, 1);
    client.develop(++number);
    client.settings().i32(tags::kForDepth, 0).i32(tags::kDualSlave, 0);
    client.develop(++number);
    client.settings().i32(tags::kEngineerMode, 4).i32(tags::kFusion, 0);
    client.develop(++number);
    client.settings().i32(tags::kDualSlave, -1).i32(tags::kEngineerMode, 0x78);
    client.develop(++number);
    client.settings().i32(tags::kFastDisplay, 1);
    client.develop(++number);
    int32_t const crop[] = {1, 2, 30, 20};
    add_camera_metadata_entry(client.settings().get(), tags::kSatCrop, crop, 4);
    client.develop(++number);
}

/** Sizes, formats and raw depths that change, requests outstanding or not. */
void recordReconfigurations(ScriptedIsp& isp) {
    Client client(isp);
    index3A(client);
    client.create(client.image(1, kRaw10), {client.image(2, kYuv)});
    Answer late;
    late.delay = 100;
    client.process(1, client.image(1, kRaw10), {client.image(2, kYuv)}, late);
    client.process(2, client.image(1, kRaw10, 48, 24), {client.image(2, kYuv, 48, 24)}, {});
    client.process(8, client.image(1, kRaw10, 48, 16), {client.image(2, kYuv, 48, 16)}, {});
    client.process(3, client.image(1, kRaw16, 48, 24), {client.image(2, kYuv, 48, 24)}, {});
    client.settings().i32(tags::kUiMode, 16);
    client.process(4, client.image(1, kRaw16, 48, 24), {client.image(2, kYuv, 48, 24)}, {});
    client.process(5, client.image(1, kRaw16, 288, 2), {client.image(2, kYuv, 48, 24)}, {});
    client.process(6, client.image(-2, kNv21), {client.image(-4, kYuv)}, {});
    client.encode(7);
    for (Layout const layout : {Layout::Nv12, Layout::I420, Layout::Yv12, Layout::Nv21}) {
        gAllocator->setLayout(PixelFormat::YCRCB_420_SP, layout);
        client.process(9, client.image(2, kYuv, 34, 23), {client.image(3, kBlob)}, {});
    }
    client.device().setOfflineCallback(nullptr);
    client.device().config({{1, kPrivate, 16, 8, false}}, {{2, kYuv, 16, 8, true}}, nullptr);
    client.device().config({{1, kRaw16, 70000, 70000, false}},
                           {{2, kYuv, 16, 8, true}, {4, kYuv, 96, 8, true}}, nullptr);
    client.device().flush();
}

/** Whatever an ISP may answer but success. */
void recordErrors(ScriptedIsp& isp) {
    Client client(isp);
    index3A(client);
    client.create(client.image(1, kRaw10), {client.image(2, kYuv)});
    client.device().process(nullptr, nullptr);
    for (uint32_t status = 0; status < 9; ++status) {
        Answer answer;
        answer.status = static_cast<isphal::Status>(status);
        client.develop(static_cast<int>(status), answer);
    }
    Answer several;
    several.results = 2;
    several.strays = true;
    several.early = {isphal::Status::OK, isphal::Status::RESULT_ERROR};
    client.develop(20, several);
    Answer empty;
    empty.metadata = {};
    client.develop(21, empty);
    Answer failed;
    failed.status = isphal::Status::INTERNAL_ERROR;
    client.encode(22, failed);
    Answer nameless;
    nameless.status = static_cast<isphal::Status>(6);
    client.encode(25, nameless);
    Answer refused;
    refused.refuses = true;
    client.encode(23, refused);
    Answer lost;
    lost.loses = true;
    client.encode(24, lost);

    RecordedDevice orphaned;
    StreamConfig const stream = {1, kRaw10, kWidth, kHeight, false};
    SessionParams params = {{stream}, {stream}, nullptr};
    orphaned.create(&params);
    isp.die();
}

/** Tuning data that goes with the metadata, in graphic buffers. */
void recordTuning(ScriptedIsp& isp) {
    Client client(isp);
    client.settings()
            .i64(tags::kCurrentMode, 2)
            .u8(tags::kRawTuning, {1, 2, 3, 4, 5, 6, 7, 8})
            .u8(tags::kYuvTuning, {9, 8, 7, 6});
    client.create(client.image(1, kRaw10), {client.image(2, kYuv)});
    for (int const bytes : {0, 40, 500}) {
        Answer answer;
        answer.tuningBytes = bytes;
        answer.metadata = ispBuffer({ispRecord<uint8_t>(0x00070004, 0, {90}),
                                     ispRecord<int32_t>(tags::kBufferIndex, 1, {77}),
                                     ispRecord<int64_t>(tags::kCurrentMode, 2, {1ll << 40}),
                                     ispRecord<float>(0x00080008, 3, {1.5f, 2.5f}),
                                     ispRecord<int32_t>(tags::kSceneMode, 1, {}),
                                     ispRecord<int32_t>(tags::kFusion, 1, {5}),
                                     ispRecord<int32_t>(tags::kFusion, 1, {6}),
                                     ispRecord<int32_t>(tags::kSatCrop, 1, {1, 2, 30, 20})},
                                    24);
        client.develop(bytes, answer);
    }
    client.settings().i32(tags::kBufferIndex, -1).i32(tags::kRequestNo, 8);
    client.develop(8);
    client.encode(9);
}

/** Two outputs a request, and two device objects that share the numbers of fast-display requests.
 */
void recordTwoAtOnce(ScriptedIsp& isp) {
    Client raw(isp);
    Client plain(isp);
    Client jpeg(isp);
    for (Client* const client : {&raw, &plain, &jpeg}) {
        index3A(*client);
    }
    plain.create(plain.image(1, kRaw10), {plain.image(2, kYuv)});
    raw.create(raw.image(1, kRaw10), {raw.image(2, kYuv), raw.image(4, kYuv, 16, 12)});
    jpeg.create(jpeg.image(2, kYuv), {jpeg.image(3, kBlob)});
    int number = 100;
    auto const developFast = [&](int fast) {
        raw.settings().i32(tags::kFastDisplay, fast);
        raw.process(++number, raw.image(1, kRaw10),
                    {raw.image(2, kYuv), raw.image(4, kYuv, 16, 12)}, {});
    };
    developFast(1);
    developFast(1);
    plain.develop(++number);
    for (int const fast : {0, 0, 0, -1}) {
        developFast(fast);
    }
    jpeg.encode(++number);
    jpeg.settings().i32(tags::kFastDisplay, 0).i64(tags::kCurrentMode, 1 << 24);
    for (uint32_t const bytes : {300u, 1016u, 0u}) {
        Answer answer;
        answer.jpegBytes = bytes;
        jpeg.encode(++number, answer);
    }
    Answer late;
    late.delay = 60;
    raw.process(++number, raw.image(1, kRaw10), {raw.image(2, kYuv), raw.image(4, kYuv, 16, 12)},
                late);
    jpeg.encode(++number);
    isp.settle();
    developFast(1);
    { Client(isp).create(plain.image(1, kRaw10), {plain.image(2, kYuv)}); }
    developFast(0);
    jpeg.encode(++number);
}

/** A result that comes too early for a wait, in which the time-out then ends. */
void recordLostSignal(ScriptedIsp& isp) {
    quen::host::setProperty("vendor.debug.camera.jpeg.timeout", "0");
    Client client(isp);
    index3A(client);
    client.create(client.image(2, kYuv), {client.image(3, kBlob)});
    Answer answer;
    answer.atOnce = true;
    client.encode(1, answer);
}

struct Session {
    char const* name;
    void (*record)(ScriptedIsp&);
};

constexpr Session kSessions[] = {
        {"modes", recordModes},           {"reconfigurations", recordReconfigurations},
        {"errors", recordErrors},         {"tuning", recordTuning},
        {"two_at_once", recordTwoAtOnce}, {"lost_signal", recordLostSignal},
};

int recordAll(std::string const& folder) {
    quen::host::setLogLevel(quen::host::LogLevel::Silent);
    gAllocator = quen::host::registerGraphicsServices().allocator;
    for (Session const& session : kSessions) {
        quen::host::setThreeAStore(nullptr);
        quen::host::setProperty("vendor.debug.camera.jpeg.timeout", "");
        sp<ScriptedIsp> const isp = new ScriptedIsp;
        if (isp->registerAsService("internal/0") != android::OK) {
            return EXIT_FAILURE;
        }
        std::string const path = folder + "/" + session.name + ".rec";
        int error = 0;
        auto const recorder = Recorder::start(path.c_str(), quen::recorder::Pictures::Whole, error);
        if (recorder == nullptr || quen::recorder::recordIsp(recorder) != android::OK) {
            fprintf(stderr, "%s cannot be recorded\n", path.c_str());
            return EXIT_FAILURE;
        }
        Recorder::setCurrent(recorder);
        session.record(*isp);
        Recorder::setCurrent(nullptr);
        std::string const problem = recorder->finish();
        if (!problem.empty()) {
            fprintf(stderr, "%s: %s\n", path.c_str(), problem.c_str());
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        fprintf(stderr, "usage: quen-make-recordings FOLDER\n");
        return 2;
    }
    return recordAll(argv[1]);
}
