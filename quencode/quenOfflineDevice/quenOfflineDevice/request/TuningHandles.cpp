#include "quenOfflineDevice/request/TuningHandles.h"

#include <algorithm>

namespace quen {
namespace {

constexpr int kDescriptorSlots = 1;
constexpr int kIntegerSlots = 2;

}  // namespace

TuningHandles::~TuningHandles() {
    for (native_handle_t* const handle : mFirst) {
        native_handle_delete(handle);
    }
    for (native_handle_t* const handle : mFurther) {
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
    auto* const place = std::find(mFirst.begin(), mFirst.end(), nullptr);
    if (place != mFirst.end()) {
        *place = handle;
    } else {
        mFurther.push_back(handle);
    }
    return handle;
}

}  // namespace quen
