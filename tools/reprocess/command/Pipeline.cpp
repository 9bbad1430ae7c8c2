#include "command/Pipeline.h"

#include <algorithm>
#include <system_error>

#include "host/threea/ThreeAStore.h"

namespace quen::reprocess {

namespace {

constexpr size_t kMostSubmitted = 4;

// A mosaic's request takes two 3A buffers, its JPEG's a third, and what reads a buffer keeps it.
// Until a frame's answer is read, the frames submitted before it take two more and those after it
// two.
static_assert(host::SharedMemoryThreeAStore::kBuffers >= 4 * kMostSubmitted,
              "a frame's 3A buffer is handed out again while it is in work");

constexpr size_t kReadAhead = 1;
constexpr size_t kMostUnwritten = 2;  // beyond those in work

}  // namespace

Pipeline::Pipeline(size_t frames, size_t jobs, size_t memory, PipelineStages& stages)
    : mFrames(frames), mJobs(jobs), mMemory(memory), mStages(stages), mRead(frames) {}

size_t Pipeline::run() {
    std::vector<std::thread> threads = startThreads();
    size_t const mostSubmitted = std::min(mJobs, kMostSubmitted);
    size_t submitted = 0;
    size_t frame = 0;
    for (; frame < mFrames; ++frame) {
        if (submitted == frame && !waitUntilRead(frame)) {
            break;
        }
        // Those behind it are developed while it is encoded.
        while (submitted < std::min(mFrames, frame + mostSubmitted) && hasRead(submitted)) {
            mStages.submit(submitted++);
        }
        mStages.finish(frame);
        host::MutexLock const lock(mLock);
        ++mFinished;
        mChanged.notifyAll();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return frame;
}

/** One that writes, and as many that read as the system allows. @throws when that is none */
std::vector<std::thread> Pipeline::startThreads() {
    std::vector<std::thread> threads;
    size_t const readers = std::min(mJobs + kReadAhead, mFrames);
    threads.reserve(readers + 1);
    try {
        for (size_t i = 0; i < readers; ++i) {
            threads.emplace_back([this] { readFrames(); });
        }
    } catch (std::system_error const&) {
        if (threads.empty()) {
            throw;
        }
    }
    try {
        threads.emplace_back([this] { writeFrames(); });
    } catch (std::system_error const&) {
        stop();
        for (std::thread& thread : threads) {
            thread.join();
        }
        throw;
    }
    return threads;
}

void Pipeline::stop() {
    host::MutexLock const lock(mLock);
    mStopped = true;
    mChanged.notifyAll();
}

/** Whether another frame may be read now. */
bool Pipeline::mayRead() const {
    if (mBegun - mWritten >= mJobs + kReadAhead + kMostUnwritten) {
        return false;
    }
    size_t const held = mBegun - mFinished;
    size_t const room = mLargest == 0 ? 1 : mMemory / mLargest;
    return held == 0 || held < std::min(mJobs + kReadAhead, room);
}

void Pipeline::readFrames() {
    for (;;) {
        size_t frame = 0;
        {
            host::MutexLock const lock(mLock);
            while (mBegun < mFrames && !mStopped && !mayRead()) {
                mChanged.wait(mLock);
            }
            mStopped = mStopped || mStages.isStopped();
            if (mBegun == mFrames || mStopped) {
                mChanged.notifyAll();
                return;
            }
            frame = mBegun++;
        }
        size_t const bytes = mStages.read(frame);
        host::MutexLock const lock(mLock);
        mRead[frame] = true;
        mLargest = std::max({mLargest, bytes, size_t{1}});
        mChanged.notifyAll();
    }
}

bool Pipeline::hasRead(size_t frame) {
    host::MutexLock const lock(mLock);
    return mRead[frame];
}

/** @return false when the frame will not be read */
bool Pipeline::waitUntilRead(size_t frame) {
    host::MutexLock const lock(mLock);
    while (!mRead[frame] && !(mStopped && mBegun <= frame)) {
        mChanged.wait(mLock);
    }
    return mRead[frame];
}

void Pipeline::writeFrames() {
    for (;;) {
        size_t frame = 0;
        {
            host::MutexLock const lock(mLock);
            while (mWritten == mFinished && mWritten < mFrames &&
                   !(mStopped && mBegun == mWritten)) {
                mChanged.wait(mLock);
            }
            if (mWritten == mFinished) {
                return;
            }
            frame = mWritten;
        }
        mStages.write(frame);
        host::MutexLock const lock(mLock);
        ++mWritten;
        mChanged.notifyAll();
    }
}

}  // namespace quen::reprocess
