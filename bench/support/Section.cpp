#include "support/Section.h"

#include <dlfcn.h>
#include <unistd.h>
#include <valgrind/callgrind.h>

#include "watch/Watch.h"

namespace quenbench {

namespace {

std::string gCounted;

void mark(char const* place) {
    std::string const text = std::string(place) + ' ' + gCounted;
    // An invalid descriptor: the call fails at once, and shows in a trace of system calls.
    [[maybe_unused]] ssize_t const failed = write(-1, text.data(), text.size());
}

}  // namespace

void Section::countFor(std::string name) {
    gCounted = std::move(name);
}

Section::Section() {
    if (!gCounted.empty()) {
        mark("begin");
        setWatching(true);
        CALLGRIND_TOGGLE_COLLECT;
    }
    mStart = Clock::now();
}

double Section::stop() {
    if (!mOpen) {
        return mSeconds;
    }
    mOpen = false;
    mSeconds = secondsBetween(mStart, Clock::now());
    if (!gCounted.empty()) {
        CALLGRIND_TOGGLE_COLLECT;
        setWatching(false);
        mark("end");
    }
    return mSeconds;
}

}  // namespace quenbench
