#include "ReplayClient.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <aidl/android/hardware/graphics/common/PlaneLayoutComponentType.h>
#include <quenOfflineDevice/quenOfflineDevice.h>
#include <system/camera_metadata.h>
#include <system/graphics.h>

#include "Lookahead.h"
#include "LostTransport.h"
#include "ReplayBuffer.h"
#include "host/base/Properties.h"
#include "host/metadata/EventText.h"
#include "host/metadata/IspMetadataReader.h"
#include "quenRecorder/CrossingRecord.h"

using android::sp;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;
using vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;
using PostProcStatus = vendor::quen::hardware::camera::quenpostproc::V1_0::Status;

namespace quen::replay {
namespace {

using recording::ClientCall;
using recording::Crossing;
using recording::NotifyCall;

constexpr char kTimeoutProperty[] = "vendor.debug.camera.jpeg.timeout";
constexpr int kLongTimeoutSeconds = 10;  // for a result that came
constexpr uint32_t kTag3AIndex = 0xc00c0018;

/** A camera_metadata of recorded bytes; null when there is none. */
class Metadata {
  public:
    Metadata(bool isThere, std::string const& bytes) {
        if (isThere) {
            mMemory.resize(bytes.size() / sizeof(uint64_t) + 1);
            std::memcpy(mMemory.data(), bytes.data(), bytes.size());
        }
    }

    camera_metadata* get() {
        return mMemory.empty() ? nullptr : reinterpret_cast<camera_metadata*>(mMemory.data());
    }

    /** The first item of an int32 tag, 0 without one. */
    int32_t int32Of(uint32_t tag) {
        camera_metadata_ro_entry_t entry = {};
        bool const isThere = !mMemory.empty() &&
                             find_camera_metadata_ro_entry(get(), tag, &entry) == 0 &&
                             entry.type == TYPE_INT32 && entry.count > 0;
        return isThere ? entry.data.i32[0] : 0;
    }

  private:
    std::vector<uint64_t> mMemory;
};

template <typename Streams>
std::vector<StreamConfig> streamsOf(Streams const& recorded) {
    std::vector<StreamConfig> streams;
    for (recording::StreamConfig const& stream : recorded) {
        streams.push_back({stream.stream_id(), stream.format(), stream.width(), stream.height(),
                           stream.is_output()});
    }
    return streams;
}

/** Where the planes of a 4:2:0 picture lie: that of the one or two chroma planes comes first. */
std::optional<host::Layout> chromaLayout(recording::Graphic const& picture) {
    using Component = aidl::android::hardware::graphics::common::PlaneLayoutComponentType;
    if (picture.planes_size() < 2 || picture.planes(1).components_size() == 0) {
        return std::nullopt;
    }
    bool const isPlanar = picture.planes_size() > 2;
    recording::Plane const* first = &picture.planes(1);
    if (isPlanar && picture.planes(2).offset() < first->offset()) {
        first = &picture.planes(2);
    }
    recording::Component const* component = &first->components(0);
    for (recording::Component const& other : first->components()) {
        component = other.offset_bits() < component->offset_bits() ? &other : component;
    }
    bool const isCbFirst = component->type() == static_cast<int64_t>(Component::CB);
    if (isPlanar) {
        return isCbFirst ? host::Layout::I420 : host::Layout::Yv12;
    }
    return isCbFirst ? host::Layout::Nv12 : host::Layout::Nv21;
}

/**
 * The index of the 3A buffer that the library got for a call: from the settings after it, or, where
 * the recording is cut off before those, from what the ISP was given.
 */
int32_t indexOf3A(ClientCall const& call, Lookahead const& ahead) {
    host::IspMetadataReader given;
    if (ahead.returned == nullptr && ahead.request != nullptr &&
        given.parse(ahead.request->settings().data(), ahead.request->settings().size())) {
        return given.int32Of(kTag3AIndex).value_or(0);
    }
    bool const hasChanged = ahead.returned != nullptr && ahead.returned->has_metadata();
    return hasChanged ? Metadata(true, ahead.returned->metadata()).int32Of(kTag3AIndex)
                      : Metadata(call.has_metadata(), call.metadata()).int32Of(kTag3AIndex);
}

Crossing emptyReturn() {
    Crossing crossing;
    crossing.mutable_client_return();
    return crossing;
}

}  // namespace

/** A client's callback for one request. */
class ReplayClient::Callback final : public IQuenPostProcCallback {
  public:
    explicit Callback(uint64_t processCall) : mProcessCall(processCall) {}

    Return<void> notifyRequestResult(uint32_t number, PostProcStatus status) override {
        return take(NotifyCall::END, number, status, nullptr);
    }
    Return<void> notifyResultMetadata(uint32_t number, hidl_vec<uint8_t> const& metadata,
                                      PostProcStatus status) override {
        return take(NotifyCall::METADATA, number, status, &metadata);
    }

  private:
    Return<void> take(NotifyCall::Kind kind, uint32_t number, PostProcStatus status,
                      hidl_vec<uint8_t> const* metadata) const {
        Crossing crossing;
        recorder::describeNotification(kind, mProcessCall, number, status, metadata,
                                       *crossing.mutable_notify_call());
        ThreadReplay& thread = ThreadReplay::current();
        auto const& answer = thread.answerOf(thread.meet(crossing, 0)).notify_return();
        if (answer.has_transport_error()) {
            return lostTransport(answer.transport_error());
        }
        return Void();
    }

    uint64_t const mProcessCall;
};

/** The records and buffers of a request. */
class ReplayClient::Request {
  public:
    explicit Request(ClientCall const& call) : mMetadata(call.has_metadata(), call.metadata()) {
        mParams.session = this;
        mParams.frame_number = call.frame_number();
        mParams.settings = mMetadata.get();
        mParams.input_buffer = add(call.input());
        for (recording::ImageBuffer const& output : call.outputs()) {
            mParams.output_buffers.push_back(add(output));
        }
    }

    PostProcessParams const& params() const { return mParams; }

  private:
    ImageBuffer* add(recording::ImageBuffer const& recorded) {
        if (recorded.is_null()) {
            return nullptr;
        }
        native_handle* const handle = mBuffers.emplace_back(recorded).handle();
        return &mImages.emplace_back(ImageBuffer{recorded.stream_id(), recorded.format(),
                                                 recorded.size(), recorded.width(),
                                                 recorded.height(), handle});
    }

    Metadata mMetadata;
    std::deque<ReplayBuffer> mBuffers;
    std::deque<ImageBuffer> mImages;
    PostProcessParams mParams = {};
};

/** A device object of the library, with what it may still use. */
struct ReplayClient::Session {
    std::deque<Request> requests;
    std::unique_ptr<quenOfflineDevice> device;
};

ReplayClient::ReplayClient(ReplayIsp& isp, sp<host::MemfdAllocator> const& allocator,
                           ReplayThreeA& threeA)
    : mIsp(isp), mAllocator(allocator), mThreeA(threeA) {}

ReplayClient::~ReplayClient() = default;

ReplayClient::Session& ReplayClient::session(uint32_t number) {
    host::MutexLock const lock(mLock);
    std::unique_ptr<Session>& session = mSessions[number];
    if (session == nullptr) {
        session = std::make_unique<Session>();
    }
    return *session;
}

void ReplayClient::perform(ThreadReplay& thread, size_t index) {
    Crossing const& crossing = thread.at(index);
    ClientCall::Operation const operation = crossing.client_call().operation();
    thread.order().awaitTurn(index);  // another thread may have to construct its object
    switch (operation) {
        case ClientCall::CONSTRUCT:
            construct(thread, index);
            break;
        case ClientCall::CREATE:
            create(thread, index);
            break;
        case ClientCall::CONFIG:
            config(thread, index);
            break;
        case ClientCall::PROCESS:
            process(thread, index);
            break;
        case ClientCall::DESTRUCT:
            destruct(thread, index);
            break;
        default:
            simple(thread, index);
            break;
    }
}

void ReplayClient::construct(ThreadReplay& thread, size_t index) {
    thread.begin(index);
    session(thread.at(index).session()).device = std::make_unique<quenOfflineDevice>();
    thread.meet(emptyReturn(), thread.at(index).call());
}

void ReplayClient::create(ThreadReplay& thread, size_t index) {
    ClientCall const& call = thread.at(index).client_call();
    Metadata metadata(call.has_metadata(), call.metadata());
    SessionParams params = {streamsOf(call.input_streams()), streamsOf(call.output_streams()),
                            metadata.get()};
    quenOfflineDevice& device = *session(thread.at(index).session()).device;
    thread.begin(index);
    device.create(call.has_params() ? &params : nullptr);
    thread.meet(emptyReturn(), thread.at(index).call());
}

void ReplayClient::config(ThreadReplay& thread, size_t index) {
    ClientCall const& call = thread.at(index).client_call();
    Metadata metadata(call.has_metadata(), call.metadata());
    quenOfflineDevice& device = *session(thread.at(index).session()).device;
    thread.begin(index);
    device.config(streamsOf(call.input_streams()), streamsOf(call.output_streams()),
                  metadata.get());
    thread.meet(emptyReturn(), thread.at(index).call());
}

/**
 * Sets what a request depends on beside its records: time-out, application, the order of chroma in
 * device buffers, 3A buffers.
 */
void ReplayClient::prepareCircumstances(ThreadReplay& thread, size_t index) {
    ClientCall const& call = thread.at(index).client_call();
    Lookahead const ahead = lookAhead(thread.order(), index);
    if (call.has_jpeg_timeout_seconds()) {
        int const seconds = ahead.isAnswered
                                    ? std::max(call.jpeg_timeout_seconds(), kLongTimeoutSeconds)
                                    : call.jpeg_timeout_seconds();
        host::setProperty(kTimeoutProperty, std::to_string(seconds));
    }
    if (call.has_app_name()) {
        host::setEventString("APP_NAME", call.app_name());
    } else {
        host::clearEventString("APP_NAME");
    }
    if (ahead.request != nullptr && ahead.request->inputs_size() > 0) {
        recording::Graphic const& picture = ahead.request->inputs(0).buffer().graphic();
        auto const layout = chromaLayout(picture);
        if (layout && picture.format() == HAL_PIXEL_FORMAT_YCRCB_420_SP) {
            mAllocator->setLayout(host::MemfdAllocator::PixelFormat::YCRCB_420_SP, *layout);
        }
    }
    mThreeA.expect(ahead.request, indexOf3A(call, ahead));
}

void ReplayClient::process(ThreadReplay& thread, size_t index) {
    Crossing const& crossing = thread.at(index);
    ClientCall const& call = crossing.client_call();
    Session& played = session(crossing.session());
    Request& request = played.requests.emplace_back(call);
    PostProcessParams const& params = request.params();
    sp<IQuenPostProcCallback> callback;
    if (call.has_callback()) {
        callback = new Callback(crossing.call());
    }
    prepareCircumstances(thread, index);
    mIsp.setWaits(callback == nullptr);
    thread.begin(index);
    Crossing answer = emptyReturn();
    recording::ClientReturn& returned = *answer.mutable_client_return();
    int const result = played.device->process(call.has_params() ? &params : nullptr, callback);
    returned.set_result(result);
    int const unexpected = mThreeA.unexpected();
    if (unexpected != 0) {
        thread.comparison().add(index, crossing,
                                "3A buffers that the ISP was not given: recorded none, now " +
                                        std::to_string(unexpected));
    }
    recorder::describeMetadata(params.settings, returned);
    if (returned.metadata() == call.metadata()) {
        returned.clear_metadata();
    }
    if (callback == nullptr) {
        recorder::describeJpeg(params, result, returned);
    }
    thread.meet(answer, crossing.call());
}

/** A call without records. */
void ReplayClient::simple(ThreadReplay& thread, size_t index) {
    Crossing const& crossing = thread.at(index);
    quenOfflineDevice& device = *session(crossing.session()).device;
    thread.begin(index);
    switch (crossing.client_call().operation()) {
        case ClientCall::FLUSH:
            device.flush();
            break;
        case ClientCall::DESTROY:
            device.destroy();
            break;
        default:
            device.setOfflineCallback(nullptr);  // it is not kept, whatever it is
            break;
    }
    thread.meet(emptyReturn(), crossing.call());
}

void ReplayClient::destruct(ThreadReplay& thread, size_t index) {
    Crossing const& crossing = thread.at(index);
    thread.begin(index);
    session(crossing.session()).device = nullptr;
    thread.meet(emptyReturn(), crossing.call());
    mIsp.forget(crossing.session());
    std::unique_ptr<Session> ended;
    host::MutexLock const lock(mLock);
    ended = std::move(mSessions[crossing.session()]);
    mSessions.erase(crossing.session());
}

}  // namespace quen::replay
