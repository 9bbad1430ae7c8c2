#include "host/isp/device/ClientThread.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <thread>

namespace quen::host::isp {

namespace {

constexpr std::chrono::microseconds kPollInterval{200};

}  // namespace

ClientThread ClientThread::current() {
    return ClientThread(gettid());
}

void ClientThread::waitUntilAsleep(std::chrono::milliseconds limit) const {
    auto const end = std::chrono::steady_clock::now() + limit;
    while (mId != gettid() && isRunnable() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(kPollInterval);
    }
}

/**
 * Whether the thread runs, waits for a processor or for the system itself, as for a page; false
 * when its state cannot be read.
 */
bool ClientThread::isRunnable() const {
    char path[48];
    snprintf(path, sizeof(path), "/proc/self/task/%d/stat", mId);
    int const fd = open(path, O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        return false;
    }
    char text[128];
    ssize_t const size = read(fd, text, sizeof(text) - 1);
    close(fd);
    text[size < 0 ? 0 : size] = '\0';
    // "<id> (<name>) <state> ..."; the name may contain any character.
    char const* const nameEnd = strrchr(text, ')');
    return nameEnd != nullptr &&
           (strncmp(nameEnd, ") R", 3) == 0 || strncmp(nameEnd, ") D", 3) == 0);
}

}  // namespace quen::host::isp
