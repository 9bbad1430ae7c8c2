#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/bridge/OfflineRequest.h"

#include "quenCommon/Log.h"
#include "quenGralloc/MapperHelper.h"
#include "quenOfflineDevice/request/TuningHandles.h"

using android::hardware::hidl_handle;

namespace quen {
namespace {

/** Frees a tuning buffer that is a graphic buffer; null is ignored. */
void freeTuningBuffer(hidl_handle const& handle) {
    MapperHelper::getInstance().freeBuffer(handle.getNativeHandle());
}

/** Releases tuning buffers that live in the 3A store; their descriptors are the store's. */
void releaseExternal(OfflineRequest& request) {
    native_handle const* const input = request.inputTuningBuffer.getNativeHandle();
    if (input != nullptr) {
        QLOGD("inputTuningData FD %d, %d", input->data[0], input->data[kTuningDescriptorSlot]);
        request.inputTuningBuffer = nullptr;
    }
    native_handle const* const output = request.outputTuningBuffer.getNativeHandle();
    if (output != nullptr) {
        QLOGD("outputTuningData FD %d, %d", output->data[0], output->data[kTuningDescriptorSlot]);
        request.outputTuningBuffer = nullptr;
    }
}

}  // namespace

void destroyOfflineRequest(OfflineRequest* request) {
    if (request == nullptr) {
        return;
    }
    delete request->metadata;
    request->metadata = nullptr;
    if (request->tuningBufferIsExternal) {
        releaseExternal(*request);
    } else {
        freeTuningBuffer(request->inputTuningBuffer);
        freeTuningBuffer(request->outputTuningBuffer);
    }
    delete request;
}

}  // namespace quen
