#include "quenRecorder/RecordedCallback.h"

#include <utility>

#include "quenRecorder/CrossingRecord.h"

using android::sp;
using android::hardware::hidl_vec;
using android::hardware::Return;

namespace quen::recorder {

using recording::Crossing;
using recording::NotifyCall;

RecordedCallback::RecordedCallback(std::shared_ptr<Recorder> recorder, uint32_t session,
                                   uint64_t processCall, sp<IQuenPostProcCallback> const& client)
    : mRecorder(std::move(recorder)),
      mSession(session),
      mProcessCall(processCall),
      mClient(client) {}

/**
 * Records a notification and its answer around the notification itself.
 *
 * @param metadata null when the notification has none
 */
template <typename Forward>
Return<void> RecordedCallback::record(NotifyCall::Kind kind, uint32_t number, Status status,
                                      hidl_vec<uint8_t> const* metadata, Forward const& forward) {
    Crossing crossing;
    crossing.set_session(mSession);
    crossing.set_call(mRecorder->newCall());
    describeNotification(kind, mProcessCall, number, status, metadata,
                         *crossing.mutable_notify_call());
    mRecorder->write(crossing);
    Return<void> told = forward();
    Crossing answer;
    answer.set_session(mSession);
    answer.set_call(crossing.call());
    recording::NotifyReturn& returned = *answer.mutable_notify_return();
    // Looked at here, and by the caller once more.
    if (!told.isOk()) {
        returned.set_transport_error(told.description());
    }
    mRecorder->write(answer);
    return told;
}

Return<void> RecordedCallback::notifyRequestResult(uint32_t requestNumber, Status status) {
    return record(NotifyCall::END, requestNumber, status, nullptr,
                  [&] { return mClient->notifyRequestResult(requestNumber, status); });
}

Return<void> RecordedCallback::notifyResultMetadata(uint32_t requestNumber,
                                                    hidl_vec<uint8_t> const& metadata,
                                                    Status status) {
    return record(NotifyCall::METADATA, requestNumber, status, &metadata,
                  [&] { return mClient->notifyResultMetadata(requestNumber, metadata, status); });
}

}  // namespace quen::recorder
