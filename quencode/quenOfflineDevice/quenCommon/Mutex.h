#pragma once

#include <pthread.h>
#include <sys/time.h>

#include <ctime>

/**
 * A mutex whose use clang checks (-Wthread-safety): a member names the lock that it is guarded by,
 * and a function names the lock that its caller must hold.
 */

#if defined(__clang__)
#define QUEN_ANNOTATION(x) __attribute__((x))
#else
#define QUEN_ANNOTATION(x)
#endif

/** Of a member: read and written only with the mutex held. */
#define QUEN_GUARDED_BY(mutex) QUEN_ANNOTATION(guarded_by(mutex))
/** Of a function: the caller holds the mutex. */
#define QUEN_REQUIRES(mutex) QUEN_ANNOTATION(requires_capability(mutex))
/** Of a function: the caller does not hold the mutex. */
#define QUEN_EXCLUDES(mutex) QUEN_ANNOTATION(locks_excluded(mutex))

namespace quen {

/**
 * A non-recursive mutex with default attributes. Usable before any constructor has run and after
 * every destructor: with default attributes there is nothing to set up or to release, and threads
 * of the ISP HAL may outlive the process's static objects.
 */
class QUEN_ANNOTATION(capability("mutex")) Mutex {
  public:
    constexpr Mutex() = default;

    Mutex(Mutex const&) = delete;
    Mutex& operator=(Mutex const&) = delete;

    void lock() QUEN_ANNOTATION(acquire_capability()) { pthread_mutex_lock(&mMutex); }
    void unlock() QUEN_ANNOTATION(release_capability()) { pthread_mutex_unlock(&mMutex); }
    /** Returns whether the mutex was free and is now the caller's. */
    bool tryLock() QUEN_ANNOTATION(try_acquire_capability(true)) {
        return pthread_mutex_trylock(&mMutex) == 0;
    }

  private:
    friend class Condition;

    pthread_mutex_t mMutex = PTHREAD_MUTEX_INITIALIZER;
};

/** Holds a mutex for the length of a scope. */
class QUEN_ANNOTATION(scoped_lockable) MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) QUEN_ANNOTATION(acquire_capability(mutex)) : mMutex(mutex) {
        mMutex.lock();
    }
    ~MutexLock() QUEN_ANNOTATION(release_capability()) { mMutex.unlock(); }

    MutexLock(MutexLock const&) = delete;
    MutexLock& operator=(MutexLock const&) = delete;

  private:
    Mutex& mMutex;
};

/** The deadline that lies whole seconds after a time of the realtime clock. */
inline timespec deadlineAfter(timeval const& start, time_t seconds) {
    constexpr long kNanosecondsPerMicrosecond = 1000;
    return {start.tv_sec + seconds, start.tv_usec * kNanosecondsPerMicrosecond};
}

/** A condition variable on the realtime clock, usable as early and as late as a Mutex. */
class Condition {
  public:
    constexpr Condition() = default;

    Condition(Condition const&) = delete;
    Condition& operator=(Condition const&) = delete;

    /**
     * Waits once; a signal and a spurious wake-up both end the wait.
     *
     * @param deadline absolute
     * @return 0, or the error: ETIMEDOUT when the deadline has passed
     */
    int waitUntil(Mutex& mutex, timespec const& deadline) QUEN_REQUIRES(mutex) {
        return pthread_cond_timedwait(&mCondition, &mutex.mMutex, &deadline);
    }
    void signal() { pthread_cond_signal(&mCondition); }
    void broadcast() { pthread_cond_broadcast(&mCondition); }

  private:
    pthread_cond_t mCondition = PTHREAD_COND_INITIALIZER;
};

}  // namespace quen
