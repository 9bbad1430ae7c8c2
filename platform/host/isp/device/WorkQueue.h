#pragma once

#include <memory>
#include <thread>
#include <vector>

#include "host/base/Mutex.h"

namespace quen::host::isp {

/** A piece of work that is answered exactly once, in one of two ways. Neither throws. */
class QueuedWork {
  public:
    virtual ~QueuedWork() = default;

    /** Does the work and answers it. */
    virtual void run() = 0;

    /** Answers the work without having done it. */
    virtual void abandon() = 0;
};

/**
 * Does work in order, on one thread of its own, without holding a lock. The thread starts with the
 * first piece of work. Any thread may call, the queue's own within a piece of work included.
 */
class WorkQueue {
  public:
    WorkQueue();

    /** Closes. Within a piece of work that keeps the queue's owner alive last, this works too. */
    ~WorkQueue();

    WorkQueue(WorkQueue const&) = delete;
    WorkQueue& operator=(WorkQueue const&) = delete;

    /**
     * Appends pieces of work, all of them or none.
     *
     * @return false, and they are destroyed unanswered, when the queue is closed or there is no
     *         thread to be had
     */
    bool submit(std::vector<std::unique_ptr<QueuedWork>> pieces);

    /** Has everything that is not begun abandoned, soon, on the queue's thread. */
    void flush();

    /**
     * Takes no more work and abandons what is not begun. Everything is answered when this returns;
     * from within a piece of work, everything but that.
     */
    void close();

  private:
    struct State;
    struct Piece;
    static Piece takeNext(State& state);
    static std::unique_ptr<QueuedWork> takeFirst(State& state);
    static void work(std::shared_ptr<State> const& state);
    static void abandonAll(State& state);

    std::shared_ptr<State> const mState;  ///< shared with the thread, which may be the last to go
    Mutex mJoinLock;                      ///< held while the thread is joined

    /**
     * Started with the state's lock held and joined with mJoinLock held. The two do not meet: it is
     * not started once the queue is closed, and joined only then.
     */
    std::thread mThread;
};

}  // namespace quen::host::isp
