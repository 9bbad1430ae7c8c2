#include "ReplayIsp.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include <quenOfflineDevice/bridge/ClientCallback.h>

#include "LostTransport.h"
#include "ReplayBuffer.h"
#include "quenRecorder/CrossingRecord.h"

using android::sp;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;

namespace quen::replay {
namespace {

namespace isphal = vendor::mediatek::hardware::camera::isphal::V1_0;

using host::isp::ClientThread;
using recording::Crossing;
using recording::IspCall;
using recording::IspReturn;
using recording::ResultCall;

constexpr char kModuleInstance[] = "internal/0";
constexpr auto kLongestWayToTheWait = std::chrono::milliseconds(500);

thread_local bool tWaits = false;

Crossing callOf(IspCall::Operation operation) {
    Crossing crossing;
    crossing.mutable_isp_call()->set_operation(operation);
    return crossing;
}

Return<isphal::Status> statusOf(IspReturn const& answer) {
    if (answer.has_transport_error()) {
        return lostTransport(answer.transport_error());
    }
    return static_cast<isphal::Status>(answer.status());
}

}  // namespace

/** A device that answers as recorded. */
class ReplayIsp::Device final : public isphal::IDevice {
  public:
    using StatusReturn = Return<isphal::Status>;

    explicit Device(std::shared_ptr<Session> session, host::Mutex& lock)
        : mSession(std::move(session)), mLock(lock) {}

    StatusReturn configureISPDevice(isphal::ISPStreamConfiguration const& config,
                                    sp<ICallback> const& callback) override {
        Crossing call = callOf(IspCall::CONFIGURE);
        call.mutable_isp_call()->set_has_callback(callback != nullptr);
        recorder::describeConfiguration(config, *call.mutable_isp_call());
        ThreadReplay& thread = ThreadReplay::current();
        size_t const index = thread.meet(call, 0);
        {
            host::MutexLock const lock(mLock);
            mSession->callback = callback;
        }
        return statusOf(thread.answerOf(index).isp_return());
    }

    StatusReturn processISPRequest(hidl_vec<isphal::ISPRequest> const& requests) override {
        Crossing call = callOf(IspCall::REQUEST);
        for (isphal::ISPRequest const& request : requests) {
            recorder::describeRequest(request, *call.mutable_isp_call()->add_requests());
            mSession->outputs.add(request);
            if (tWaits) {
                host::MutexLock const lock(mLock);
                mSession->waiting.emplace(request.requestNumber, ClientThread::current());
            }
        }
        ThreadReplay& thread = ThreadReplay::current();
        IspReturn const& answer = thread.answerOf(thread.meet(call, 0)).isp_return();
        if (answer.has_transport_error() || answer.status() != 0) {
            for (isphal::ISPRequest const& request : requests) {
                mSession->outputs.takeBack(request.requestNumber);
            }
        }
        return statusOf(answer);
    }

    StatusReturn flush() override {
        ThreadReplay& thread = ThreadReplay::current();
        return statusOf(thread.answerOf(thread.meet(callOf(IspCall::FLUSH), 0)).isp_return());
    }

    StatusReturn closeISPDevice() override {
        ThreadReplay& thread = ThreadReplay::current();
        return statusOf(thread.answerOf(thread.meet(callOf(IspCall::CLOSE), 0)).isp_return());
    }

  private:
    std::shared_ptr<Session> const mSession;
    host::Mutex& mLock;
};

class ReplayIsp::Module final : public isphal::IISPModule {
  public:
    explicit Module(ReplayIsp& isp) : mIsp(isp) {}

    // NOLINTNEXTLINE(performance-unnecessary-value-param): the interface's signature
    Return<void> openISPDevice(openISPDevice_cb cb) override {
        ThreadReplay& thread = ThreadReplay::current();
        size_t const index = thread.meet(callOf(IspCall::OPEN), 0);
        IspReturn const& answer = thread.answerOf(index).isp_return();
        sp<isphal::IDevice> device;
        if (answer.has_device()) {
            device = new Device(mIsp.session(thread.at(index).session()), mIsp.mLock);
        }
        if (answer.has_answer()) {
            cb(static_cast<isphal::Status>(answer.status()), device);
        }
        return Void();
    }

  private:
    ReplayIsp& mIsp;
};

void ReplayIsp::install() {
    sp<IISPModule> const module = new Module(*this);
    static_cast<void>(module->registerAsService(kModuleInstance) == android::OK);
}

void ReplayIsp::setWaits(bool waits) {
    tWaits = waits;
}

std::shared_ptr<ReplayIsp::Session> ReplayIsp::session(uint32_t number) {
    host::MutexLock const lock(mLock);
    std::shared_ptr<Session>& session = mSessions[number];
    if (session == nullptr) {
        session = std::make_shared<Session>();
    }
    return session;
}

void ReplayIsp::forget(uint32_t session) {
    std::shared_ptr<Session> forgotten;
    sp<ICallback> callback;  // released after the lock
    host::MutexLock const lock(mLock);
    auto const found = mSessions.find(session);
    if (found != mSessions.end()) {
        forgotten = std::move(found->second);
        callback = forgotten->callback;
        forgotten->callback = nullptr;
        mSessions.erase(found);
    }
}

std::optional<ClientThread> ReplayIsp::takeWaiting(Session& session, uint32_t number) {
    host::MutexLock const lock(mLock);
    auto const found = session.waiting.find(number);
    if (found == session.waiting.end()) {
        return std::nullopt;
    }
    ClientThread const thread = found->second;
    session.waiting.erase(found);
    return thread;
}

/** Puts into the outputs of a request what the recorded ISP left there. */
void ReplayIsp::leaveOutputs(Session& session, ResultCall const& call) {
    auto const outputs = session.outputs.take(call.number());
    size_t const count = std::min(outputs.size(), static_cast<size_t>(call.outputs_size()));
    for (size_t i = 0; i < count; ++i) {
        recording::IspOutput const& recorded = call.outputs(static_cast<int>(i));
        if (recorded.has_picture()) {
            fill(outputs[i].picture.getNativeHandle(), recorded.picture());
        }
        if (recorded.has_tuning()) {
            fill(outputs[i].tuning.getNativeHandle(), recorded.tuning());
        }
    }
}

/**
 * A client that waits has to be waiting when its result comes: the default build's wait has no
 * flag. What the recording says of the order ends with the answer to its submission.
 */
void ReplayIsp::perform(ThreadReplay& thread, size_t index) {
    Crossing const& crossing = thread.at(index);
    ResultCall const& call = crossing.result_call();
    std::shared_ptr<Session> const played = session(crossing.session());
    thread.order().awaitTurn(index);
    sp<ICallback> callback;
    {
        host::MutexLock const lock(mLock);
        callback = played->callback;
    }
    if (callback == nullptr) {
        thread.order().stop("no. " + std::to_string(index + 1) +
                            ": there is no receiver for the recorded result");
    }
    if (call.kind() == ResultCall::FINAL) {
        leaveOutputs(*played, call);
        if (auto const waiting = takeWaiting(*played, call.number())) {
            waiting->waitUntilAsleep(kLongestWayToTheWait);
        }
    }
    thread.begin(index);

    Crossing answer;
    recording::ResultReturn& returned = *answer.mutable_result_return();
    if (call.kind() == ResultCall::DEATH) {
        static_cast<HalInterface::ClientCallback*>(callback.get())
                ->serviceDied(call.cookie(), nullptr);
    } else {
        std::vector<uint8_t> metadata(call.metadata().begin(), call.metadata().end());
        isphal::ISPResult result;
        result.reqNumber = call.number();
        result.status = static_cast<isphal::Status>(call.status());
        if (!metadata.empty()) {
            result.resultMetadata.setToExternal(metadata.data(), metadata.size());
        }
        Return<void> const taken = call.kind() == ResultCall::FINAL
                                           ? callback->processResult(result)
                                           : callback->processEarlyResult(result);
        if (!taken.isOk()) {
            returned.set_transport_error(taken.description());
        }
    }
    thread.meet(answer, crossing.call());
}

}  // namespace quen::replay
