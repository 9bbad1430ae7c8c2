#include "CrashReport.h"

#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

namespace quen::replay {
namespace {

constexpr int kCrashes[] = {SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL};

std::atomic<size_t> sPassed{0};
static_assert(std::atomic<size_t>::is_always_lock_free, "read by a signal handler");
int sExitCode = 1;

void put(char const* text) {
    static_cast<void>(::write(STDERR_FILENO, text, std::strlen(text)) >= 0);
}

void putNumber(size_t number) {
    char digits[24] = {};
    char* begin = digits + sizeof(digits) - 1;
    do {
        *--begin = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number > 0);
    put(begin);
}

/** Calls nothing but what a signal handler may. */
void report(int signal) {
    put("quen-replay: the library crashed with signal ");
    putNumber(static_cast<size_t>(signal));
    put(" after no. ");
    putNumber(sPassed);
    put(" of the recording; run quen-replay in a debugger to see where\n");
    ::_exit(sExitCode);
}

}  // namespace

void reportCrashes(int exitCode) {
    sExitCode = exitCode;
    for (int const crash : kCrashes) {
        struct sigaction action = {};
        if (::sigaction(crash, nullptr, &action) == 0 && action.sa_handler == SIG_DFL) {
            action.sa_handler = report;
            static_cast<void>(::sigaction(crash, &action, nullptr));
        }
    }
}

void notePassed(size_t crossings) {
    sPassed = crossings;
}

}  // namespace quen::replay
