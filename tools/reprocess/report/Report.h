#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include <system/camera_metadata.h>

#include "host/base/Mutex.h"
#include "host/isp/device/IspObserver.h"
#include "report/FrameInfo.h"
#include "report/Stopwatch.h"

namespace quen::reprocess {

/**
 * Observes the ISP: how it answered the latest request of each frame, which the library does not
 * always report; and for --info everything that it is given and gives back. Frames are told apart
 * by their numbers, which are those of their requests. Thread-safe; requests are begun and
 * submitted on one thread.
 */
class Report : public host::isp::IspObserver {
  public:
    /** @param format of what `take` gives */
    explicit Report(InfoFormat format) : mFormat(format) {}

    /** How the ISP answered a request. */
    enum class Outcome { None, Accepted, Refused, Finished };

    /**
     * Starts a request of a frame: forgets the outcome of the frame's previous one. Until the next
     * call, configurations are taken for this frame's.
     */
    void begin(uint32_t frame);

    Outcome outcome(uint32_t frame) const;

    /** The failure that the ISP reported for a frame, in words; empty when there is none. */
    std::string problem(uint32_t frame) const;

    /** Adds the result that the client got, and the contents of its 3A buffer. */
    void addClientResult(uint32_t frame, camera_metadata const* metadata, int32_t tuningIndex);

    /** Ends a frame and takes what --info tells of it; empty without --info. */
    std::string take(uint32_t frame, FrameOutcome const& outcome, Stopwatch const& watch);

    void onConfigured(ISPStreamConfiguration const& config, Status status,
                      std::string const& problem) override;
    void onRequest(ISPRequest const& request, Status status, std::string const& problem) override;
    void onResult(ISPResult const& result, host::isp::IspReport const& report) override;

  private:
    struct Answer {
        Outcome outcome = Outcome::None;
        Status status = Status::OK;
        std::string problem;  ///< why it is not OK, in the ISP's words
    };

    struct Frame {
        Answer answer;
        std::unique_ptr<FrameInfo> info;  ///< from the first thing to be told
    };

    Answer answerOf(uint32_t number) const;
    void setOutcome(uint32_t frame, Outcome outcome, Status status, std::string const& problem);
    FrameInfo& infoLocked(uint32_t frame) HOST_REQUIRES(mLock);

    InfoFormat const mFormat;
    mutable host::Mutex mLock;
    std::map<uint32_t, Frame> mFrames HOST_GUARDED_BY(mLock);  // those in work, by number
    uint32_t mBegun HOST_GUARDED_BY(mLock) = 0;                // the frame begun last
};

}  // namespace quen::reprocess
