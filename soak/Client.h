#pragma once

#include <memory>
#include <vector>

#include <quenOfflineDevice/quenOfflineDevice.h>
#include <system/camera_metadata.h>

#include "Graphics.h"
#include "Isp.h"
#include "Ledger.h"
#include "ThreeAStore.h"

namespace quensoak {

/** Which of the client's metadata a request carries. */
enum Settings : uint8_t { kWithIndex, kWithoutIndex, kWithTuningBytes, kNoSettings, kSettings };

/**
 * The post-processing service's part: its buffers and metadata, which every request shares, its
 * calls, and whether each returns what it must. One thread.
 */
class Client {
  public:
    Client(Ledger& ledger, Isp& isp, Graphics& graphics, PlannedThreeAStore& threeA);
    ~Client();
    Client(Client const&) = delete;
    Client& operator=(Client const&) = delete;

    /** How a request is made, beside its plan. */
    struct Circumstances {
        bool inDoomedSession = false;
        bool moduleMayBeDead = false;
        bool isUnconnected = false;  ///< before `create` or after `destroy`
        bool mustGiveUp = false;     ///< it reconfigures, and something is never answered
        bool mayGiveUp = false;      ///< the same, and nobody can know
        uint32_t secondOf = 0;       ///< the number of another one, outstanding; 0: none
        uint32_t number = 0;         ///< given up, with its result at work; 0: none
        bool numberIsTaken = false;  ///< by the next request, as that
    };

    /** What came of a call. */
    struct Outcome {
        int result;
        uint32_t number;
        bool staysOutstanding;    ///< its record waits for an answer that never comes
        bool mayStayOutstanding;  ///< that, or the library has done with it
    };

    /** How many descriptors the record of a request holds in its tuning handles. */
    static uint64_t descriptorsOf(Plan const& plan);

    void create(quenOfflineDevice& device, Configuration const& configuration);
    Outcome submit(quenOfflineDevice& device, Plan const& plan, Circumstances const& circumstances);

  private:
    struct Memory;
    struct Request;

    uint32_t numberFor(Plan const& plan, Circumstances const& circumstances);
    void fill(Request& request, Plan const& plan);
    void judge(Account const& account, double seconds, bool timedOut,
               Circumstances const& circumstances);

    Ledger& mLedger;
    Isp& mIsp;
    Graphics& mGraphics;
    PlannedThreeAStore& mThreeA;
    std::vector<std::unique_ptr<Memory>> mMemory;
    std::vector<camera_metadata*> mSettings;
    uint32_t mLatestNumber = 0;    // of all that were given out
    uint32_t mLastWaitNumber = 0;  // of the latest call that was answered; 0: none
};

}  // namespace quensoak
