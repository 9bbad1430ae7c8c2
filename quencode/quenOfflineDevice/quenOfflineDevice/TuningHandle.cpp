#include "quenOfflineDevice/TuningHandle.h"

#include "quenOfflineDevice/TuningBuffer.h"

namespace {

constexpr int kDescriptorSlots = 1;
constexpr int kIntegerSlots = 2;

thread_local TuningHandleScope* tCurrentScope = nullptr;

}  // namespace

TuningHandleScope::TuningHandleScope() : mOuter(tCurrentScope) {
    tCurrentScope = this;
}

TuningHandleScope::~TuningHandleScope() {
    for (native_handle_t* const handle : mHandles) {
        native_handle_delete(handle);
    }
    tCurrentScope = mOuter;
}

native_handle_t* TuningHandleScope::wrap(int descriptor) {
    native_handle_t* const handle = native_handle_create(kDescriptorSlots, kIntegerSlots);
    if (handle == nullptr) {
        return nullptr;
    }
    handle->data[0] = 0;
    handle->data[kTuningDescriptorSlot] = descriptor;
    handle->data[2] = 0;
    if (tCurrentScope != nullptr) {
        tCurrentScope->mHandles.push_back(handle);
    }
    return handle;
}
