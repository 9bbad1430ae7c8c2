#pragma once

#include <chrono>
#include <memory>

#include "host/isp/device/IspObserver.h"

namespace quen::host::isp {

/** How software ISP devices behave. */
struct SoftwareIspOptions {
    /**
     * No result is delivered earlier than this after its request was submitted. A chip never
     * answers within microseconds, and there are clients that begin to wait only after they have
     * submitted.
     */
    std::chrono::milliseconds minimumLatency{5};

    /** Told what the devices do; null for nobody. */
    std::shared_ptr<IspObserver> observer;
};

}  // namespace quen::host::isp
