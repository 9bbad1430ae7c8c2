#include <poll.h>

#include <cerrno>
#include <chrono>

#include <sync/sync.h>

using std::chrono::ceil;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/** A fence is any descriptor that becomes readable: an event counter, a pipe. */
int sync_wait(int fd, int timeout) {
    if (fd < 0) {
        errno = EINVAL;
        return -1;
    }
    auto const deadline = Clock::now() + milliseconds(timeout);
    int left = timeout;
    for (;;) {
        pollfd fence = {fd, POLLIN, 0};
        int const ready = poll(&fence, 1, left);
        if (ready == 0) {
            errno = ETIME;
            return -1;
        }
        if (ready > 0) {
            if ((fence.revents & (POLLERR | POLLNVAL)) != 0) {
                errno = EINVAL;
                return -1;
            }
            return 0;
        }
        if (errno != EINTR && errno != EAGAIN) {
            return -1;
        }
        if (timeout >= 0) {
            auto const rest = ceil<milliseconds>(deadline - Clock::now()).count();
            left = rest > 0 ? static_cast<int>(rest) : 0;
        }
    }
}
