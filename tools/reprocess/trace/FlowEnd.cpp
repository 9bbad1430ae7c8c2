#include "trace/FlowEnd.h"

namespace quen::reprocess {
namespace {

struct Pending {
    int64_t flow = 0;  // 0: none
    uint32_t request = 0;
};

thread_local Pending tPending;

}  // namespace

void leavePendingFlow(int64_t flow, uint32_t request) {
    tPending = {flow, request};
}

void endPendingFlow(Trace& trace, Trace::Clock::time_point time) {
    if (tPending.flow != 0) {
        trace.addFlow(TraceEvent::Kind::FlowEnd, tPending.flow, time,
                      {"request", static_cast<int64_t>(tPending.request), nullptr});
        tPending = {};
    }
}

}  // namespace quen::reprocess
