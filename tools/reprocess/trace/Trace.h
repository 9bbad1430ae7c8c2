#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "host/base/Mutex.h"
#include "trace/Tracks.h"

namespace quen::reprocess {

/** Who tells of a span: the ISP, the library through its log, the command line. */
enum class TraceSource : uint8_t { Isp, Library, Tool };

/** A value beside an event. */
struct TraceNote {
    char const* name = nullptr;  ///< a literal; null for no note
    int64_t number = 0;
    char const* text = nullptr;  ///< in place of the number; kept by the trace
};

/** An event of the timeline. Names are literals, or kept by the trace. */
struct TraceEvent {
    enum class Kind : uint8_t { Span, Mark, FlowStart, FlowStep, FlowEnd, Counter };

    Kind kind;
    TraceSource source;
    uint16_t track;
    char const* name;
    std::chrono::steady_clock::time_point time;
    std::chrono::steady_clock::duration duration{};  ///< of a span
    int64_t value = 0;                               ///< a flow's id
    TraceNote notes[2];
};

/**
 * Collects what a timeline shows: spans of work on the threads that did it, the way of requests
 * from one thread to another, counters. Each call tells of the calling thread. Thread-safe.
 *
 * Keeps a bounded number of events, the first ones; those after them are only counted.
 */
class Trace {
  public:
    using Clock = std::chrono::steady_clock;

    Trace();

    /** Says what the calling thread does, and has done from a time on, unless it was said before.
     */
    void nameThread(ThreadKind kind, Clock::time_point begin = Clock::now()) {
        mTracks->ofThisThread(kind, begin);
    }

    /** A name that lives as long as the trace. */
    char const* keep(std::string const& name);

    void addSpan(TraceSource source, char const* name, Clock::time_point begin,
                 Clock::time_point end, TraceNote first = {}, TraceNote second = {});

    /** Something that happened now. */
    void addMark(TraceSource source, char const* name, TraceNote first = {}, TraceNote second = {});

    /** A point on the way of a request, at a time within a span of the calling thread. */
    void addFlow(TraceEvent::Kind kind, int64_t id, Clock::time_point time, TraceNote note);

    void addCounter(char const* name, char const* unit, int64_t value);

    /** Adds the memory that the process has resident now. */
    void addMemory();

    /** What was collected so far. */
    struct Contents {
        Clock::time_point begin;
        std::vector<Tracks::Track> tracks;
        std::deque<TraceEvent> events;
        size_t leftOut = 0;  ///< events beyond those that are kept
    };

    /** Ends the collection. The names in the contents are kept by the trace. */
    Contents take();

  private:
    void add(TraceEvent const& event);
    uint16_t track() { return mTracks->ofThisThread(ThreadKind::Helper, Clock::now()); }

    Clock::time_point const mBegin = Clock::now();
    std::shared_ptr<Tracks> const mTracks;  // shared with the threads that have one
    host::Mutex mLock;
    std::deque<TraceEvent> mEvents HOST_GUARDED_BY(mLock);
    size_t mLeftOut HOST_GUARDED_BY(mLock) = 0;
    std::set<std::string> mNames HOST_GUARDED_BY(mLock);
};

}  // namespace quen::reprocess
