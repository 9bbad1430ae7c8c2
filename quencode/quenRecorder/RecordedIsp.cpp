#include "quenRecorder/RecordedIsp.h"

#include <utility>

#include "quenRecorder/CallScope.h"
#include "quenRecorder/RecordedIspDevice.h"
#include "recording.pb.h"

using android::sp;
using android::status_t;
using android::hardware::Return;
using vendor::mediatek::hardware::camera::isphal::V1_0::IDevice;
using vendor::mediatek::hardware::camera::isphal::V1_0::Status;

namespace quen::recorder {
namespace {

using recording::Crossing;
using recording::IspCall;

constexpr char kModuleInstance[] = "internal/0";

}  // namespace

RecordedModule::RecordedModule(std::shared_ptr<Recorder> recorder, sp<IISPModule> const& module)
    : mRecorder(std::move(recorder)), mModule(module) {}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the interface's signature
Return<void> RecordedModule::openISPDevice(openISPDevice_cb cb) {
    uint32_t const session = CallScope::session();
    Crossing crossing;
    crossing.set_session(session);
    crossing.set_call(mRecorder->newCall());
    crossing.mutable_isp_call()->set_operation(IspCall::OPEN);
    mRecorder->write(crossing);

    Crossing answer;
    answer.set_session(session);
    answer.set_call(crossing.call());
    recording::IspReturn& returned = *answer.mutable_isp_return();
    Status status = Status::OK;
    sp<IDevice> device;
    Return<void> opened = mModule->openISPDevice([&](Status told, sp<IDevice> const& given) {
        status = told;
        device = given;
        returned.set_has_answer(true);
    });
    returned.set_status(static_cast<uint32_t>(status));
    returned.set_has_device(device != nullptr);
    if (!opened.isOkUnchecked()) {
        returned.set_transport_error(opened.description());
    }
    mRecorder->write(answer);
    if (returned.has_answer()) {
        sp<IDevice> recorded;
        if (device != nullptr) {
            recorded = new RecordedIspDevice(mRecorder, session, device);
        }
        cb(status, recorded);
    }
    return opened;
}

status_t recordIsp(std::shared_ptr<Recorder> const& recorder) {
    sp<RecordedModule::IISPModule> const module =
            RecordedModule::IISPModule::getService(kModuleInstance);
    if (module == nullptr) {
        return android::NAME_NOT_FOUND;
    }
    sp<RecordedModule> const recorded = new RecordedModule(recorder, module);
    return recorded->registerAsService(kModuleInstance);
}

}  // namespace quen::recorder
