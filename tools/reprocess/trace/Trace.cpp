#include "trace/Trace.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace quen::reprocess {
namespace {

// Those of some 2500 inputs; 30 MB of memory, about as many of the file.
constexpr size_t kMostEvents = size_t{1} << 18;

/** Bytes of the process that are in memory; 0 when that is unknown. */
int64_t residentBytes() {
    std::FILE* const file = std::fopen("/proc/self/statm", "re");
    if (file == nullptr) {
        return 0;
    }
    long all = 0;
    long resident = 0;
    bool const isRead = std::fscanf(file, "%ld %ld", &all, &resident) == 2;
    std::fclose(file);
    return isRead ? int64_t{resident} * ::sysconf(_SC_PAGESIZE) : 0;
}

}  // namespace

Trace::Trace() : mTracks(std::make_shared<Tracks>()) {}

char const* Trace::keep(std::string const& name) {
    host::MutexLock const lock(mLock);
    return mNames.insert(name).first->c_str();
}

void Trace::addSpan(TraceSource source, char const* name, Clock::time_point begin,
                    Clock::time_point end, TraceNote first, TraceNote second) {
    add({TraceEvent::Kind::Span, source, track(), name, begin, end - begin, 0, {first, second}});
}

void Trace::addMark(TraceSource source, char const* name, TraceNote first, TraceNote second) {
    add({TraceEvent::Kind::Mark, source, track(), name, Clock::now(), {}, 0, {first, second}});
}

void Trace::addFlow(TraceEvent::Kind kind, int64_t id, Clock::time_point time, TraceNote note) {
    add({kind, TraceSource::Isp, track(), "request", time, {}, id, {note, {}}});
}

void Trace::addCounter(char const* name, char const* unit, int64_t value) {
    TraceNote const note{unit, value, nullptr};
    add({TraceEvent::Kind::Counter, TraceSource::Tool, track(), name, Clock::now(), {}, 0, {note}});
}

void Trace::addMemory() {
    addCounter("resident memory", "bytes", residentBytes());
}

Trace::Contents Trace::take() {
    Contents contents{mBegin, mTracks->all(), {}, 0};
    host::MutexLock const lock(mLock);
    contents.events = std::exchange(mEvents, {});
    contents.leftOut = std::exchange(mLeftOut, 0);
    return contents;
}

void Trace::add(TraceEvent const& event) {
    host::MutexLock const lock(mLock);
    if (mEvents.size() < kMostEvents) {
        mEvents.push_back(event);
    } else {
        ++mLeftOut;
    }
}

}  // namespace quen::reprocess
