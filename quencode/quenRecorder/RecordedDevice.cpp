#include "quenRecorder/RecordedDevice.h"

#include <string>
#include <utility>

#include <cutils/properties.h>
#include <nscam/ATMsEventMgr.h>

#include "quenRecorder/CallScope.h"
#include "quenRecorder/CrossingRecord.h"
#include "quenRecorder/RecordedCallback.h"

using android::sp;
using vendor::mediatek::hardware::camera::isphal::V1_0::ICallback;
using vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback;

namespace quen::recorder {
namespace {

using recording::ClientCall;
using recording::ClientReturn;
using recording::Crossing;

constexpr char kTimeoutProperty[] = "vendor.debug.camera.jpeg.timeout";
constexpr int32_t kDefaultTimeoutSeconds = 4;

/** Puts in what a request depends on beside its records. */
void describeCircumstances(bool waits, ClientCall& call) {
    std::string appName;
    if (NSCam::ATMsEventMgr::getInstance()->getString("APP_NAME", appName)) {
        call.set_app_name(appName);
    }
    if (waits) {
        call.set_jpeg_timeout_seconds(property_get_int32(kTimeoutProperty, kDefaultTimeoutSeconds));
    }
}

ClientCall& begin(Crossing& crossing, ClientCall::Operation operation) {
    crossing.mutable_client_call()->set_operation(operation);
    return *crossing.mutable_client_call();
}

}  // namespace

RecordedDevice::RecordedDevice()
    : mRecorder(Recorder::current()), mSession(mRecorder == nullptr ? 0 : mRecorder->newSession()) {
    if (mRecorder == nullptr) {
        mDevice.emplace();
        return;
    }
    Crossing crossing;
    begin(crossing, ClientCall::CONSTRUCT);
    record(crossing, [&](ClientReturn&) { mDevice.emplace(); });
}

RecordedDevice::~RecordedDevice() {
    if (mRecorder == nullptr) {
        return;
    }
    Crossing crossing;
    begin(crossing, ClientCall::DESTRUCT);
    record(crossing, [&](ClientReturn&) { mDevice.reset(); });
}

/**
 * Records a call and its return around the call itself.
 *
 * @param forward calls the library and completes the ClientReturn that it is given
 */
template <typename Forward>
void RecordedDevice::record(Crossing& call, Forward const& forward) {
    Crossing answer;
    ClientReturn& returned = *answer.mutable_client_return();
    if (call.call() == 0) {
        call.set_call(mRecorder->newCall());
    }
    call.set_session(mSession);
    answer.set_call(call.call());
    answer.set_session(mSession);
    mRecorder->write(call);
    {
        CallScope const scope(mSession);
        forward(returned);
    }
    mRecorder->write(answer);
}

void RecordedDevice::create(SessionParams* params) {
    if (mRecorder == nullptr) {
        mDevice->create(params);
        return;
    }
    Crossing crossing;
    ClientCall& call = begin(crossing, ClientCall::CREATE);
    call.set_has_params(params != nullptr);
    if (params != nullptr) {
        describeStreams(params->input_streams, params->output_streams, call);
        describeMetadata(params->metadata, call);
    }
    record(crossing, [&](ClientReturn&) { mDevice->create(params); });
}

void RecordedDevice::config(std::vector<StreamConfig> const& in,
                            std::vector<StreamConfig> const& out, camera_metadata const* meta) {
    if (mRecorder == nullptr) {
        mDevice->config(in, out, meta);
        return;
    }
    Crossing crossing;
    ClientCall& call = begin(crossing, ClientCall::CONFIG);
    describeStreams(in, out, call);
    describeMetadata(meta, call);
    record(crossing, [&](ClientReturn&) { mDevice->config(in, out, meta); });
}

/** The settings are told again after the call when the library has written into them. */
int RecordedDevice::process(PostProcessParams const* params, sp<IQuenPostProcCallback> callback) {
    if (mRecorder == nullptr) {
        return mDevice->process(params, std::move(callback));
    }
    Crossing crossing;
    ClientCall& call = begin(crossing, ClientCall::PROCESS);
    call.set_has_params(params != nullptr);
    call.set_has_callback(callback != nullptr);
    describeCircumstances(callback == nullptr, call);
    if (params != nullptr) {
        describeProcess(*params, mRecorder->pictures() == Pictures::Whole, call);
    }
    crossing.set_call(mRecorder->newCall());
    if (callback != nullptr) {
        callback = new RecordedCallback(mRecorder, mSession, crossing.call(), callback);
    }
    bool const waits = callback == nullptr;
    int result = 0;
    record(crossing, [&](ClientReturn& answer) {
        result = mDevice->process(params, std::move(callback));
        answer.set_result(result);
        if (params == nullptr) {
            return;
        }
        describeMetadata(params->settings, answer);
        if (answer.metadata() == call.metadata()) {
            answer.clear_metadata();
        }
        if (waits) {
            describeJpeg(*params, result, answer);
        }
    });
    return result;
}

void RecordedDevice::flush() {
    if (mRecorder == nullptr) {
        mDevice->flush();
        return;
    }
    Crossing crossing;
    begin(crossing, ClientCall::FLUSH);
    record(crossing, [&](ClientReturn&) { mDevice->flush(); });
}

void RecordedDevice::destroy() {
    if (mRecorder == nullptr) {
        mDevice->destroy();
        return;
    }
    Crossing crossing;
    begin(crossing, ClientCall::DESTROY);
    record(crossing, [&](ClientReturn&) { mDevice->destroy(); });
}

void RecordedDevice::setOfflineCallback(sp<ICallback> const& callback) {
    if (mRecorder == nullptr) {
        mDevice->setOfflineCallback(callback);
        return;
    }
    Crossing crossing;
    begin(crossing, ClientCall::SET_OFFLINE_CALLBACK).set_has_callback(callback != nullptr);
    record(crossing, [&](ClientReturn&) { mDevice->setOfflineCallback(callback); });
}

}  // namespace quen::recorder
