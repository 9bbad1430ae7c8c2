#pragma once

#include <sys/types.h>

#include <chrono>

namespace quen::host::isp {

/**
 * The thread that submitted a request, as the scheduler sees it.
 *
 * A client may begin to wait for its result only after it has submitted the request, with nothing
 * that would tell it of a result that came earlier. How soon it gets to that wait is up to the
 * machine's load; that it has got there shows in its sleep.
 */
class ClientThread {
  public:
    /** The calling thread. */
    static ClientThread current();

    /**
     * Blocks until the thread sleeps or has ended, or is the calling one.
     *
     * @param limit longest time to block: the thread may have other work to do
     */
    void waitUntilAsleep(std::chrono::milliseconds limit) const;

  private:
    explicit ClientThread(pid_t id) : mId(id) {}
    bool isRunning() const;

    pid_t mId;
};

}  // namespace quen::host::isp
