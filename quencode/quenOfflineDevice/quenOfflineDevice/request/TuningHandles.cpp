#include "quenOfflineDevice/request/TuningHandles.h"

namespace quen {
namespace {

constexpr int kDescriptorSlots = 1;
constexpr int kIntegerSlots = 2;

}  // namespace

TuningHandles::~TuningHandles() {
    for (native_handle_t* const handle : mHandles) {
        native_handle_delete(handle);
    }
}

native_handle_t* TuningHandles::wrap(int descriptor) {
    native_handle_t* const handle = native_handle_create(kDescriptorSlots, kIntegerSlots);
    if (handle == nullptr) {
        return nullptr;
    }
    handle->data[0] = 0;
    handle->data[kTuningDescriptorSlot] = descriptor;
    handle->data[2] = 0;
    mHandles.push_back(handle);
    return handle;
}

}  // namespace quen
