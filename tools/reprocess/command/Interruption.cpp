#include "command/Interruption.h"

#include <csignal>

#include <atomic>

namespace quen::reprocess {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

std::atomic<int> gSignal{0};  // 0: none has come
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler takes no lock");

void keep(int signal) {
    gSignal = signal;
}

void handle(int signal, void (*handler)(int)) {
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
        action = {};
        action.sa_handler = handler;
        action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
        ::sigaction(signal, &action, nullptr);
    }
}

}  // namespace

Interruption::Interruption() {
    for (int const signal : kSignals) {
        handle(signal, keep);
    }
}

Interruption::~Interruption() {
    for (int const signal : kSignals) {
        handle(signal, SIG_DFL);
    }
}

bool Interruption::hasCome() {
    return gSignal != 0;
}

void Interruption::follow() {
    if (hasCome()) {
        handle(gSignal, SIG_DFL);
        ::raise(gSignal);
    }
}

}  // namespace quen::reprocess
