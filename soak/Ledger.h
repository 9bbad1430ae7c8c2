#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Plan.h"

namespace quensoak {

class Ledger;

/**
 * What happened to one request, as the harness saw it from outside: what the ISP did with it and
 * what its client was told. Whoever can still touch the request holds the account: the client's
 * thread during the call, every answer on its way, and the callback that the library keeps. The
 * last of them to let go closes it, and closing is when it is judged.
 *
 * The members are written by the client's thread before the request is submitted, but for the
 * atomic ones.
 */
class Account {
  public:
    Account(Ledger& judge, Plan const& itsPlan, uint32_t itsNumber, bool isDoomed)
        : ledger(judge), plan(itsPlan), number(itsNumber), inDoomedSession(isDoomed) {}
    ~Account();

    Account(Account const&) = delete;
    Account& operator=(Account const&) = delete;

    Ledger& ledger;
    Plan const plan;
    uint32_t const number;
    bool const inDoomedSession;         ///< the ISP module dies at the session's end
    bool isSecond = false;              ///< the number was outstanding: must not be recorded
    bool reachedDead = false;           ///< it was submitted to a dead module
    bool isUnconnected = false;         ///< the device object has no ISP device
    bool numberIsTaken = false;         ///< the next request has it
    bool nearDeath = false;             ///< the module died meanwhile, or had died
    std::atomic<bool> returned{false};  ///< the call has returned, not through a time-out
    std::atomic<int> result{0};         ///< what `process` returned
    std::atomic<bool> givenUp{false};   ///< a drained wait has emptied the table meanwhile
    std::atomic<int> answers{0};        ///< results on their way to the library, or there
    std::atomic<int> answersInTime{0};  ///< those of them that find the request in the table
    std::atomic<int> metadataTold{0};
    std::atomic<int> endsTold{0};
    std::atomic<char const*> wrong{nullptr};  ///< what was wrong with what it was told
};

using AccountRef = std::shared_ptr<Account>;

/** Everything that must not happen, and a few things that may. */
enum class Count : uint8_t {
    Requests,
    ToldOnce,
    Returned,  ///< the waiting call returned what it must
    RightlyNever,

    Lost,
    ToldTwice,
    Uninvited,
    WrongContent,
    WrongReturn,
    UnearnedTimeout,
    UnearnedDrain,
    IspSawWrong,

    LostSignals,  ///< default build: the answer came before the wait
    Abandoned,    ///< default build: records that the contract leaks
    AbandonedDescriptors,
    AbandonedMappings,
    Drains,
    EarnedDrains,
    EarnedTimeouts,
    Sessions,
    SessionsEndedInTheMiddle,
    Deaths,
    Strays,
    EarlyResults,
    Malformed,
    SecondsOfANumber,
    NumbersUsedAgain,
    LateAnswers,
    CallsRefusedEarly,  ///< before anything is allocated
    Last,
};

/**
 * The conservation book-keeping: judges accounts as they are closed, and knows which numbers are
 * free again. Any thread.
 */
class Ledger {
  public:
    void add(Count what, uint64_t howMany = 1);
    uint64_t count(Count what) const;

    /** A request whose story has gone wrong: counted and, the first few, told on stderr. */
    void blame(Count what, Account const& account, char const* why);

    /** Opens an account. */
    AccountRef openAccount(Plan const& plan, uint32_t number, bool inDoomedSession);

    /** Accounts that are still open: requests whose callback the library has not let go of. */
    uint64_t open() const { return mOpen; }

    /** A number that no answer can reach any more; 0 when there is none. */
    uint32_t takeFreeNumber();

    /** Whether anything happened that must not. */
    bool isClean() const;

    std::string faultsText() const;

  private:
    friend class Account;
    void close(Account const& account);
    void judgeTold(Account const& account);
    static bool isFree(Account const& account);

    static constexpr size_t kFreeNumbers = 64;

    std::array<std::atomic<uint64_t>, static_cast<size_t>(Count::Last)> mCounts{};
    std::array<std::atomic<uint64_t>, kFates> mFates{};
    std::array<std::atomic<uint64_t>, kBufferFaults> mBufferFaults{};
    std::atomic<uint64_t> mDoubled{0};
    std::atomic<uint64_t> mDoubledTogether{0};
    std::atomic<uint64_t> mSlowListeners{0};
    std::atomic<uint64_t> mLostListeners{0};
    std::atomic<uint64_t> mWrongTrailers{0};
    std::atomic<uint64_t> mWithout3A{0};
    std::atomic<uint64_t> mFailedStatuses{0};
    std::atomic<uint64_t> mOpen{0};
    std::atomic<int> mBlamed{0};

    std::mutex mLock;
    std::array<uint32_t, kFreeNumbers> mFree{};  // guarded by mLock
    size_t mFreeCount = 0;                       // guarded by mLock
};

}  // namespace quensoak
