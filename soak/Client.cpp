#include "Client.h"

#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "Build.h"
#include "Listener.h"

using android::sp;

namespace quensoak {

namespace {

constexpr int32_t kRaw10 = 0x25;
constexpr int32_t kYuv = 0x23;
constexpr int32_t kNv21 = 0x11;
constexpr int32_t kBlob = 0x21;

constexpr size_t kMemoryBytes = 16384;  // of a client's picture
constexpr size_t kTinyBytes = 16;

constexpr int kInvalidArgument = -22;
constexpr int kNoDevice = -19;
constexpr int kTimedOut = -110;
constexpr int kNoJpeg = -1;

// The library's time-outs are 1 s, as the soak sets the property, and 2 s.
constexpr double kLongForAWait = 0.9;
constexpr double kLongForADrain = 1.9;

enum Buffer : size_t { kRawInput, kYuvInput, kYuvOutput, kSecondOutput, kJpegOutput, kTiny, kBad };

constexpr uint32_t k3ABufferIndex = 0xc00c0018;
constexpr uint32_t kRawTuningData = 0x800b0016;
constexpr uint32_t kYuvTuningData = 0x800b0017;

int pictureBytes(int32_t format, int width, int height) {
    int const pixels = width * height;
    return format == kRaw10 ? pixels * 10 / 8 : pixels * 3 / 2;
}

void add(camera_metadata* metadata, uint32_t tag, void const* items, size_t count) {
    if (add_camera_metadata_entry(metadata, tag, items, count) != 0) {
        abort();
    }
}

camera_metadata* makeSettings(Settings which) {
    camera_metadata* const metadata = allocate_camera_metadata(32, 1024);
    int64_t const mode = 1 << 24;
    add(metadata, 0xc0030014, &mode, 1);
    for (uint32_t const tag : {0xc0030022u, 0xc0030092u, 0xc0030099u, 0xc00300a2u, 0xc0080001u,
                               0xc0090002u, 0xc00c000au}) {
        int32_t const zero = 0;
        add(metadata, tag, &zero, 1);
    }
    if (which == kWithIndex) {
        int32_t const index = 1;
        add(metadata, k3ABufferIndex, &index, 1);
    }
    if (which == kWithTuningBytes) {
        uint8_t const bytes[64] = {};
        add(metadata, kRawTuningData, bytes, sizeof(bytes));
        add(metadata, kYuvTuningData, bytes, sizeof(bytes));
    }
    return metadata;
}

bool isRefused(Account const& account) {
    Fate const fate = account.plan.fate;
    return fate == Fate::Refused || fate == Fate::NeverReached || fate == Fate::ReplyLost ||
           account.reachedDead;
}

bool isSuccess(isphal::Status status) {
    auto const value = static_cast<uint32_t>(status);
    return value == 0 || value == 6 || value > 7;
}

/** What a waiting JPEG call returns once its result is there, and a success. */
bool isRightJpeg(Plan const& plan, int result) {
    switch (plan.buffers) {
        case BufferFault::AllocateJpeg:
        case BufferFault::ImportJpegSecond:
        case BufferFault::LockJpegSecond:
            return result == kNoJpeg;
        case BufferFault::ImportJpegFirst:
        case BufferFault::LockJpegFirst:  // the size cannot be read
            return result == kNoJpeg || (!kHardened && result == 0);
        case BufferFault::MapJpeg:
            return result == kNoJpeg || (kHardened && result == kInvalidArgument);
        case BufferFault::MapInput:
            if (kHardened && result == kInvalidArgument) {
                return true;
            }
            break;
        default:
            break;
    }
    switch (plan.trailer) {
        case Trailer::Right:
            return result == plan.jpegBytes;
        case Trailer::WrongId:
            return result == (kHardened ? kNoJpeg : plan.jpegBytes);
        case Trailer::TooLarge:
        case Trailer::Negative:
            return result == kNoJpeg;
    }
    return false;
}

/** Whether a buffer that cannot be mapped may be refused before anything is done. */
bool mayRefuseBuffers(Plan const& plan) {
    return kHardened &&
           (plan.buffers == BufferFault::MapInput || plan.buffers == BufferFault::MapJpeg);
}

bool isRightReturn(Account const& account, bool timedOut) {
    Plan const& plan = account.plan;
    int const result = account.result;
    if (account.isUnconnected) {
        return result == kNoDevice;
    }
    if (account.nearDeath && result == kNoDevice) {
        return true;
    }
    if (plan.call != Call::Good) {
        return result == kInvalidArgument;
    }
    if (!plan.waits) {
        return result == 0 || (result == kInvalidArgument && mayRefuseBuffers(plan));
    }
    if (isRefused(account)) {
        return result == 0;
    }
    if (timedOut) {  // the default build goes on with the status of the latest result
        return kHardened ? result == kTimedOut
                         : result == 0 || result == kNoJpeg || result == plan.jpegBytes;
    }
    if (account.nearDeath && result == 0) {
        return true;
    }
    if (!isSuccess(plan.status) || plan.configuration.stage == Stage::RawToYuv) {
        return result == 0 || (result == kInvalidArgument && mayRefuseBuffers(plan));
    }
    return isRightJpeg(plan, result);
}

}  // namespace

/** A buffer of the client's: shared memory, mapped, and a handle around it. */
struct Client::Memory {
    explicit Memory(size_t bytes)
        : descriptor(memfd_create("soak client", MFD_CLOEXEC)),
          handle(native_handle_create(1, 0)),
          size(bytes) {
        if (descriptor < 0 || ftruncate(descriptor, static_cast<off_t>(bytes)) != 0) {
            abort();
        }
        handle->data[0] = descriptor;
        void* const mapped =
                mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
        if (mapped == MAP_FAILED) {
            abort();
        }
        address = static_cast<uint8_t*>(mapped);
    }
    ~Memory() {
        munmap(address, size);
        close(descriptor);
        native_handle_delete(handle);
    }
    Memory(Memory const&) = delete;
    Memory& operator=(Memory const&) = delete;

    int const descriptor;
    native_handle_t* const handle;
    size_t const size;
    uint8_t* address = nullptr;
};

/** The records that one call passes. */
struct Client::Request {
    ImageBuffer input = {};
    ImageBuffer outputs[2] = {};
    PostProcessParams params = {};
};

Client::Client(Ledger& ledger, Isp& isp, Graphics& graphics, PlannedThreeAStore& threeA)
    : mLedger(ledger), mIsp(isp), mGraphics(graphics), mThreeA(threeA) {
    for (size_t const bytes : {kMemoryBytes, kMemoryBytes, kMemoryBytes, kMemoryBytes,
                               size_t{kBlobBytes}, kTinyBytes, kTinyBytes}) {
        mMemory.push_back(std::make_unique<Memory>(bytes));
    }
    mMemory[kBad]->handle->data[0] = -1;  // cannot be mapped
    for (int i = 0; i < kNoSettings; ++i) {
        mSettings.push_back(makeSettings(static_cast<Settings>(i)));
    }
    mSettings.push_back(nullptr);
}

Client::~Client() {
    for (camera_metadata* const settings : mSettings) {
        free_camera_metadata(settings);
    }
}

uint64_t Client::descriptorsOf(Plan const& plan) {
    if (plan.settings == kNoSettings) {
        return 0;
    }
    bool const hasIndex = plan.settings == kWithIndex;
    bool const isAllocated = plan.buffers != BufferFault::AllocateTuning;
    bool const input = hasIndex && plan.threeA == ThreeA::Given
                               ? true
                               : plan.settings == kWithTuningBytes && isAllocated;
    bool const output = plan.configuration.stage == Stage::RawToYuv &&
                        (plan.threeA == ThreeA::Given || isAllocated);
    return uint64_t{input} + uint64_t{output};
}

void Client::create(quenOfflineDevice& device, Configuration const& configuration) {
    Plan plan = {};
    plan.configuration = configuration;
    Request request;
    fill(request, plan);
    auto const stream = [](ImageBuffer const& buffer, bool isOutput) {
        return StreamConfig{buffer.streamId, buffer.format, static_cast<uint32_t>(buffer.width),
                            static_cast<uint32_t>(buffer.height), isOutput};
    };
    SessionParams params = {
            {stream(request.input, false)}, {stream(request.outputs[0], true)}, mSettings[0]};
    device.create(&params);
}

/** Describes a plan's buffers. */
void Client::fill(Request& request, Plan const& plan) {
    Configuration const& wanted = plan.configuration;
    bool const fromRaw = wanted.stage == Stage::RawToYuv;
    auto const buffer = [&](int32_t stream, int32_t format, Buffer which) {
        int const size = format == kBlob ? static_cast<int>(kBlobBytes)
                                         : pictureBytes(format, wanted.width, wanted.height);
        return ImageBuffer{stream,       format,        size,
                           wanted.width, wanted.height, mMemory[which]->handle};
    };
    bool const badInput = plan.buffers == BufferFault::MapInput;
    bool const badJpeg = plan.buffers == BufferFault::MapJpeg;
    if (fromRaw) {
        request.input = buffer(1, kRaw10, kRawInput);
        request.outputs[0] = buffer(2, kYuv, kYuvOutput);
        request.outputs[1] = buffer(3, kYuv, kSecondOutput);
    } else {
        request.input = buffer(4, wanted.passThrough ? kNv21 : kYuv, badInput ? kBad : kYuvInput);
        request.outputs[0] = buffer(5, kBlob, badJpeg ? kBad : kJpegOutput);
    }
    request.params.input_buffer = &request.input;
    request.params.output_buffers = {&request.outputs[0]};
    if (plan.twoOutputs) {
        request.params.output_buffers.push_back(&request.outputs[1]);
    }
    request.params.settings = mSettings[plan.settings];

    switch (plan.call) {
        case Call::Good:
        case Call::NullParams:
            break;
        case Call::NullInput:
            request.params.input_buffer = nullptr;
            break;
        case Call::NoOutputs:
            request.params.output_buffers.clear();
            break;
        case Call::NullOutput:
            request.params.output_buffers[0] = nullptr;
            break;
        case Call::SizeBelowOne:
            request.input.width = 0;
            break;
        case Call::BufferTooSmall:
            request.input.size = kTinyBytes;
            request.input.buffer = mMemory[kTiny]->handle;
            break;
    }
}

uint32_t Client::numberFor(Plan const& plan, Circumstances const& circumstances) {
    if (circumstances.secondOf != 0) {
        mLedger.add(Count::SecondsOfANumber);
        return circumstances.secondOf;
    }
    uint32_t number = circumstances.number;
    if (number == 0 && plan.reusesLastNumber) {
        number = kHardened && mLastWaitNumber != 0 ? std::exchange(mLastWaitNumber, 0)
                                                   : mLedger.takeFreeNumber();
    }
    if (number != 0) {
        mLedger.add(Count::NumbersUsedAgain);
        return number;
    }
    return ++mLatestNumber;
}

Client::Outcome Client::submit(quenOfflineDevice& device, Plan const& plan,
                               Circumstances const& circumstances) {
    uint32_t const number = numberFor(plan, circumstances);
    AccountRef const account = mLedger.openAccount(plan, number, circumstances.inDoomedSession);
    account->isSecond = circumstances.secondOf != 0;
    account->numberIsTaken = circumstances.numberIsTaken;
    account->isUnconnected = circumstances.isUnconnected;
    mIsp.expect(account);
    mGraphics.setPlan(plan);
    mThreeA.set(plan.threeA);
    memset(mMemory[kJpegOutput]->address, 0, sizeof(number));

    Request request;
    fill(request, plan);
    request.params.frame_number = static_cast<int32_t>(number);
    sp<Listener> listener = plan.waits ? nullptr : new Listener(account);
    auto const start = std::chrono::steady_clock::now();
    int const result =
            device.process(plan.call == Call::NullParams ? nullptr : &request.params, listener);
    std::chrono::duration<double> const took = std::chrono::steady_clock::now() - start;
    listener = nullptr;

    account->result = result;
    account->nearDeath = circumstances.moduleMayBeDead || plan.moduleDies;
    bool const wasSubmitted = mIsp.stopExpecting();
    bool const timedOut = plan.waits && wasSubmitted && !isRefused(*account) &&
                          (kHardened ? result == kTimedOut : took.count() >= kLongForAWait);
    account->returned = plan.waits && !timedOut;
    judge(*account, took.count(), timedOut, circumstances);
    // Of a call that was refused, an answer may still be on its way.
    if (kHardened && account->returned && !isRefused(*account) && account->answersInTime > 0 &&
        plan.copies == 1) {
        account->numberIsTaken = true;
        mLastWaitNumber = number;
    }
    bool const isRecorded = result >= 0 && wasSubmitted && !account->isSecond;
    bool const refusedStays = !kHardened && isRefused(*account) && plan.fate != Fate::ReplyLost;
    bool const dropped = plan.fate == Fate::Dropped && !isRefused(*account);
    return {result, number, isRecorded && (refusedStays || (dropped && !plan.waits)),
            dropped && plan.waits};
}

void Client::judge(Account const& account, double seconds, bool timedOut,
                   Circumstances const& circumstances) {
    Plan const& plan = account.plan;
    int const result = account.result;
    if (!isRightReturn(account, timedOut)) {
        mLedger.blame(Count::WrongReturn, account, "process returned what it must not");
    }
    if (result == kInvalidArgument || result == kNoDevice) {
        mLedger.add(Count::CallsRefusedEarly);
    }
    bool const hasNoDeviceBuffer =
            plan.waits && plan.buffers == BufferFault::AllocateJpeg && result == kNoJpeg;
    if (!kHardened && hasNoDeviceBuffer) {
        mLedger.add(Count::AbandonedMappings);  // left behind on purpose
    }
    if (timedOut && (account.answersInTime > 0 || account.nearDeath)) {
        if (kHardened) {
            mLedger.blame(Count::UnearnedTimeout, account, "stood for its time-out");
        } else {
            mLedger.add(Count::LostSignals);
        }
    } else if (timedOut) {
        mLedger.add(Count::EarnedTimeouts);
    }
    if (!timedOut && seconds >= kLongForADrain) {
        if (circumstances.mustGiveUp || circumstances.mayGiveUp) {
            mLedger.add(Count::EarnedDrains);
        } else {
            mLedger.blame(Count::UnearnedDrain, account, "stood for a drained wait");
        }
    } else if (circumstances.mustGiveUp) {
        mLedger.blame(Count::WrongReturn, account, "did not wait for what is outstanding");
    }
    if (!plan.waits) {
        return;
    }
    uint32_t stamp = 0;
    memcpy(&stamp, mMemory[kJpegOutput]->address, sizeof(stamp));
    if (result >= static_cast<int>(sizeof(stamp)) && !timedOut && stamp != account.number) {
        mLedger.blame(Count::WrongContent, account, "returned a size, but not its JPEG");
    } else if (!timedOut) {
        mLedger.add(Count::Returned);
    }
}

}  // namespace quensoak
