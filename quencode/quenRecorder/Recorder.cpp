#include "quenRecorder/Recorder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <utility>

#include <google/protobuf/io/coded_stream.h>

#include "recording.pb.h"

namespace quen::recorder {
namespace {

using google::protobuf::io::CodedOutputStream;
using recording::Crossing;

constexpr uint32_t kVersion = 1;
constexpr size_t kLargestPrefix = 10;  // bytes of a varint
constexpr size_t kKeptBytes = 65536;   // no more is kept from one crossing to the next

uint64_t now() {
    timespec time = {};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<uint64_t>(time.tv_sec) * 1000000000u + static_cast<uint64_t>(time.tv_nsec);
}

/** Writes all of the bytes. @return 0, or the errno of the failure */
int writeAll(int file, uint8_t const* bytes, size_t size) {
    while (size > 0) {
        ssize_t const written = ::write(file, bytes, size);
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        if (written > 0) {
            bytes += written;
            size -= static_cast<size_t>(written);
        }
    }
    return 0;
}

struct Current {
    Mutex lock;
    std::shared_ptr<Recorder> recorder QUEN_GUARDED_BY(lock);
};

/** Never destroyed: threads of the ISP may outlive the process's static objects. */
Current& currentRecorder() {
    static auto* const instance = new Current;
    return *instance;
}

}  // namespace

std::shared_ptr<Recorder> Recorder::start(char const* path, Pictures pictures, int& error) {
    int const file = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (file < 0) {
        error = errno;
        return nullptr;
    }
    std::shared_ptr<Recorder> recorder(new Recorder(file, pictures));
    Crossing crossing;
    recording::Header* const header = crossing.mutable_header();
    header->set_version(kVersion);
    header->set_pictures(pictures == Pictures::Whole ? recording::Header::WHOLE
                                                     : recording::Header::HASHES);
    MutexLock const lock(recorder->mLock);
    recorder->appendLocked(crossing);
    error = recorder->mError;
    return error == 0 ? recorder : nullptr;
}

Recorder::Recorder(int file, Pictures pictures) : mFile(file), mPictures(pictures), mBegin(now()) {}

Recorder::~Recorder() {
    ::close(mFile);
}

void Recorder::setCurrent(std::shared_ptr<Recorder> recorder) {
    Current& current = currentRecorder();
    MutexLock const lock(current.lock);
    std::swap(current.recorder, recorder);
}

std::shared_ptr<Recorder> Recorder::current() {
    Current& current = currentRecorder();
    MutexLock const lock(current.lock);
    return current.recorder;
}

uint32_t Recorder::newSession() {
    MutexLock const lock(mDeferredLock);
    return ++mSessions;
}

uint64_t Recorder::newCall() {
    MutexLock const lock(mDeferredLock);
    return ++mCalls;
}

void Recorder::write(Crossing& crossing) {
    stamp(crossing);
    MutexLock const lock(mLock);
    appendDeferredLocked();
    appendLocked(crossing);
}

void Recorder::writeWithoutWaiting(Crossing& crossing) {
    stamp(crossing);
    if (mLock.tryLock()) {
        appendDeferredLocked();
        appendLocked(crossing);
        mLock.unlock();
        return;
    }
    MutexLock const lock(mDeferredLock);
    mDeferred.push_back(std::move(crossing));
}

std::string Recorder::finish() {
    MutexLock const lock(mLock);
    if (!mEnded) {
        appendDeferredLocked();
        Crossing crossing;
        crossing.set_time_ns(now() - mBegin);
        crossing.mutable_end()->set_crossings(mWritten);
        appendLocked(crossing);
        mEnded = true;
    }
    if (mError == 0) {
        return {};
    }
    return "its file took " + std::to_string(mWritten - 1) + " crossings and no more (" +
           strerror(mError) + "); " + std::to_string(mDropped) + " are missing";
}

/** Says when and on which thread a crossing happened. */
void Recorder::stamp(Crossing& crossing) {
    crossing.set_time_ns(now() - mBegin);
    MutexLock const lock(mDeferredLock);
    auto const next = static_cast<uint32_t>(mThreads.size() + 1);
    crossing.set_thread(mThreads.try_emplace(std::this_thread::get_id(), next).first->second);
}

void Recorder::appendDeferredLocked() {
    std::vector<Crossing> deferred;
    {
        MutexLock const lock(mDeferredLock);
        deferred.swap(mDeferred);
    }
    for (Crossing const& crossing : deferred) {
        appendLocked(crossing);
    }
}

/** Appends a crossing, or drops it when the recording has ended. */
void Recorder::appendLocked(Crossing const& crossing) {
    if (mEnded || mError != 0) {
        ++mDropped;
        return;
    }
    size_t const size = crossing.ByteSizeLong();
    if (size > INT32_MAX) {
        failLocked(EFBIG);
        return;
    }
    mBytes.resize(kLargestPrefix + size);
    uint8_t* const body =
            CodedOutputStream::WriteVarint32ToArray(static_cast<uint32_t>(size), mBytes.data());
    uint8_t const* const end = crossing.SerializeWithCachedSizesToArray(body);
    auto const total = static_cast<size_t>(end - mBytes.data());
    int const error = writeAll(mFile, mBytes.data(), total);
    if (mBytes.capacity() > kKeptBytes) {
        std::vector<uint8_t>().swap(mBytes);
    }
    if (error != 0) {
        failLocked(error);
        return;
    }
    mSize += static_cast<int64_t>(total);
    ++mWritten;
}

/** Ends the recording after its last whole crossing. */
void Recorder::failLocked(int error) {
    mError = error;
    ++mDropped;
    // What cannot be cut a reader leaves out.
    static_cast<void>(ftruncate(mFile, mSize) == 0);
}

}  // namespace quen::recorder
