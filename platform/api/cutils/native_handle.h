#pragma once

/** Most descriptors and integers that a handle can have. */
#define NATIVE_HANDLE_MAX_FDS 1024
#define NATIVE_HANDLE_MAX_INTS 1024

/** Declares storage in place for a handle, for native_handle_init. */
#define NATIVE_HANDLE_DECLARE_STORAGE(name, maxFds, maxInts) \
    alignas(native_handle_t) char                            \
            name[sizeof(native_handle_t) + sizeof(int) * ((maxFds) + (maxInts))]

/** A buffer's name: file descriptors, then integers that describe what they are of. */
typedef struct native_handle {
    int version;  ///< sizeof(native_handle_t)
    int numFds;
    int numInts;
    int data[0];  ///< numFds descriptors, then numInts integers
} native_handle_t;

typedef native_handle_t const* buffer_handle_t;

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Makes a handle in `storage`, which NATIVE_HANDLE_DECLARE_STORAGE declared for at least as many
 * slots. Its slots are left for the caller to fill.
 *
 * @return the handle, not to be deleted; null with errno EINVAL when a count is out of range
 */
native_handle_t* native_handle_init(char* storage, int numFds, int numInts);

/**
 * Makes a handle on the heap: descriptor slots -1, integers left for the caller to fill.
 *
 * @return for native_handle_delete; null with errno EINVAL or ENOMEM
 */
native_handle_t* native_handle_create(int numFds, int numInts);

/**
 * Makes a handle with duplicates of the descriptors and a copy of the integers.
 *
 * @return for native_handle_close and native_handle_delete; null, nothing left open, with errno
 */
native_handle_t* native_handle_clone(native_handle_t const* handle);

/**
 * Closes the descriptors; slots below 0 are let pass. errno stays as it was.
 *
 * @return 0, or -EINVAL for a handle of another version
 */
int native_handle_close(native_handle_t const* handle);

/**
 * Frees a handle, its descriptors untouched.
 *
 * @return 0, or -EINVAL for a handle of another version
 */
int native_handle_delete(native_handle_t* handle);

#ifdef __cplusplus
}
#endif
