#pragma once

#include <cstdint>

#include "trace/Trace.h"

// A request's way ends in the span in which the library takes its result. Who knows that there is a
// result is called just before that span begins, on its thread.
namespace quen::reprocess {

/** Has the next span of the library on the calling thread end a request's way. */
void leavePendingFlow(int64_t flow, uint32_t request);

/** Ends the way that is pending on the calling thread, if one is. */
void endPendingFlow(Trace& trace, Trace::Clock::time_point time);

}  // namespace quen::reprocess
