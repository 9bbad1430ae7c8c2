#include "trace/IspSpans.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "trace/FlowEnd.h"

namespace quen::reprocess {
namespace {

using Kind = TraceEvent::Kind;

TraceNote numberNote(uint32_t request) {
    return {"request", static_cast<int64_t>(request), nullptr};
}

/** Whether the request waited meanwhile, on no thread. */
bool isQueue(host::isp::IspLeg const& leg) {
    return leg.name == std::string_view("queue");
}

/** The time at which the ISP's thread took a request up. */
Trace::Clock::time_point beginOf(host::isp::IspReport const& report, Trace::Clock::time_point end) {
    Trace::Clock::time_point begin = end;
    for (host::isp::IspLeg const& leg : report.legs) {
        begin = std::min(begin, isQueue(leg) ? leg.begin + leg.time : leg.begin);
    }
    return begin;
}

}  // namespace

IspSpans::IspSpans(std::shared_ptr<Trace> trace, std::shared_ptr<host::isp::IspObserver> next)
    : mTrace(std::move(trace)), mNext(std::move(next)) {}

void IspSpans::onConfigured(ISPStreamConfiguration const& config, Status status,
                            std::string const& problem) {
    mNext->onConfigured(config, status, problem);
}

void IspSpans::onRequest(ISPRequest const& request, Status status, std::string const& problem) {
    TraceNote const note = numberNote(request.requestNumber);
    if (status == Status::OK) {
        int64_t flow = 0;
        size_t outstanding = 0;
        {
            host::MutexLock const lock(mLock);
            flow = ++mFlows;
            mOutstanding[request.requestNumber] = flow;
            outstanding = mOutstanding.size();
        }
        mTrace->addFlow(Kind::FlowStart, flow, Trace::Clock::now(), note);
        mTrace->addCounter("outstanding requests", "requests", static_cast<int64_t>(outstanding));
    } else {
        mTrace->addMark(TraceSource::Isp, "refused request", note,
                        {"status", 0, mTrace->keep(toString(status))});
    }
    mNext->onRequest(request, status, problem);
}

void IspSpans::onResult(ISPResult const& result, host::isp::IspReport const& report) {
    Outstanding const outstanding = take(result.reqNumber);
    addWork(result, report, outstanding.flow);
    mTrace->addCounter("outstanding requests", "requests", static_cast<int64_t>(outstanding.left));
    mTrace->addMemory();
    mNext->onResult(result, report);
    if (outstanding.flow != 0) {
        // The library takes the result next, on this thread.
        leavePendingFlow(outstanding.flow, result.reqNumber);
    }
}

/** Takes a request out of those that are outstanding. */
IspSpans::Outstanding IspSpans::take(uint32_t request) {
    host::MutexLock const lock(mLock);
    auto const found = mOutstanding.find(request);
    int64_t const flow = found == mOutstanding.end() ? 0 : found->second;
    if (flow != 0) {
        mOutstanding.erase(found);
    }
    return {flow, mOutstanding.size()};
}

/** A span of the work, from the end of the queue on, and spans of its legs. */
void IspSpans::addWork(ISPResult const& result, host::isp::IspReport const& report, int64_t flow) {
    TraceNote const note = numberNote(result.reqNumber);
    Trace::Clock::time_point const end = Trace::Clock::now();
    Trace::Clock::time_point const begin = beginOf(report, end);
    mTrace->nameThread(ThreadKind::Isp, begin);
    for (host::isp::IspLeg const& leg : report.legs) {
        if (isQueue(leg)) {
            continue;
        }
        mTrace->addSpan(TraceSource::Isp, leg.name, leg.begin, leg.begin + leg.time, note);
    }
    mTrace->addSpan(TraceSource::Isp, "ISP request", begin, end, note,
                    {"status", 0, mTrace->keep(toString(result.status))});
    if (flow != 0) {
        mTrace->addFlow(Kind::FlowStep, flow, begin, note);
    }
}

}  // namespace quen::reprocess
