#include "CrashReport.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

#include "host/base/Mutex.h"

namespace quen::replay {
namespace {

constexpr int kCrashes[] = {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL};

/** A line to print in a crash. A signal handler reads the list, so none is ever taken out. */
struct Line {
    std::string text;
    std::atomic<Line const*> next{nullptr};
};

std::atomic<size_t> sPassed{0};
std::atomic<size_t> sLeftOut{0};  // differences behind the last one that is kept
std::atomic<Line const*> sFirst{nullptr};
static_assert(std::atomic<size_t>::is_always_lock_free, "read by a signal handler");
static_assert(std::atomic<Line const*>::is_always_lock_free, "read by a signal handler");
int sExitCode = 1;
size_t sMost = 0;  // lines to keep

host::Mutex sLock;
std::atomic<Line const*>* sEnd HOST_GUARDED_BY(sLock) = &sFirst;  // where the next line goes
size_t sKept HOST_GUARDED_BY(sLock) = 0;

void put(int file, char const* text) {
    static_cast<void>(::write(file, text, std::strlen(text)) >= 0);
}

void putNumber(int file, size_t number) {
    char digits[24] = {};
    char* begin = digits + sizeof(digits) - 1;
    do {
        *--begin = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number > 0);
    put(file, begin);
}

/** Prints the differences found until now. */
void putDifferences() {
    for (Line const* line = sFirst; line != nullptr; line = line->next) {
        put(STDOUT_FILENO, line->text.c_str());
    }
    if (sLeftOut > 0) {
        put(STDOUT_FILENO, "and ");
        putNumber(STDOUT_FILENO, sLeftOut);
        put(STDOUT_FILENO, " more\n");
    }
}

/** Calls nothing but what a signal handler may. */
void report(int signal) {
    putDifferences();
    put(STDERR_FILENO, "quen-replay: the library crashed with signal ");
    putNumber(STDERR_FILENO, static_cast<size_t>(signal));
    put(STDERR_FILENO, " after no. ");
    putNumber(STDERR_FILENO, sPassed);
    put(STDERR_FILENO, " of the recording; run quen-replay in a debugger to see where\n");
    ::_exit(sExitCode);
}

}  // namespace

void reportCrashes(int exitCode, size_t differences) {
    sExitCode = exitCode;
    sMost = differences;
    for (int const crash : kCrashes) {
        struct sigaction action = {};
        if (::sigaction(crash, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
            action.sa_handler = report;
            static_cast<void>(::sigaction(crash, &action, nullptr));
        }
    }
}

void noteDifference(std::string const& line) {
    host::MutexLock const lock(sLock);
    if (sKept == sMost) {
        ++sLeftOut;
        return;
    }
    auto* const kept = new Line{line + "\n"};
    *sEnd = kept;
    sEnd = &kept->next;
    ++sKept;
}

void notePassed(size_t crossings) {
    sPassed = crossings;
}

}  // namespace quen::replay
