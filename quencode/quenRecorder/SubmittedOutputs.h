#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include <hidl/HidlSupport.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "quenCommon/Mutex.h"

namespace quen::recorder {

/**
 * The output buffers of the requests that an ISP device is at, as clones: what the ISP leaves in
 * them is looked at when it tells the result. Any thread.
 */
class SubmittedOutputs {
  public:
    /** An output; a tuning buffer of the 3A store is left out, and what cannot be cloned. */
    struct Output {
        android::hardware::hidl_handle picture;
        android::hardware::hidl_handle tuning;
    };

    void add(vendor::mediatek::hardware::camera::isphal::V1_0::ISPRequest const& request)
            QUEN_EXCLUDES(mLock);

    /** Takes out the oldest request of a number; nothing when there is none. */
    std::vector<Output> take(uint32_t number) QUEN_EXCLUDES(mLock);

    /** Forgets the latest request of a number, which the device has refused. */
    void takeBack(uint32_t number) QUEN_EXCLUDES(mLock);

    void clear() QUEN_EXCLUDES(mLock);

  private:
    Mutex mLock;
    std::multimap<uint32_t, std::vector<Output>> mRequests QUEN_GUARDED_BY(mLock);
};

}  // namespace quen::recorder
