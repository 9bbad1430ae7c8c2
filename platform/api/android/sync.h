#pragma once

#include <linux/sync_file.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Makes a fence that signals when both have; the descriptors stay the caller's. The host's fences
 * are any descriptors that become readable: of two that both wait no third can be made there.
 *
 * @param name of the new fence, for debugging
 * @return the new fence; -1 with errno EINVAL for what is no fence, ENOSYS for two that wait
 */
int32_t sync_merge(const char* name, int32_t fd1, int32_t fd2);

/**
 * What is known of a fence: its status is 1 when it has signalled, 0 while it waits, below 0 for an
 * error. The host's have no fences within.
 *
 * @return for sync_file_info_free; null with errno
 */
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"  // the function is called as the record is
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
