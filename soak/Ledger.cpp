#include "Ledger.h"

#include <cstdio>

#include "Build.h"

namespace quensoak {

namespace {

constexpr int kBlamedAloud = 20;

constexpr char const* kFateNames[kFates] = {"answered", "answered at once", "held",      "dropped",
                                            "refused",  "never reached",    "reply lost"};

constexpr char const* kBufferFaultNames[kBufferFaults] = {
        "none",           "input not allocated", "JPEG not allocated", "tuning not allocated",
        "input import",   "input import, once",  "JPEG 1st import",    "JPEG 2nd import",
        "tuning import",  "input lock",          "JPEG 1st lock",      "JPEG 2nd lock",
        "tuning lock",    "descriptor lost",     "free lost",          "input unmappable",
        "JPEG unmappable"};

/** How often a client is to be told the end of its request: at least and at most. */
struct Due {
    int least;
    int most;
};

bool isRefused(Fate fate) {
    return fate == Fate::Refused || fate == Fate::NeverReached;
}

/** What the client of a request with a callback must be told. */
Due dueOf(Account const& account) {
    if (account.result < 0 || account.isSecond) {
        return {0, 0};
    }
    Fate const fate = account.plan.fate;
    bool const inTime = account.answersInTime > 0;
    if (isRefused(fate) || account.reachedDead) {
        // A module that dies between the record and the refusal tells of it.
        return {0, account.inDoomedSession ? 1 : 0};
    }
    if (fate == Fate::ReplyLost && kHardened) {
        return {0, 1};  // refused, as the library sees it, unless the answer was faster
    }
    if (account.inDoomedSession) {
        return {1, 1};  // by its answer or by the module's death
    }
    return inTime ? Due{1, 1} : Due{0, 0};
}

}  // namespace

Account::~Account() {
    ledger.close(*this);
}

void Ledger::add(Count what, uint64_t howMany) {
    mCounts[static_cast<size_t>(what)].fetch_add(howMany, std::memory_order_relaxed);
}

uint64_t Ledger::count(Count what) const {
    return mCounts[static_cast<size_t>(what)].load(std::memory_order_relaxed);
}

void Ledger::blame(Count what, Account const& account, char const* why) {
    add(what);
    if (mBlamed.fetch_add(1) >= kBlamedAloud) {
        return;
    }
    Plan const& plan = account.plan;
    fprintf(stderr,
            "soak: request %u %s: %s; call %d, %s, %d answers of %d in time, told metadata %d, "
            "end %d, returned %d, buffers: %s, trailer %d, status %u%s%s%s\n",
            account.number, plan.waits ? "without callback" : "with callback", why,
            static_cast<int>(plan.call), kFateNames[static_cast<int>(plan.fate)],
            account.answersInTime.load(), account.answers.load(), account.metadataTold.load(),
            account.endsTold.load(), account.result.load(),
            kBufferFaultNames[static_cast<int>(plan.buffers)], static_cast<int>(plan.trailer),
            static_cast<uint32_t>(plan.status), account.inDoomedSession ? ", module dies" : "",
            account.isSecond ? ", number outstanding" : "", account.givenUp ? ", given up" : "");
}

AccountRef Ledger::openAccount(Plan const& plan, uint32_t number, bool inDoomedSession) {
    auto const one = [](std::atomic<uint64_t>& counter, bool counts = true) {
        counter.fetch_add(counts ? 1 : 0, std::memory_order_relaxed);
    };
    ++mOpen;
    add(Count::Requests);
    one(mFates[static_cast<size_t>(plan.fate)]);
    one(mBufferFaults[static_cast<size_t>(plan.buffers)]);
    one(mDoubled, plan.copies > 1);
    one(mDoubledTogether, plan.copies > 1 && plan.copiesTogether);
    one(mSlowListeners, plan.slowMicroseconds > 0);
    one(mLostListeners, plan.listenerLost);
    one(mWrongTrailers, plan.trailer != Trailer::Right);
    one(mWithout3A, plan.threeA != ThreeA::Given);
    one(mFailedStatuses, plan.status != isphal::Status::OK);
    return std::make_shared<Account>(*this, plan, number, inDoomedSession);
}

uint32_t Ledger::takeFreeNumber() {
    std::lock_guard<std::mutex> const guard(mLock);
    return mFreeCount == 0 ? 0 : mFree[--mFreeCount];
}

/**
 * Whether the account's number has left the request table for good. The library has let go of the
 * callback by now, if there was one; without one only a result that was handled to its end tells.
 */
bool Ledger::isFree(Account const& account) {
    if (account.isSecond || account.numberIsTaken || account.result < 0) {
        return false;
    }
    return !account.plan.waits || (account.answersInTime > 0 && account.returned);
}

void Ledger::close(Account const& account) {
    --mOpen;
    if (!account.plan.waits) {
        judgeTold(account);
    } else if (account.metadataTold + account.endsTold > 0) {
        blame(Count::Uninvited, account, "somebody was told");
    }
    if (isFree(account)) {
        std::lock_guard<std::mutex> const guard(mLock);
        if (mFreeCount < kFreeNumbers) {
            mFree[mFreeCount++] = account.number;
        }
    }
}

void Ledger::judgeTold(Account const& account) {
    Due const due = dueOf(account);
    int const ends = account.endsTold;
    int const metadata = account.metadataTold;
    if (ends > 1 || metadata > 1) {
        blame(Count::ToldTwice, account, "told more than once");
    } else if (ends < due.least) {
        blame(Count::Lost, account, "never told");
    } else if (ends > due.most) {
        blame(Count::Uninvited, account, "told, and should not have been");
    } else if (account.wrong != nullptr) {
        blame(Count::WrongContent, account, account.wrong);
    } else if (metadata > ends || (metadata < ends && !account.inDoomedSession)) {
        blame(Count::WrongContent, account, "told the end or the metadata alone");
    } else {
        add(ends == 1 ? Count::ToldOnce : Count::RightlyNever);
    }
}

bool Ledger::isClean() const {
    for (Count const what :
         {Count::Lost, Count::ToldTwice, Count::Uninvited, Count::WrongContent, Count::WrongReturn,
          Count::UnearnedTimeout, Count::UnearnedDrain, Count::IspSawWrong}) {
        if (count(what) != 0) {
            return false;
        }
    }
    return mOpen == 0;
}

std::string Ledger::faultsText() const {
    std::string text;
    auto const append = [&text](char const* name, uint64_t value) {
        text += (text.empty() ? "" : ", ") + std::string(name) + " " + std::to_string(value);
    };
    for (size_t i = 1; i < kFates; ++i) {
        append(kFateNames[i], mFates[i]);
    }
    append("answered again", mDoubled);
    append("at the same moment", mDoubledTogether);
    append("late", count(Count::LateAnswers));
    append("early results", count(Count::EarlyResults));
    append("unknown numbers", count(Count::Strays));
    append("status not OK", mFailedStatuses);
    append("malformed metadata", count(Count::Malformed));
    append("number outstanding", count(Count::SecondsOfANumber));
    append("number used again", count(Count::NumbersUsedAgain));
    append("refused before anything", count(Count::CallsRefusedEarly));
    for (size_t i = 1; i < kBufferFaults; ++i) {
        append(kBufferFaultNames[i], mBufferFaults[i]);
    }
    append("wrong trailers", mWrongTrailers);
    append("without a 3A buffer", mWithout3A);
    append("slow callbacks", mSlowListeners);
    append("lost callbacks", mLostListeners);
    append("sessions", count(Count::Sessions));
    append("destroyed in the middle", count(Count::SessionsEndedInTheMiddle));
    append("module deaths", count(Count::Deaths));
    append("reconfigurations", count(Count::Drains));
    append("given up", count(Count::EarnedDrains));
    append("earned time-outs", count(Count::EarnedTimeouts));
    return text;
}

}  // namespace quensoak
