#include "host/isp/device/WorkQueue.h"

#include <deque>
#include <system_error>
#include <utility>

namespace quen::host::isp {

struct WorkQueue::State {
    Mutex lock;
    Condition changed;
    std::deque<std::unique_ptr<QueuedWork>> queue HOST_GUARDED_BY(lock);
    size_t abandoned HOST_GUARDED_BY(lock) = 0;  // how many of the queue's first to abandon
    bool closed HOST_GUARDED_BY(lock) = false;
    std::thread::id worker HOST_GUARDED_BY(lock);
};

/** A piece of work taken from the queue; none when the queue has ended. */
struct WorkQueue::Piece {
    std::unique_ptr<QueuedWork> work;
    bool isAbandoned = false;
};

WorkQueue::WorkQueue() : mState(std::make_shared<State>()) {}

WorkQueue::~WorkQueue() {
    close();
    if (mThread.joinable()) {
        mThread.detach();  // the destructor runs on it
    }
}

bool WorkQueue::submit(std::vector<std::unique_ptr<QueuedWork>> pieces) {
    {
        MutexLock const guard(mState->lock);
        if (mState->closed) {
            return false;
        }
        if (mState->worker == std::thread::id()) {
            try {
                mThread = std::thread([state = mState] { WorkQueue::work(state); });
            } catch (std::system_error const&) {
                return false;
            }
            mState->worker = mThread.get_id();
        }
        for (std::unique_ptr<QueuedWork>& piece : pieces) {
            mState->queue.push_back(std::move(piece));
        }
    }
    mState->changed.notifyOne();
    return true;
}

void WorkQueue::flush() {
    MutexLock const guard(mState->lock);
    mState->abandoned = mState->queue.size();
}

void WorkQueue::close() {
    bool isWorker = false;
    {
        MutexLock const guard(mState->lock);
        mState->closed = true;
        isWorker = mState->worker == std::this_thread::get_id();
    }
    if (isWorker) {
        abandonAll(*mState);
        return;
    }
    mState->changed.notifyOne();
    MutexLock const guard(mJoinLock);
    if (mThread.joinable()) {
        mThread.join();
    }
}

/** Takes the first piece of work; null when there is none. */
std::unique_ptr<QueuedWork> WorkQueue::takeFirst(State& state) {
    MutexLock const guard(state.lock);
    if (state.queue.empty()) {
        return nullptr;
    }
    std::unique_ptr<QueuedWork> work = std::move(state.queue.front());
    state.queue.pop_front();
    return work;
}

/** Abandons what is queued. Runs on the worker thread. */
void WorkQueue::abandonAll(State& state) {
    while (std::unique_ptr<QueuedWork> const work = takeFirst(state)) {
        work->abandon();
    }
}

/** Waits for a piece of work; none when the queue is closed and empty. */
WorkQueue::Piece WorkQueue::takeNext(State& state) {
    MutexLock const guard(state.lock);
    while (state.queue.empty() && !state.closed) {
        state.changed.wait(state.lock);
    }
    if (state.queue.empty()) {
        return {};
    }
    Piece piece{std::move(state.queue.front()), state.closed || state.abandoned != 0};
    state.queue.pop_front();
    if (state.abandoned != 0) {
        --state.abandoned;
    }
    return piece;
}

/** The worker thread. A piece runs and is destroyed without a lock: it may call the queue. */
void WorkQueue::work(std::shared_ptr<State> const& state) {
    for (;;) {
        Piece const piece = takeNext(*state);
        if (!piece.work) {
            return;
        }
        piece.isAbandoned ? piece.work->abandon() : piece.work->run();
    }
}

}  // namespace quen::host::isp
