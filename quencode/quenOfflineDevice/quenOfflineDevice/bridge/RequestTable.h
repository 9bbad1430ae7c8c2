#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include <utils/StrongPointer.h>
#include <vendor/quen/hardware/camera/quenpostproc/1.0/IQuenPostProcCallback.h>

#include "quenCommon/Mutex.h"
#include "quenOfflineDevice/bridge/OfflineRequest.h"

/** An outstanding request and the client callback for its result. */
struct offlineRequestCallback {
    OfflineRequest* request;
    /** Null: `process` waits for the result. */
    android::sp<vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback> callback;
};

namespace quen {

/**
 * The table of requests that wait for a result, by request number.
 *
 * The client's thread inserts, drains and gives up; the ISP HAL's threads claim and erase. A result
 * claims its entry: from then on the record is that result's alone, and nobody else deletes it. The
 * entry stays in the table until the result erases it, so that a drained wait sees it and its
 * number stays taken.
 *
 * Any thread. The table has a lock of its own and calls nothing outside with it held: references
 * and records that leave the table are released by the caller.
 */
class RequestTable {
  public:
    using Callback =
            android::sp<vendor::quen::hardware::camera::quenpostproc::V1_0::IQuenPostProcCallback>;

    /** What became of an insertion. */
    enum class Insertion {
        Recorded,     ///< the table owns the record
        NumberTaken,  ///< the number is outstanding; the record is still the caller's
        Closed,       ///< the table is closed; the caller keeps the record
    };

    /** An entry taken over by a result, or when the table is cleared. */
    struct Claim {
        uint32_t number = 0;
        uint64_t serial = 0;                ///< tells entries of one number apart; 0: nothing found
        OfflineRequest* request = nullptr;  ///< the claimer's to destroy
        Callback callback;
        std::string stage;

        explicit operator bool() const { return serial != 0; }
    };

    /**
     * Records a request. The text that its stage points at is copied: it is the device object's,
     * which may be gone when the result comes.
     */
    Insertion insert(OfflineRequest* request, Callback callback) QUEN_EXCLUDES(mLock);

    /** Takes over an entry that no result has taken over; nothing when there is none. */
    Claim claim(uint32_t number) QUEN_EXCLUDES(mLock);

    /**
     * Erases the entry that was claimed. One recorded meanwhile under the same number stays.
     */
    void erase(Claim const& claim) QUEN_EXCLUDES(mLock);

    /**
     * Erases a request that nobody has claimed.
     *
     * @return whether the caller owns the record again
     */
    bool withdraw(uint32_t number, OfflineRequest const* request) QUEN_EXCLUDES(mLock);

    /** Empties the table. Claims and returns the entries that no result has claimed. */
    std::vector<Claim> clear() QUEN_EXCLUDES(mLock);

    /** As clear, and nothing is recorded from now on. */
    std::vector<Claim> close() QUEN_EXCLUDES(mLock);

    bool empty() const QUEN_EXCLUDES(mLock);
    size_t size() const QUEN_EXCLUDES(mLock);

    /** The numbers that are outstanding, in the table's order. */
    std::vector<uint32_t> numbers() const QUEN_EXCLUDES(mLock);

  private:
    struct Entry {
        offlineRequestCallback recorded;
        std::string stage;  // a copy of the record's
        uint64_t serial;
        bool isClaimed;
    };
    using Entries = std::unordered_map<uint32_t, Entry>;

    static Claim claimOf(uint32_t number, Entry& entry);
    std::vector<Claim> takeAllLocked() QUEN_REQUIRES(mLock);

    mutable Mutex mLock;
    Entries mEntries QUEN_GUARDED_BY(mLock);
    uint64_t mLastSerial QUEN_GUARDED_BY(mLock) = 0;
    bool mIsClosed QUEN_GUARDED_BY(mLock) = false;
};

}  // namespace quen
