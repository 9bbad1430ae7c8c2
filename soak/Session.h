#pragma once

#include <memory>
#include <vector>

#include <quenOfflineDevice/quenOfflineDevice.h>

#include "Client.h"
#include "Faults.h"
#include "Isp.h"
#include "Ledger.h"

namespace quensoak {

/** What the run shares. */
struct Cast {
    Ledger& ledger;
    Isp& isp;
    Client& client;
    Faults& faults;
    uint64_t requests;  ///< of the whole run
};

/** The life of one device object, from `create` to its end. One thread. */
class Session {
  public:
    explicit Session(Cast const& cast);

    /** Runs it. At the end every account is closed, unless the library holds on to one. */
    void run();

  private:
    double progress() const;
    bool isDoomed() const { return mPlan.ending == Ending::ModuleDies; }
    void runPhase(Phase const& phase);
    uint32_t submit(Plan const& plan, Client::Circumstances circumstances);
    void reconfigure(Phase const& phase);
    void useNumberTwice(Phase const& phase);
    void finishPhase(Phase const& phase, bool isLast);
    void afterGivingUp();
    void abandon(uint64_t records, uint64_t descriptors);
    void dieIn(Phase const& phase);
    void callUnconnected();
    void end();

    Cast const& mCast;
    SessionPlan const mPlan;
    std::unique_ptr<quenOfflineDevice> mDevice = std::make_unique<quenOfflineDevice>();
    Configuration mConfiguration;
    uint64_t mStuck = 0;  // requests that wait for an answer which never comes
    uint64_t mMaybeStuck = 0;
    uint32_t mOutlasting = 0;        // the number of a request whose callback is at work; 0: none
    uint64_t mStuckDescriptors = 0;  // in the records of the stuck ones
};

}  // namespace quensoak
