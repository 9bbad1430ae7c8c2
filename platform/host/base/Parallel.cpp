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

/** Keeps the exception that stops the work; of several, the last. Any thread. */
class Failure {
  public:
    void keepCurrentException() {
        MutexLock const guard(mLock);
        mException = std::current_exception();
    }

    void rethrow() {
        MutexLock const guard(mLock);
        if (mException) {
            std::rethrow_exception(mException);
        }
    }

  private:
    Mutex mLock;
    std::exception_ptr mException HOST_GUARDED_BY(mLock);
};

/** Starts up to `count` threads; fewer when the system refuses one. */
template <typename Work>
std::vector<std::thread> startThreads(int count, Work const& work) {
    std::vector<std::thread> threads;
    threads.reserve(static_cast<size_t>(std::max(count, 0)));
    try {
        for (int i = 0; i < count; ++i) {
            threads.emplace_back(work);
        }
    } catch (std::system_error const&) {
    }
    return threads;
}

}  // namespace

void inParallel(int count, std::function<std::function<void(int)>()> const& makeWorker) {
    std::atomic<int> next{0};
    Failure failure;
    auto const work = [&] {
        try {
            std::function<void(int)> const worker = makeWorker();
            for (int piece = next++; piece < count; piece = next++) {
                worker(piece);
            }
        } catch (...) {
            next = count;
            failure.keepCurrentException();
        }
    };
    int const processors = static_cast<int>(std::thread::hardware_concurrency());
    std::vector<std::thread> threads = startThreads(std::min(processors, count) - 1, work);
    work();
    for (std::thread& thread : threads) {
        thread.join();
    }
    failure.rethrow();
}

}  // namespace quen::host
