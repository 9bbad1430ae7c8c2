#pragma once

#include <linux/sync_file.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Merges two fences into one that signals when both have; the caller keeps both. A fence of the
 * host is any descriptor that becomes readable: it cannot merge two pending ones.
 *
 * @param name of the new fence, for debugging
 * @return the new fence; -1 with errno EINVAL for what is no fence, ENOSYS for two pending ones
 */
int32_t sync_merge(const char* name, int32_t fd1, int32_t fd2);

/**
 * Returns the state of a fence: status 1 when it has signalled, 0 while pending, below 0 for an
 * error. Fences of the host contain no other fences.
 *
 * @return for sync_file_info_free; null with errno
 */
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"  // function and struct have one name
struct sync_file_info* sync_file_info(int32_t fd);
#pragma GCC diagnostic pop

/** The fences within a fence. */
static inline struct sync_fence_info* sync_get_fence_info(const struct sync_file_info* info) {
    return (struct sync_fence_info*)(uintptr_t)info->sync_fence_info;
}

void sync_file_info_free(struct sync_file_info* info);

#ifdef __cplusplus
}
#endif
