#pragma once

#include <memory>

#include <vendor/mediatek/hardware/camera/isphal/1.0/types.h>

#include "host/isp/device/IspObserver.h"
#include "host/isp/device/Request.h"
#include "host/isp/device/SoftwareIspOptions.h"
#include "host/isp/device/WorkQueue.h"

namespace quen::host::isp {

/** An accepted request in the queue: executes it and delivers its result to the callback. */
class RequestWork final : public QueuedWork {
  public:
    RequestWork(std::unique_ptr<Request> request, SoftwareIspOptions const& options);

    void run() override;

    /** Answers REQUEST_ERROR. */
    void abandon() override;

  private:
    using Status = vendor::mediatek::hardware::camera::isphal::V1_0::Status;

    void releaseBuffers();
    void hold(IspReport& report);
    void deliver(Status status, IspReport const& report);

    std::unique_ptr<Request> mRequest;
    SoftwareIspOptions const mOptions;
};

}  // namespace quen::host::isp
