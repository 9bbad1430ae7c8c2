#pragma once

#include <sys/types.h>

#include <chrono>

namespace quen::host::isp {

/**
 * The thread that submitted a request, watched through its scheduler state.
 *
 * A client may submit first and wait afterwards, without a flag for a result that comes in between:
 * such a result is lost. How soon the client waits depends on the load; once it waits, it sleeps.
 */
class ClientThread {
  public:
    /** The calling thread. */
    static ClientThread current();

    /**
     * Blocks until the thread sleeps or has ended. Returns at once on the thread itself.
     *
     * @param limit longest time to block: the thread may be busy with other work
     */
    void waitUntilAsleep(std::chrono::milliseconds limit) const;

  private:
    explicit ClientThread(pid_t id) : mId(id) {}
    bool isRunnable() const;

    pid_t mId;
};

}  // namespace quen::host::isp
