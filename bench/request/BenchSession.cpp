#include "request/BenchSession.h"

#include <quenOfflineDevice/metadata/IspMetadata.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <utility>

#include "host/base/Properties.h"
#include "host/hidl/ServiceRegistry.h"

using android::hardware::Return;
using android::hardware::Void;

namespace quenbench {

namespace postproc = vendor::quen::hardware::camera::quenpostproc::V1_0;

namespace {

constexpr char kInstance[] = "internal/0";
constexpr int kWidth = 64;
constexpr int kHeight = 48;
constexpr size_t kBlobBytes = 4096;
constexpr uint32_t kJpegBytes = 2048;
constexpr size_t kResultEntries = 20;
constexpr auto kAnswerDelay = std::chrono::milliseconds(1);

class SilentClient final : public postproc::IQuenPostProcCallback {
  public:
    Return<void> notifyRequestResult(uint32_t, postproc::Status) override { return Void(); }
    Return<void> notifyResultMetadata(uint32_t, android::hardware::hidl_vec<uint8_t> const&,
                                      postproc::Status) override {
        return Void();
    }
};

class Module final : public isphal::IISPModule {
  public:
    explicit Module(android::sp<BenchIsp> isp) : mIsp(std::move(isp)) {}
    Return<void> openISPDevice(openISPDevice_cb cb) override {
        cb(isphal::Status::OK, mIsp);
        return Void();
    }

  private:
    android::sp<BenchIsp> const mIsp;
};

/** A store of one 3A buffer, or of none. */
class OneBufferStore final : public quen::host::IThreeAStore {
  public:
    explicit OneBufferStore(int descriptor) : mDescriptor(descriptor) {}
    int get3AInfoBuf(QIF3ABufferInfo* info, unsigned int size) override {
        info->fd = mDescriptor;
        info->size = size;
        info->bufferIndex = 1;
        return 0;
    }
    int getTuningData(int* fd, unsigned int) override {
        *fd = mDescriptor;
        return 0;
    }

  private:
    int const mDescriptor;
};

/** Writes bytes into the memory behind a buffer's first descriptor. */
void writeTo(native_handle const* handle, size_t size, size_t offset, void const* bytes,
             size_t count) {
    void* const address =
            mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, handle->data[0], 0);
    if (address != MAP_FAILED) {
        memcpy(static_cast<uint8_t*>(address) + offset, bytes, count);
        munmap(address, size);
    }
}

}  // namespace

Client makeClient() {
    return new SilentClient;
}

Responder::Responder(std::function<void()> prepare, std::function<void()> answer)
    : mPrepare(std::move(prepare)), mAnswer(std::move(answer)), mThread([this] { loop(); }) {}

Responder::~Responder() {
    {
        quen::host::MutexLock const lock(mLock);
        mEnded = true;
    }
    mChanged.notifyOne();
    mThread.join();
}

void Responder::ask() {
    {
        quen::host::MutexLock const lock(mLock);
        mAsked = true;
    }
    mChanged.notifyOne();
}

/** Waits for ask. @return false when the responder ends */
bool Responder::waitUntilAsked() {
    quen::host::MutexLock const lock(mLock);
    while (!mAsked && !mEnded) {
        mChanged.wait(mLock);
    }
    mAsked = false;
    return !mEnded;
}

void Responder::loop() {
    while (waitUntilAsked()) {
        mPrepare();
        std::this_thread::sleep_for(kAnswerDelay);
        mAnsweredAt = Clock::now();
        mAnswer();
    }
}

BenchIsp::BenchIsp(Answering answering) : mAnswering(answering) {
    NSCam::IMetadata const result = makeResult(kResultEntries);
    quen::convertToISPMetadata(&result, mResultBytes);
    mResult.resultMetadata.setToExternal(mResultBytes.data(), mResultBytes.size());
    mResult.status = isphal::Status::OK;
    if (answering == Answering::FromThread) {
        mResponder = std::make_unique<Responder>([this] { leaveJpeg(); },
                                                 [this] { answer(mPending->requestNumber); });
    }
}

BenchIsp::StatusReturn BenchIsp::configureISPDevice(
        isphal::ISPStreamConfiguration const& /*config*/,
        android::sp<isphal::ICallback> const& callback) {
    mCallback = callback;
    return isphal::Status::OK;
}

BenchIsp::StatusReturn BenchIsp::processISPRequest(
        android::hardware::hidl_vec<isphal::ISPRequest> const& requests) {
    isphal::ISPRequest const& request = requests[0];
    if (mFillsTuning) {
        int32_t const used = static_cast<int32_t>(kTuningBytes);
        writeTo(request.outputBuffers[0].tuningData, kTuningBytes, 32, &used, sizeof(used));
    }
    if (mAnswering == Answering::AtOnce) {
        answer(request.requestNumber);
    } else if (mAnswering == Answering::FromThread) {
        mPending = &request;  // valid until the waiting client has its answer
        mResponder->ask();
    }
    return isphal::Status::OK;
}

BenchIsp::StatusReturn BenchIsp::closeISPDevice() {
    mCallback = nullptr;
    return isphal::Status::OK;
}

void BenchIsp::answer(uint32_t number) {
    mResult.reqNumber = number;
    // A reference of its own: the client may close the device as soon as its call is released.
    android::sp<isphal::ICallback> const callback = mCallback;
    (void)callback->processResult(mResult).isOk();
}

/** Writes the trailer of a JPEG's buffer. */
void BenchIsp::leaveJpeg() {
    uint32_t const trailer[2] = {0xFF, kJpegBytes};
    writeTo(mPending->outputBuffers[0].buffer, kBlobBytes, kBlobBytes - sizeof(trailer), trailer,
            sizeof(trailer));
}

/** A client's buffer: shared memory and a handle around it. */
struct BenchSession::Memory {
    explicit Memory(size_t size)
        : descriptor(memfd_create("client", MFD_CLOEXEC)), handle(native_handle_create(1, 0)) {
        if (descriptor < 0 || ftruncate(descriptor, static_cast<off_t>(size)) != 0) {
            abort();
        }
        handle->data[0] = descriptor;
    }
    ~Memory() {
        native_handle_delete(handle);
        close(descriptor);
    }
    Memory(Memory const&) = delete;
    Memory& operator=(Memory const&) = delete;

    int const descriptor;
    native_handle_t* const handle;
};

BenchSession::BenchSession(RequestKind kind, Answering answering, RequestShape const& shape)
    : mSettings(makeRequest(shape)), mIsp(new BenchIsp(answering)) {
    auto const buffer = [this](int32_t stream, int32_t format, size_t size) {
        mMemory.push_back(std::make_unique<Memory>(size));
        return ImageBuffer{stream, format,  static_cast<int32_t>(size),
                           kWidth, kHeight, mMemory.back()->handle};
    };
    constexpr size_t kPixels = size_t{kWidth} * kHeight;
    bool const fromRaw = kind == RequestKind::RawToYuv || kind == RequestKind::RawToYuvTuning;
    int32_t const yuvFormat = kind == RequestKind::Nv21ToJpeg ? 0x11 : 0x23;
    mInput = fromRaw ? buffer(1, 0x25, kPixels * 5 / 4) : buffer(1, yuvFormat, kPixels * 3 / 2);
    mOutput = fromRaw ? buffer(2, 0x23, kPixels * 3 / 2) : buffer(2, 0x21, kBlobBytes);
    mParams = {this, 0, &mInput, {&mOutput}, mSettings.get()};

    bool const has3A = kind != RequestKind::RawToYuvTuning;
    mMemory.push_back(std::make_unique<Memory>(kTuningBytes));
    mThreeABefore = quen::host::setThreeAStore(
            std::make_shared<OneBufferStore>(has3A ? mMemory.back()->descriptor : -1));
    if (!has3A) {
        mIsp->fillTuningBuffers();
    }
    quen::host::setProperty("vendor.debug.camera.jpeg.timeout", "1");
    android::sp<isphal::IISPModule> const module = new Module(mIsp);
    if (module->registerAsService(kInstance) != 0) {
        abort();
    }
    auto const stream = [](ImageBuffer const& from, bool isOutput) {
        return StreamConfig{from.streamId, from.format, kWidth, kHeight, isOutput};
    };
    SessionParams session = {{stream(mInput, false)}, {stream(mOutput, true)}, mSettings.get()};
    mDevice.create(&session);
}

BenchSession::~BenchSession() {
    mDevice.destroy();
    quen::host::unregisterService(isphal::IISPModule::descriptor, kInstance);
    quen::host::setThreeAStore(std::move(mThreeABefore));
}

uint32_t BenchSession::submit(Client const& client) {
    ++mParams.frame_number;
    mDevice.process(&mParams, client);
    return static_cast<uint32_t>(mParams.frame_number);
}

}  // namespace quenbench
