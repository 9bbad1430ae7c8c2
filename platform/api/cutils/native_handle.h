#pragma once

/** Most descriptors and integers that a handle can have. */
#define NATIVE_HANDLE_MAX_FDS 1024
#define NATIVE_HANDLE_MAX_INTS 1024

/** Declares storage in place for a handle, for native_handle_init. */
#define NATIVE_HANDLE_DECLARE_STORAGE(name, maxFds, maxInts) \
    alignas(native_handle_t) char                            \
            name[sizeof(native_handle_t) + sizeof(int) * ((maxFds) + (maxInts))]

/** Identifies a buffer: file descriptors, then integers that describe it. */
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
 * slots. The caller fills the slots.
 *
 * @return the handle, not to be deleted; null with errno EINVAL when the storage is not aligned
 */
native_handle_t* native_handle_init(char* storage, int numFds, int numInts);

/**
 * Allocates a handle. The caller fills the slots, which are not initialised.
 *
 * @return for native_handle_delete; null with errno EINVAL or ENOMEM
 */
native_handle_t* native_handle_create(int numFds, int numInts);

/**
 * Makes a handle with duplicates of the descriptors, open across an exec as dup makes them, and a
 * copy of the integers.
 *
 * @param handle null gives null on the host and ends the process on the phone
 * @return for native_handle_close and native_handle_delete; null, nothing left open, with errno
 */
native_handle_t* native_handle_clone(native_handle_t const* handle);

/**
 * Closes the descriptors; skips slots below 0. Leaves errno as it was.
 *
 * @param handle null is ignored on the host and ends the process on the phone
 * @return 0, or -EINVAL for a handle of another version
 */
int native_handle_close(native_handle_t const* handle);

/**
 * Frees a handle; leaves its descriptors open.
 *
 * @return 0, or -EINVAL for a handle of another version
 */
int native_handle_delete(native_handle_t* handle);

#ifdef __cplusplus
}
#endif
