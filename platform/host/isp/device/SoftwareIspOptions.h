#pragma once

#include <chrono>
#include <memory>

#include "host/isp/device/IspObserver.h"

namespace quen::host::isp {

/** How software ISP devices behave. */
struct SoftwareIspOptions {
    /**
     * Least time from a request's submission to its result. A chip never answers within
     * microseconds, and some clients start to wait only after they have submitted.
     */
    std::chrono::milliseconds minimumLatency{5};

    /** Observes the devices; may be null. */
    std::shared_ptr<IspObserver> observer;
};

}  // namespace quen::host::isp
