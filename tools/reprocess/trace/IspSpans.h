#pragma once

#include <cstdint>
#include <map>
#include <memory>

#include "host/base/Mutex.h"
#include "host/isp/device/IspObserver.h"
#include "trace/Trace.h"

namespace quen::reprocess {

/**
 * Observes the ISP for a timeline: its work on requests and the legs of it, the way of each request
 * from the client's thread and back, and how many are outstanding. Hands everything on to another
 * observer. Thread-safe.
 */
class IspSpans : public host::isp::IspObserver {
  public:
    IspSpans(std::shared_ptr<Trace> trace, std::shared_ptr<host::isp::IspObserver> next);

    void onConfigured(ISPStreamConfiguration const& config, Status status,
                      std::string const& problem) override;
    void onRequest(ISPRequest const& request, Status status, std::string const& problem) override;
    void onResult(ISPResult const& result, host::isp::IspReport const& report) override;

  private:
    struct Outstanding {
        int64_t flow;  // 0: not observed
        size_t left;   // beside it
    };

    Outstanding take(uint32_t request);
    void addWork(ISPResult const& result, host::isp::IspReport const& report, int64_t flow);

    std::shared_ptr<Trace> const mTrace;
    std::shared_ptr<host::isp::IspObserver> const mNext;
    host::Mutex mLock;
    int64_t mFlows HOST_GUARDED_BY(mLock) = 0;                        // ids given so far
    std::map<uint32_t, int64_t> mOutstanding HOST_GUARDED_BY(mLock);  // flows by request number
};

}  // namespace quen::reprocess
