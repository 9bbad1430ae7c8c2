#include "quenRecorder/RecordedIspDevice.h"

#include <utility>

#include "quenRecorder/CrossingRecord.h"
#include "quenRecorder/RecordedReceiver.h"
#include "quenRecorder/SubmittedOutputs.h"

using android::sp;
using android::hardware::hidl_vec;

namespace quen::recorder {

using recording::Crossing;
using recording::IspCall;

RecordedIspDevice::RecordedIspDevice(std::shared_ptr<Recorder> recorder, uint32_t session,
                                     sp<IDevice> const& device)
    : mRecorder(std::move(recorder)),
      mSession(session),
      mDevice(device),
      mOutputs(std::make_shared<SubmittedOutputs>()) {}

RecordedIspDevice::~RecordedIspDevice() = default;

/**
 * Records a call of the library and its answer around the call itself. The answer is written
 * without waiting: an ISP may take the sleep of a thread that has submitted for its wait for the
 * result.
 */
template <typename Forward>
RecordedIspDevice::StatusReturn RecordedIspDevice::record(Crossing& crossing,
                                                          Forward const& forward) {
    crossing.set_session(mSession);
    crossing.set_call(mRecorder->newCall());
    mRecorder->write(crossing);
    StatusReturn answered = forward();
    Crossing answer;
    answer.set_session(mSession);
    answer.set_call(crossing.call());
    recording::IspReturn& returned = *answer.mutable_isp_return();
    // isOk would count as the caller's look at a failure.
    if (answered.isOkUnchecked()) {
        returned.set_status(static_cast<uint32_t>(static_cast<isphal::Status>(answered)));
    } else {
        returned.set_transport_error(answered.description());
    }
    mRecorder->writeWithoutWaiting(answer);
    return answered;
}

RecordedIspDevice::StatusReturn RecordedIspDevice::configureISPDevice(
        ISPStreamConfiguration const& config, sp<ICallback> const& callback) {
    Crossing crossing;
    IspCall& call = *crossing.mutable_isp_call();
    call.set_operation(IspCall::CONFIGURE);
    call.set_has_callback(callback != nullptr);
    describeConfiguration(config, call);
    sp<ICallback> receiver;
    if (callback != nullptr) {
        receiver = new RecordedReceiver(mRecorder, mSession, callback, mOutputs);
    }
    return record(crossing, [&] { return mDevice->configureISPDevice(config, receiver); });
}

RecordedIspDevice::StatusReturn RecordedIspDevice::processISPRequest(
        hidl_vec<ISPRequest> const& requests) {
    Crossing crossing;
    IspCall& call = *crossing.mutable_isp_call();
    call.set_operation(IspCall::REQUEST);
    for (ISPRequest const& request : requests) {
        describeRequest(request, *call.add_requests());
        mOutputs->add(request);
    }
    return record(crossing, [&] {
        StatusReturn submitted = mDevice->processISPRequest(requests);
        if (!submitted.isOkUnchecked() || submitted != isphal::Status::OK) {
            for (ISPRequest const& request : requests) {
                mOutputs->takeBack(request.requestNumber);
            }
        }
        return submitted;
    });
}

RecordedIspDevice::StatusReturn RecordedIspDevice::flush() {
    Crossing crossing;
    crossing.mutable_isp_call()->set_operation(IspCall::FLUSH);
    return record(crossing, [&] { return mDevice->flush(); });
}

/** No result comes after the close: what was submitted and not answered is let go. */
RecordedIspDevice::StatusReturn RecordedIspDevice::closeISPDevice() {
    Crossing crossing;
    crossing.mutable_isp_call()->set_operation(IspCall::CLOSE);
    StatusReturn closed = record(crossing, [&] { return mDevice->closeISPDevice(); });
    mOutputs->clear();
    return closed;
}

}  // namespace quen::recorder
