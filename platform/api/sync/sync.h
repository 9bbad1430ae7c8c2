#pragma once

#include <android/sync.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Waits for a fence to signal; the caller keeps the descriptor.
 *
 * @param timeout milliseconds, below 0 for no limit
 * @return 0, or -1 with errno: ETIME after the time-out, EINVAL for a fence that failed or is none
 */
int sync_wait(int fd, int timeout);

#ifdef __cplusplus
}
#endif
