#include "host/isp/device/WorkQueue.h"

#include <condition_variable>
#include <deque>
#include <system_error>
#include <utility>

namespace quen::host::isp {

struct WorkQueue::State {
    std::mutex lock;
    std::condition_variable changed;
    std::deque<std::unique_ptr<QueuedWork>> queue;  // under lock
    size_t abandoned = 0;                           // of the queue's first; under lock
    bool closed = false;                            // under lock
    std::thread::id worker;                         // under lock
};

WorkQueue::WorkQueue() : mState(std::make_shared<State>()) {}

WorkQueue::~WorkQueue() {
    close();
    if (mThread.joinable()) {
        mThread.detach();  // it is the one that runs this
    }
}

bool WorkQueue::submit(std::vector<std::unique_ptr<QueuedWork>> pieces) {
    {
        std::lock_guard<std::mutex> const guard(mState->lock);
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
    mState->changed.notify_one();
    return true;
}

void WorkQueue::flush() {
    std::lock_guard<std::mutex> const guard(mState->lock);
    mState->abandoned = mState->queue.size();
}

void WorkQueue::close() {
    bool isWorker = false;
    {
        std::lock_guard<std::mutex> const guard(mState->lock);
        mState->closed = true;
        isWorker = mState->worker == std::this_thread::get_id();
    }
    if (isWorker) {
        abandonAll(*mState);
        return;
    }
    mState->changed.notify_one();
    std::lock_guard<std::mutex> const guard(mJoinLock);
    if (mThread.joinable()) {
        mThread.join();
    }
}

/** Answers what is queued, on the queue's thread. */
void WorkQueue::abandonAll(State& state) {
    std::unique_lock<std::mutex> guard(state.lock);
    while (!state.queue.empty()) {
        std::unique_ptr<QueuedWork> work = std::move(state.queue.front());
        state.queue.pop_front();
        guard.unlock();
        work->abandon();
        work.reset();
        guard.lock();
    }
}

void WorkQueue::work(std::shared_ptr<State> const& state) {
    std::unique_lock<std::mutex> guard(state->lock);
    for (;;) {
        state->changed.wait(guard, [&] { return !state->queue.empty() || state->closed; });
        if (state->queue.empty()) {
            return;
        }
        std::unique_ptr<QueuedWork> work = std::move(state->queue.front());
        state->queue.pop_front();
        bool const isAbandoned = state->closed || state->abandoned != 0;
        if (state->abandoned != 0) {
            --state->abandoned;
        }
        guard.unlock();
        isAbandoned ? work->abandon() : work->run();
        work.reset();  // what it holds may call back into the queue
        guard.lock();
    }
}

}  // namespace quen::host::isp
