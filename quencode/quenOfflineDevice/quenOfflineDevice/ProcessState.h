#pragma once

#include <sys/time.h>

#include <cstdint>
#include <ctime>
#include <queue>

#include "quenCommon/Mutex.h"

/**
 * Everything that the device objects of one process share, and who locks what. The only
 * other process-wide objects are the instances of MapperHelper and AllocatorHelper, which hold a
 * reference to a service and nothing that changes.
 */

namespace quen {

class JpegHandover;

// The hand-over of a result to the `process` call that waits for it; see jpeg/JpegHandover.h.
// gJpegMutex is never held together with another lock.
extern Mutex gJpegMutex;
extern Condition gJpegCond;
extern int32_t gJpegResultStatus QUEN_GUARDED_BY(gJpegMutex);   // client status, latest result
extern JpegHandover* gJpegWaiting QUEN_GUARDED_BY(gJpegMutex);  // hardened build: who waits, a list

// Scratch of the deadline's computation. No lock: the client's thread.
extern timeval gJpegDeadlineBase;
extern timespec gJpegDeadline;

// The fast-display sequence; see request/RequestNumbers.h. No lock: used by `process` and emptied
// by `uinit`, which the client calls from one thread at a time.
extern std::queue<int32_t> gFastDisplayQueue;        // markers, always 1
extern std::queue<uint32_t> gPendingJpegRequestNos;  // numbers that JPEG requests take over

/** Gralloc usage of every device buffer: CPU read and write often, camera write. Constant. */
extern int32_t const gBufferUsage;

}  // namespace quen
