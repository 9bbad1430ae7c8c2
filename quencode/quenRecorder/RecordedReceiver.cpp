#include "quenRecorder/RecordedReceiver.h"

#include <utility>

#include <quenOfflineDevice/bridge/ClientCallback.h>

#include "quenRecorder/CrossingRecord.h"

using android::sp;
using android::wp;
using android::hardware::Return;
using android::hardware::Void;
using android::hidl::base::V1_0::IBase;

namespace quen::recorder {

using recording::Crossing;
using recording::ResultCall;

RecordedReceiver::RecordedReceiver(std::shared_ptr<Recorder> recorder, uint32_t session,
                                   sp<ICallback> const& library,
                                   std::shared_ptr<SubmittedOutputs> outputs)
    : mRecorder(std::move(recorder)),
      mSession(session),
      mLibrary(library),
      mOutputs(std::move(outputs)) {}

/** Records a call of the ISP and its answer around the call itself. */
template <typename Forward>
Return<void> RecordedReceiver::record(Crossing& crossing, Forward const& forward) {
    crossing.set_session(mSession);
    crossing.set_call(mRecorder->newCall());
    mRecorder->write(crossing);
    Return<void> taken = forward();
    Crossing answer;
    answer.set_session(mSession);
    answer.set_call(crossing.call());
    recording::ResultReturn& returned = *answer.mutable_result_return();
    if (!taken.isOk()) {
        returned.set_transport_error(taken.description());
    }
    mRecorder->write(answer);
    return taken;
}

Return<void> RecordedReceiver::processResult(ISPResult const& result) {
    sp<RecordedReceiver> const self = this;  // the ISP may let go of it meanwhile
    Crossing crossing;
    ResultCall& call = *crossing.mutable_result_call();
    call.set_kind(ResultCall::FINAL);
    describeResult(result, call);
    bool const holdsPictures = mRecorder->pictures() == Pictures::Whole;
    for (SubmittedOutputs::Output const& output : mOutputs->take(result.reqNumber)) {
        describeOutput(output.picture.getNativeHandle(), output.tuning.getNativeHandle(),
                       holdsPictures, *call.add_outputs());
    }
    return record(crossing, [&] { return mLibrary->processResult(result); });
}

Return<void> RecordedReceiver::processEarlyResult(ISPResult const& result) {
    Crossing crossing;
    ResultCall& call = *crossing.mutable_result_call();
    call.set_kind(ResultCall::EARLY);
    describeResult(result, call);
    return record(crossing, [&] { return mLibrary->processEarlyResult(result); });
}

void RecordedReceiver::serviceDied(uint64_t cookie, wp<IBase> const& who) {
    Crossing crossing;
    ResultCall& call = *crossing.mutable_result_call();
    call.set_kind(ResultCall::DEATH);
    call.set_cookie(cookie);
    Return<void> const taken = record(crossing, [&] {
        static_cast<HalInterface::ClientCallback*>(mLibrary.get())->serviceDied(cookie, who);
        return Void();
    });
    (void)taken.isOk();
}

}  // namespace quen::recorder
