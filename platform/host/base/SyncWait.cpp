#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

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

namespace {

/** @return 1 for a signalled fence, 0 for a pending one, -1 with errno for no fence */
int statusOf(int fd) {
    if (sync_wait(fd, 0) == 0) {
        return 1;
    }
    return errno == ETIME ? 0 : -1;
}

}  // namespace

int32_t sync_merge(const char* /*name*/, int32_t fd1, int32_t fd2) {
    int const first = statusOf(fd1);
    int const second = first < 0 ? first : statusOf(fd2);
    if (second < 0) {
        return -1;
    }
    if (first == 0 && second == 0) {
        errno = ENOSYS;
        return -1;
    }
    // One has signalled: the result signals when the other does.
    return dup(first == 1 ? fd2 : fd1);
}

struct sync_file_info* sync_file_info(int32_t fd) {
    int const status = statusOf(fd);
    if (status < 0) {
        return nullptr;
    }
    auto* const info =
            static_cast<struct sync_file_info*>(calloc(1, sizeof(struct sync_file_info)));
    if (info != nullptr) {
        strcpy(info->name, "host");
        info->status = status;
    }
    return info;
}

void sync_file_info_free(struct sync_file_info* info) {
    free(info);
}
