#pragma once

#include <cstdint>
#include <deque>

#include "host/base/Mutex.h"
#include "host/threea/ThreeAStore.h"
#include "recording.pb.h"

namespace quen::replay {

/**
 * The 3A store of a replay: gives the library the buffers that it was given when it was recorded,
 * as far as the request tells that reached the ISP. The buffers have no content: the library only
 * hands them on. Any thread.
 */
class ReplayThreeA final : public host::IThreeAStore {
  public:
    ReplayThreeA();
    ~ReplayThreeA() override;
    ReplayThreeA(ReplayThreeA const&) = delete;
    ReplayThreeA& operator=(ReplayThreeA const&) = delete;

    /**
     * Says what the next request asks for.
     *
     * @param request as the ISP got it; null when it got none
     * @param index that stands in the settings after the call
     */
    void expect(recording::IspRequest const* request, int32_t index);

    /** How many more output buffers were asked for since then than the ISP was given. */
    int unexpected() const;

    int get3AInfoBuf(QIF3ABufferInfo* info, unsigned int size) override;
    int getTuningData(int* fd, unsigned int bufferIndex) override;

  private:
    int const mMemory;
    mutable host::Mutex mLock;
    bool mHasInput HOST_GUARDED_BY(mLock) = false;
    std::deque<bool> mHasOutput HOST_GUARDED_BY(mLock);  // of those that are asked for, in turn
    int mUnexpected HOST_GUARDED_BY(mLock) = 0;
    int32_t mIndex HOST_GUARDED_BY(mLock) = 0;
};

}  // namespace quen::replay
