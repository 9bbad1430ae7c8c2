#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>

#include "RecordedOrder.h"
#include "ReplayIsp.h"
#include "ReplayThreeA.h"
#include "ThreadReplay.h"
#include "host/base/Mutex.h"
#include "host/gralloc/MemfdAllocator.h"

namespace quen::replay {

/**
 * The client of a recording: makes its calls, and takes the library's notifications. Any thread of
 * the replay.
 */
class ReplayClient {
  public:
    /** @param allocator, threeA what the library gets buffers from */
    ReplayClient(ReplayIsp& isp, android::sp<host::MemfdAllocator> const& allocator,
                 ReplayThreeA& threeA);
    ~ReplayClient();
    ReplayClient(ReplayClient const&) = delete;
    ReplayClient& operator=(ReplayClient const&) = delete;

    /** Makes a recorded call of the client. */
    void perform(ThreadReplay& thread, size_t index);

  private:
    class Callback;
    class Request;
    struct Session;

    Session& session(uint32_t number);
    void construct(ThreadReplay& thread, size_t index);
    void create(ThreadReplay& thread, size_t index);
    void config(ThreadReplay& thread, size_t index);
    void process(ThreadReplay& thread, size_t index);
    void simple(ThreadReplay& thread, size_t index);
    void destruct(ThreadReplay& thread, size_t index);
    void prepareCircumstances(ThreadReplay& thread, size_t index);

    ReplayIsp& mIsp;
    android::sp<host::MemfdAllocator> const mAllocator;
    ReplayThreeA& mThreeA;
    host::Mutex mLock;
    std::map<uint32_t, std::unique_ptr<Session>> mSessions HOST_GUARDED_BY(mLock);
};

}  // namespace quen::replay
