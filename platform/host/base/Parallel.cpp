#include "host/base/Parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace quen::host {

namespace {

/** Starts threads until the system refuses one: whatever there is then does the work. */
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
    std::mutex lock;
    std::exception_ptr failure;  // under lock
    auto const work = [&] {
        try {
            std::function<void(int)> const worker = makeWorker();
            for (int piece = next++; piece < count; piece = next++) {
                worker(piece);
            }
        } catch (...) {
            next = count;
            std::lock_guard<std::mutex> const guard(lock);
            failure = std::current_exception();
        }
    };
    int const processors = static_cast<int>(std::thread::hardware_concurrency());
    std::vector<std::thread> threads = startThreads(std::min(processors, count) - 1, work);
    work();
    for (std::thread& thread : threads) {
        thread.join();
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

}  // namespace quen::host
