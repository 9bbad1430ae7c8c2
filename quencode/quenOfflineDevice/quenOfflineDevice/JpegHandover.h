#pragma once

#include <pthread.h>
#include <sys/time.h>
#include <time.h>

#include <cstdint>

/**
 * The hand-over of a result to the `process` call that waits for it: one for the whole process.
 *
 * There is no flag that says a result has arrived: a signal sent before the wait has begun is lost,
 * and the wait then ends by its time-out. gJpegMutex is never held together with another lock.
 */

extern pthread_mutex_t gJpegMutex;
extern pthread_cond_t gJpegCond;   // signalled once a result
extern int32_t gJpegResultStatus;  // client status of the latest result, guarded by gJpegMutex
extern timeval gJpegDeadlineBase;  // scratch of the deadline's computation
extern timespec gJpegDeadline;     // scratch of the deadline's computation

/**
 * Waits once for a signal, for "vendor.debug.camera.jpeg.timeout" seconds at most. A signal, a
 * time-out and a spurious wake-up end it alike.
 *
 * Returns with gJpegMutex locked. The client's thread.
 */
void waitForJpegResultLocking();

/** Stores a result's client status and wakes the waiting call. A thread of the ISP HAL. */
void signalJpegResult(int32_t clientStatus);
