#pragma once

#include <memory>
#include <thread>
#include <vector>

#include "host/base/Mutex.h"

namespace quen::host::isp {

/** A piece of work: either run or abandon is called, once. Neither throws. */
class QueuedWork {
  public:
    virtual ~QueuedWork() = default;

    /** Does the work and reports its result. */
    virtual void run() = 0;

    /** Reports that the work is not done. */
    virtual void abandon() = 0;
};

/**
 * Runs pieces of work in order on a worker thread, no lock held. The thread starts with the first
 * piece. Thread-safe; a piece of work may call the queue.
 */
class WorkQueue {
  public:
    WorkQueue();

    /** Closes the queue. Safe to call from the worker thread. */
    ~WorkQueue();

    WorkQueue(WorkQueue const&) = delete;
    WorkQueue& operator=(WorkQueue const&) = delete;

    /**
     * Appends pieces of work, all of them or none.
     *
     * @return false when the queue is closed or the thread cannot be started; the pieces are then
     *         destroyed without being run or abandoned
     */
    bool submit(std::vector<std::unique_ptr<QueuedWork>> pieces);

    /** Has the worker thread abandon the pieces not yet started. Does not wait for it. */
    void flush();

    /**
     * Accepts no more work, abandons the pieces not yet started and waits for the running one. From
     * a piece of work, does not wait for that piece.
     */
    void close();

  private:
    struct State;
    struct Piece;
    static Piece takeNext(State& state);
    static std::unique_ptr<QueuedWork> takeFirst(State& state);
    static void work(std::shared_ptr<State> const& state);
    static void abandonAll(State& state);

    std::shared_ptr<State> const mState;  ///< shared with the thread, which may outlive this
    Mutex mJoinLock;                      ///< held while the thread is joined

    /**
     * Started with the state's lock held and joined with mJoinLock held. The two do not meet: it is
     * not started once the queue is closed, and joined only then.
     */
    std::thread mThread;
};

}  // namespace quen::host::isp
