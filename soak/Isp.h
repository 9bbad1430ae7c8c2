#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include <vendor/mediatek/hardware/camera/isphal/1.0/ICallback.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IDevice.h>
#include <vendor/mediatek/hardware/camera/isphal/1.0/IISPModule.h>

#include "Answers.h"
#include "Ledger.h"

namespace quensoak {

/**
 * The ISP: a module whose devices do nothing with a request but what its plan says, and a few
 * threads that answer, in any order. There is one for the whole run; each session opens a device.
 *
 * A device keeps the one promise that it gives: once it is closed, no further result begins. What a
 * thread is at by then may still be going on.
 */
class Isp {
  public:
    Isp(Ledger& ledger, Answers& answers, unsigned threads);
    ~Isp();
    Isp(Isp const&) = delete;
    Isp& operator=(Isp const&) = delete;

    /** Names the request that is submitted next. The client's thread, as all below. */
    void expect(AccountRef account) { mExpected = std::move(account); }

    /** Nothing is expected any more: the call has returned. Whether it was submitted. */
    bool stopExpecting();

    /** Answers what was held back. Returns how many requests. */
    size_t releaseHeld();
    std::vector<AccountRef> const& held() const { return mHeldAccounts; }

    /** What is held back is never answered. */
    void forgetHeld();

    /** Whether the module of the current session has died. */
    bool hasDied();

    /** Waits until fewer than `limit` answers are outstanding. */
    void waitForRoom(size_t limit);

    /** Waits until there is nothing left to answer and no thread is in the library. */
    void waitUntilIdle() { waitForRoom(1); }

  private:
    class Device;
    class Module;

    /** Something that a thread of the ISP is to do. */
    struct Job {
        enum class Kind : uint8_t { Result, EarlyResult, StrayResult, Death };
        Kind kind = Kind::Result;
        Device const* device = nullptr;
        android::sp<isphal::ICallback> callback;
        AccountRef account;
        std::shared_ptr<std::atomic<int>> meeting;  ///< of the copies that go together
    };

    isphal::Status answer(Device& device, isphal::ISPRequest const& request, bool& lostReply);
    void leavePictures(isphal::ISPRequest const& request, Account const& account) const;
    std::vector<Job> jobsOf(Device const& device, android::sp<isphal::ICallback> const& callback,
                            AccountRef const& account, int copies) const;
    void enqueue(std::vector<Job> jobs);
    void deliver(Job const& job);
    static void beginResult(Job const& job);
    void closed(Device const& device);
    void loop(size_t thread);

    Ledger& mLedger;
    Answers& mAnswers;

    // The client's thread.
    AccountRef mExpected;
    std::vector<Job> mHeld;
    std::vector<AccountRef> mHeldAccounts;

    std::mutex mLock;
    std::condition_variable mWork;
    std::condition_variable mRoom;
    std::vector<Job> mQueue;  // guarded by mLock
    size_t mOutstanding = 0;  // guarded by mLock: queued and in hand
    size_t mAwaited = 0;      // guarded by mLock: the limit that somebody waits for
    bool mDied = false;       // guarded by mLock
    bool mEnded = false;      // guarded by mLock
    std::vector<std::thread> mThreads;
};

}  // namespace quensoak
