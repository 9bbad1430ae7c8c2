#define LOG_TAG "quenOfflineDevice"

#include "quenOfflineDevice/OfflineRequest.h"

#include "quenCommon/Log.h"
#include "quenGralloc/MapperHelper.h"
#include "quenOfflineDevice/TuningBuffer.h"

using android::hardware::hidl_handle;

namespace quen {
namespace {

/** Releases what a request's tuning handle stands for. */
void releaseTuningBuffer(hidl_handle& handle, bool isExternal, char const* name) {
    native_handle const* const raw = handle.getNativeHandle();
    if (raw == nullptr) {
        return;
    }
    if (isExternal) {
        QLOGD("%s FD %d, %d", name, raw->data[0], raw->data[kTuningDescriptorSlot]);
        handle = nullptr;
        return;
    }
    MapperHelper::getInstance().freeBuffer(raw);
}

}  // namespace

void destroyOfflineRequest(OfflineRequest* request) {
    if (request == nullptr) {
        return;
    }
    delete request->metadata;
    request->metadata = nullptr;
    releaseTuningBuffer(request->inputTuningBuffer, request->tuningBufferIsExternal,
                        "inputTuningData");
    releaseTuningBuffer(request->outputTuningBuffer, request->tuningBufferIsExternal,
                        "outputTuningData");
    delete request;
}

}  // namespace quen
