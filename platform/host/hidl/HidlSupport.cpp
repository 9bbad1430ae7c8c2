#include <hidl/HidlSupport.h>

#include <cerrno>
#include <cstring>

#include <android/log.h>

namespace android::hardware {

void details::fatal(char const* text) {
    __android_log_assert(nullptr, "HidlSupport", "%s", text);
}

void hidl_handle::cloneHandle(native_handle_t const* handle) {
    native_handle_t* const clone = native_handle_clone(handle);
    if (clone == nullptr) {
        int const error = errno;
        __android_log_assert(nullptr, "HidlSupport",
                             "hidl_handle: cannot clone a handle of %d descriptors: %s",
                             handle->numFds, strerror(error));
    }
    mHandle = clone;
    mOwnsHandle = true;
}

void hidl_handle::deleteHandle() {
    auto* const handle = const_cast<native_handle_t*>(static_cast<native_handle_t const*>(mHandle));
    native_handle_close(handle);
    native_handle_delete(handle);
}

}  // namespace android::hardware
