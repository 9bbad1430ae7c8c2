#pragma once

#include <cstdint>
#include <string>

#include <system/camera_metadata.h>

#include "host/base/Mutex.h"
#include "host/isp/device/IspObserver.h"
#include "report/Stopwatch.h"

namespace quen::reprocess {

/**
 * Watches the ISP: always for how it takes the current request, which the library does not tell in
 * every case, and for --info for everything that it is given and gives back. Any thread.
 */
class Report : public host::isp::IspObserver {
  public:
    /** @param detailed whether to keep text for `take` */
    explicit Report(bool detailed) : mDetailed(detailed) {}

    /** How the ISP took a request. */
    enum class Outcome { None, Accepted, Refused, Finished };

    /** A request is about to be made: forgets how the ISP took the last one. */
    void begin();

    Outcome outcome() const;

    /** What the ISP said of the request, in words; empty when it was all right or nothing yet. */
    std::string problem() const;

    /** Adds what the client got: the library's result, and the 3A buffer that it leads to. */
    void addClientResult(camera_metadata const* metadata, int32_t tuningIndex);

    /** The text since the last call, with the times of the legs; empty unless detailed. */
    std::string take(Stopwatch const& watch);

    void onConfigured(ISPStreamConfiguration const& config, Status status) override;
    void onRequest(ISPRequest const& request, Status status) override;
    void onResult(ISPResult const& result, host::isp::IspReport const& report) override;

  private:
    void setOutcome(Outcome outcome, Status status);
    void addText(std::string const& text);

    bool const mDetailed;
    mutable host::Mutex mLock;
    std::string mText HOST_GUARDED_BY(mLock);
    Outcome mOutcome HOST_GUARDED_BY(mLock) = Outcome::None;
    Status mStatus HOST_GUARDED_BY(mLock) = Status::OK;
};

}  // namespace quen::reprocess
