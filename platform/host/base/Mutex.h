#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <shared_mutex>

// Locks that clang's thread-safety analysis knows: it rejects an access to a guarded member without
// its lock. g++ ignores the annotations; scripts/check_clang.sh checks them.
#if defined(__clang__)
#define HOST_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define HOST_THREAD_ATTRIBUTE(attribute)
#endif

/** A member or a global variable that is only accessed with the lock held. */
#define HOST_GUARDED_BY(lock) HOST_THREAD_ATTRIBUTE(guarded_by(lock))

/** A function that is called with the locks held, and returns with them held. */
#define HOST_REQUIRES(...) HOST_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))

// For the lock types below.
#define HOST_LOCK_TYPE HOST_THREAD_ATTRIBUTE(capability("mutex"))
#define HOST_SCOPED_LOCK_TYPE HOST_THREAD_ATTRIBUTE(scoped_lockable)
#define HOST_ACQUIRES(...) HOST_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define HOST_ACQUIRES_SHARED(...) HOST_THREAD_ATTRIBUTE(acquire_shared_capability(__VA_ARGS__))
#define HOST_RELEASES(...) HOST_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))

namespace quen::host {

/** A lock for one thread at a time. Not recursive. */
class HOST_LOCK_TYPE Mutex {
  public:
    Mutex() = default;
    Mutex(Mutex const&) = delete;
    Mutex& operator=(Mutex const&) = delete;

  private:
    friend class MutexLock;
    friend class Condition;

    std::mutex mMutex;
};

/** Holds a Mutex from construction to destruction. */
class HOST_SCOPED_LOCK_TYPE MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) HOST_ACQUIRES(mutex) : mLock(mutex.mMutex) {}
    ~MutexLock() HOST_RELEASES() = default;

    MutexLock(MutexLock const&) = delete;
    MutexLock& operator=(MutexLock const&) = delete;

  private:
    std::lock_guard<std::mutex> const mLock;
};

/**
 * Wakes threads that wait for a change of what a Mutex guards.
 *
 * A wait may return without a notification. Its caller tests in a loop whether the change has come:
 * the analysis does not follow a lock into a lambda, so no predicate is taken.
 */
class Condition {
  public:
    /** Waits for a notification; the mutex is free meanwhile and held again afterwards. */
    void wait(Mutex& mutex) HOST_REQUIRES(mutex) {
        std::unique_lock<std::mutex> held(mutex.mMutex, std::adopt_lock);
        mCondition.wait(held);
        held.release();  // the caller still holds it
    }

    /** As wait, until `end` at the latest. @return false when the time is up */
    bool waitUntil(Mutex& mutex, std::chrono::steady_clock::time_point end) HOST_REQUIRES(mutex) {
        std::unique_lock<std::mutex> held(mutex.mMutex, std::adopt_lock);
        std::cv_status const status = mCondition.wait_until(held, end);
        held.release();
        return status == std::cv_status::no_timeout;
    }

    void notifyOne() { mCondition.notify_one(); }
    void notifyAll() { mCondition.notify_all(); }

  private:
    std::condition_variable mCondition;
};

/** A lock for several readers or one writer. Not recursive. */
class HOST_LOCK_TYPE SharedMutex {
  public:
    SharedMutex() = default;
    SharedMutex(SharedMutex const&) = delete;
    SharedMutex& operator=(SharedMutex const&) = delete;

  private:
    friend class ReaderLock;
    friend class WriterLock;

    std::shared_mutex mMutex;
};

/** Holds a SharedMutex for reading from construction to destruction. */
class HOST_SCOPED_LOCK_TYPE ReaderLock {
  public:
    explicit ReaderLock(SharedMutex& mutex) HOST_ACQUIRES_SHARED(mutex) : mLock(mutex.mMutex) {}
    ~ReaderLock() HOST_RELEASES() = default;

    ReaderLock(ReaderLock const&) = delete;
    ReaderLock& operator=(ReaderLock const&) = delete;

  private:
    std::shared_lock<std::shared_mutex> const mLock;
};

/** Holds a SharedMutex for writing from construction to destruction. */
class HOST_SCOPED_LOCK_TYPE WriterLock {
  public:
    explicit WriterLock(SharedMutex& mutex) HOST_ACQUIRES(mutex) : mLock(mutex.mMutex) {}
    ~WriterLock() HOST_RELEASES() = default;

    WriterLock(WriterLock const&) = delete;
    WriterLock& operator=(WriterLock const&) = delete;

  private:
    std::unique_lock<std::shared_mutex> const mLock;
};

}  // namespace quen::host
