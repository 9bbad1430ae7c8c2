#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include <cutils/native_handle.h>

namespace {

bool inRange(int count, int most) {
    return count >= 0 && count <= most;
}

native_handle_t* setUp(void* storage, int numFds, int numInts) {
    auto* const handle = static_cast<native_handle_t*>(storage);
    handle->version = sizeof(native_handle_t);
    handle->numFds = numFds;
    handle->numInts = numInts;
    return handle;
}

}  // namespace

native_handle_t* native_handle_init(char* storage, int numFds, int numInts) {
    if (reinterpret_cast<uintptr_t>(storage) % alignof(native_handle_t) != 0) {
        errno = EINVAL;
        return nullptr;
    }
    return setUp(storage, numFds, numInts);
}

native_handle_t* native_handle_create(int numFds, int numInts) {
    if (!inRange(numFds, NATIVE_HANDLE_MAX_FDS) || !inRange(numInts, NATIVE_HANDLE_MAX_INTS)) {
        errno = EINVAL;
        return nullptr;
    }
    size_t const slots = static_cast<size_t>(numFds) + static_cast<size_t>(numInts);
    void* const storage = malloc(sizeof(native_handle_t) + slots * sizeof(int));
    return storage == nullptr ? nullptr : setUp(storage, numFds, numInts);
}

native_handle_t* native_handle_clone(native_handle_t const* handle) {
    if (handle == nullptr) {
        errno = EINVAL;
        return nullptr;
    }
    native_handle_t* const clone = native_handle_create(handle->numFds, handle->numInts);
    if (clone == nullptr) {
        return nullptr;
    }
    for (int i = 0; i < handle->numFds; ++i) {
        clone->data[i] = dup(handle->data[i]);
        if (clone->data[i] < 0) {
            clone->numFds = i;  // the later slots are not filled yet
            native_handle_close(clone);
            native_handle_delete(clone);
            return nullptr;
        }
    }
    std::copy_n(handle->data + handle->numFds, handle->numInts, clone->data + handle->numFds);
    return clone;
}

int native_handle_close(native_handle_t const* handle) {
    if (handle == nullptr) {
        return 0;
    }
    if (handle->version != sizeof(native_handle_t)) {
        return -EINVAL;
    }
    int const error = errno;
    for (int i = 0; i < handle->numFds; ++i) {
        if (handle->data[i] >= 0) {
            close(handle->data[i]);
        }
    }
    errno = error;
    return 0;
}

int native_handle_delete(native_handle_t* handle) {
    if (handle == nullptr) {
        return 0;
    }
    if (handle->version != sizeof(native_handle_t)) {
        return -EINVAL;
    }
    free(handle);
    return 0;
}
