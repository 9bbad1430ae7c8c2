#pragma once

#include <cstdint>
#include <string>

#include <system/camera_metadata.h>

#include "host/base/Mutex.h"
#include "host/isp/device/IspObserver.h"
#include "report/Stopwatch.h"

namespace quen::reprocess {

/**
 * Observes the ISP: how it answered the current request, which the library does not always report;
 * and for --info everything that it is given and gives back. Thread-safe.
 */
class Report : public host::isp::IspObserver {
  public:
    /** @param detailed whether to keep text for `take` */
    explicit Report(bool detailed) : mDetailed(detailed) {}

    /** How the ISP answered a request. */
    enum class Outcome { None, Accepted, Refused, Finished };

    /** Starts a request: forgets the outcome of the previous one. */
    void begin();

    Outcome outcome() const;

    /** The failure that the ISP reported, in words; empty when there is none. */
    std::string problem() const;

    /** Adds the result that the client got, and the contents of its 3A buffer. */
    void addClientResult(camera_metadata const* metadata, int32_t tuningIndex);

    /** Takes the text since the last call, with the times of the legs; empty unless detailed. */
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
