#pragma once

#include <cstddef>
#include <thread>
#include <vector>

#include "host/base/Mutex.h"

namespace quen::reprocess {

/** The stages of a frame, by its index. None throws. */
class PipelineStages {
  public:
    virtual ~PipelineStages() = default;

    /** Reads the frame. Any thread, several frames at a time. @return the bytes it will take */
    virtual size_t read(size_t frame) = 0;

    /** Starts the frame's work. On the thread that runs the pipeline, frame by frame. */
    virtual void submit(size_t frame) = 0;

    /** Ends the frame's work. On the thread that runs the pipeline, frame by frame. */
    virtual void finish(size_t frame) = 0;

    /** Writes what came of the frame. On one thread, frame by frame. */
    virtual void write(size_t frame) = 0;

    /** Whether no further frames shall be read. Any thread. */
    virtual bool isStopped() = 0;
};

/**
 * Runs the stages of frames beside each other: up to `jobs` frames are submitted at a time, one
 * more is read ahead, and what is finished is written meanwhile. Each stage takes the frames in
 * their order; reading begins in order and several frames may be read at a time.
 *
 * No more frames are held than memory has room for, going by the largest that was read: the second
 * one is read when the size of the first is known.
 */
class Pipeline {
  public:
    /** @param memory bytes that frames may take together; one is always let in */
    Pipeline(size_t frames, size_t jobs, size_t memory, PipelineStages& stages);

    /**
     * Runs all frames, or those read before a stop.
     *
     * @return how many
     * @throws std::system_error, before anything is submitted, when no thread can be started
     */
    size_t run();

  private:
    std::vector<std::thread> startThreads();
    void stop();
    void readFrames();
    void writeFrames();
    bool mayRead() const HOST_REQUIRES(mLock);
    bool hasRead(size_t frame);
    bool waitUntilRead(size_t frame);

    size_t const mFrames;
    size_t const mJobs;
    size_t const mMemory;
    PipelineStages& mStages;

    host::Mutex mLock;
    host::Condition mChanged;
    std::vector<bool> mRead HOST_GUARDED_BY(mLock);
    size_t mBegun HOST_GUARDED_BY(mLock) = 0;     // frames whose reading has begun
    size_t mFinished HOST_GUARDED_BY(mLock) = 0;  // frames whose work has ended
    size_t mWritten HOST_GUARDED_BY(mLock) = 0;
    size_t mLargest HOST_GUARDED_BY(mLock) = 0;  // bytes of a frame; 0 until one is read
    bool mStopped HOST_GUARDED_BY(mLock) = false;
};

}  // namespace quen::reprocess
