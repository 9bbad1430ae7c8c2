#include "host/base/Parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <vector>

#include "host/base/Mutex.h"

namespace quen::host {

namespace {

/** The pieces of one call. Thread-safe. */
class Pieces {
  public:
    Pieces(int count, std::function<std::function<void(int)>()> const& makeWorker)
        : mCount(count), mMakeWorker(makeWorker) {}

    /** Whether one more thread would help. */
    bool wantThread() const { return mNext < mCount; }

    /** Runs pieces until none are left. Throws nothing. */
    void run() {
        try {
            std::function<void(int)> const worker = mMakeWorker();
            for (int piece = mNext++; piece < mCount; piece = mNext++) {
                worker(piece);
            }
        } catch (...) {
            mNext = mCount;
            MutexLock const guard(mLock);
            mException = std::current_exception();
        }
    }

    /** Throws what stopped the pieces; of several exceptions, the last. */
    void rethrow() {
        MutexLock const guard(mLock);
        if (mException) {
            std::rethrow_exception(mException);
        }
    }

  private:
    int const mCount;
    std::function<std::function<void(int)>()> const& mMakeWorker;
    std::atomic<int> mNext{0};
    Mutex mLock;
    std::exception_ptr mException HOST_GUARDED_BY(mLock);
};

/**
 * Threads, one fewer than there are processors, that help the calls of the whole process: calls
 * beside each other share them instead of starting as many each. Started with the first call; they
 * never end. Thread-safe.
 */
class Helpers {
  public:
    static Helpers& instance() {
        // Never destroyed: its threads use it until the process has ended.
        static Helpers* const helpers = new Helpers;
        return *helpers;
    }

    /** Runs pieces on the calling thread, and on those that are free. */
    void run(Pieces& pieces) {
        begin(pieces);
        pieces.run();
        end(pieces);
    }

  private:
    struct Call {
        Pieces* pieces;
        int helpers;  // that are at work on it
    };

    void begin(Pieces& pieces) {
        MutexLock const guard(mLock);
        startThreads();
        mCalls.push_back({&pieces, 0});
        mBegun.notifyAll();
    }

    /** Waits until no helper is at work on the pieces. */
    void end(Pieces& pieces) {
        MutexLock const guard(mLock);
        while (find(pieces)->helpers != 0) {
            mLeft.wait(mLock);
        }
        mCalls.erase(find(pieces));
    }

    std::vector<Call>::iterator find(Pieces const& pieces) HOST_REQUIRES(mLock) {
        return std::find_if(mCalls.begin(), mCalls.end(),
                            [&](Call const& call) { return call.pieces == &pieces; });
    }

    /** Starts what is missing; goes without when the system refuses. */
    void startThreads() HOST_REQUIRES(mLock) {
        unsigned const wanted = std::max(1u, std::thread::hardware_concurrency()) - 1;
        try {
            for (; mThreads < wanted; ++mThreads) {
                std::thread([this] { help(); }).detach();
            }
        } catch (std::system_error const&) {
        }
    }

    /** What a helper does. */
    void help() {
        for (;;) {
            Pieces& pieces = join();
            pieces.run();
            MutexLock const guard(mLock);
            --find(pieces)->helpers;
            mLeft.notifyAll();
        }
    }

    /** Joins the latest call that wants a thread; waits for one. */
    Pieces& join() {
        MutexLock const guard(mLock);
        for (;;) {
            for (auto call = mCalls.rbegin(); call != mCalls.rend(); ++call) {
                if (call->pieces->wantThread()) {
                    ++call->helpers;
                    return *call->pieces;
                }
            }
            mBegun.wait(mLock);
        }
    }

    Mutex mLock;
    Condition mBegun;
    Condition mLeft;
    std::vector<Call> mCalls HOST_GUARDED_BY(mLock);  // the latest last
    unsigned mThreads HOST_GUARDED_BY(mLock) = 0;
};

}  // namespace

void inParallel(int count, std::function<std::function<void(int)>()> const& makeWorker) {
    Pieces pieces(count, makeWorker);
    if (count > 1) {
        Helpers::instance().run(pieces);
    } else {
        pieces.run();
    }
    pieces.rethrow();
}

}  // namespace quen::host
