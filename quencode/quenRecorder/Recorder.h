#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "quenCommon/Mutex.h"

// Not included: a client of the recorder builds without Protocol Buffers.
namespace quen::recording {
class Crossing;
}

namespace quen::recorder {

/** What of the pictures is written down. */
enum class Pictures { Hashes, Whole };

/**
 * The file of a recording. Writes each crossing as it happens, with one `write`, so that a process
 * that ends early leaves a recording that can be read up to its last whole crossing.
 *
 * A recording never disturbs the session: when the file takes no more, it is cut after its last
 * whole crossing, further ones are dropped, and `finish` says why. Any thread.
 */
class Recorder {
  public:
    /**
     * Creates the file, in place of an earlier one, and writes the header.
     *
     * @param error receives the errno of a failure
     * @return null when the file cannot be created or written
     */
    static std::shared_ptr<Recorder> start(char const* path, Pictures pictures, int& error);

    ~Recorder();
    Recorder(Recorder const&) = delete;
    Recorder& operator=(Recorder const&) = delete;

    /**
     * The recorder that objects made from now on write to; null, which it is at first: they record
     * nothing. An object keeps its recorder.
     */
    static void setCurrent(std::shared_ptr<Recorder> recorder);
    static std::shared_ptr<Recorder> current();

    Pictures pictures() const { return mPictures; }

    /** Number of a new device object; of a new call. From 1 on. */
    uint32_t newSession() QUEN_EXCLUDES(mDeferredLock);
    uint64_t newCall() QUEN_EXCLUDES(mDeferredLock);

    /** Writes a crossing of this thread, now. */
    void write(recording::Crossing& crossing) QUEN_EXCLUDES(mLock) QUEN_EXCLUDES(mDeferredLock);

    /**
     * As write, but never waits for another thread: when one is writing, the crossing is written
     * before that of whoever writes next. For a thread whose sleep others take for a sign.
     */
    void writeWithoutWaiting(recording::Crossing& crossing) QUEN_EXCLUDES(mLock)
            QUEN_EXCLUDES(mDeferredLock);

    /**
     * Ends the recording. Crossings after it are dropped.
     *
     * @return what is missing in the file and why; empty when nothing is
     */
    std::string finish() QUEN_EXCLUDES(mLock) QUEN_EXCLUDES(mDeferredLock);

  private:
    Recorder(int file, Pictures pictures);

    void stamp(recording::Crossing& crossing) QUEN_EXCLUDES(mDeferredLock);
    void appendLocked(recording::Crossing const& crossing) QUEN_REQUIRES(mLock);
    void appendDeferredLocked() QUEN_REQUIRES(mLock);
    void failLocked(int error) QUEN_REQUIRES(mLock);

    int const mFile;
    Pictures const mPictures;
    uint64_t const mBegin;  // monotonic, ns

    Mutex mLock;  // before mDeferredLock
    bool mEnded QUEN_GUARDED_BY(mLock) = false;
    int mError QUEN_GUARDED_BY(mLock) = 0;         // errno of what ended the recording early
    uint64_t mWritten QUEN_GUARDED_BY(mLock) = 0;  // crossings and the header
    uint64_t mDropped QUEN_GUARDED_BY(mLock) = 0;
    int64_t mSize QUEN_GUARDED_BY(mLock) = 0;            // bytes of whole crossings
    std::vector<uint8_t> mBytes QUEN_GUARDED_BY(mLock);  // of the crossing being written

    Mutex mDeferredLock;  // a leaf, held for moments: nothing is written with it held
    std::vector<recording::Crossing> mDeferred QUEN_GUARDED_BY(mDeferredLock);
    std::map<std::thread::id, uint32_t> mThreads QUEN_GUARDED_BY(mDeferredLock);
    uint32_t mSessions QUEN_GUARDED_BY(mDeferredLock) = 0;
    uint64_t mCalls QUEN_GUARDED_BY(mDeferredLock) = 0;
};

}  // namespace quen::recorder
