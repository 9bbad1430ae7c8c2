#include "quenOfflineDevice/bridge/RequestTable.h"

#include <utility>

namespace quen {

RequestTable::Insertion RequestTable::insert(OfflineRequest* request, Callback callback) {
    // What the log prints for a null text.
    char const* const stage = request->stage == nullptr ? "(null)" : request->stage;
    Entry entry = {{request, std::move(callback)}, stage, 0, false};
    MutexLock const lock(mLock);
    if (mIsClosed) {
        return Insertion::Closed;
    }
    entry.serial = mLastSerial + 1;
    // A taken number leaves `entry` as it is: its callback is released after the lock.
    bool const isNew = mEntries.try_emplace(request->requestNumber, std::move(entry)).second;
    if (!isNew) {
        return Insertion::NumberTaken;
    }
    ++mLastSerial;
    return Insertion::Recorded;
}

RequestTable::Claim RequestTable::claim(uint32_t number) {
    MutexLock const lock(mLock);
    auto const found = mEntries.find(number);
    if (found == mEntries.end() || found->second.isClaimed) {
        return {};
    }
    Entry& entry = found->second;
    return claimOf(number, entry);
}

void RequestTable::erase(Claim const& claim) {
    MutexLock const lock(mLock);
    auto const found = mEntries.find(claim.number);
    if (found != mEntries.end() && found->second.serial == claim.serial) {
        mEntries.erase(found);  // its callback is the claim's since it was claimed
    }
}

bool RequestTable::withdraw(uint32_t number, OfflineRequest const* request) {
    Entries::node_type withdrawn;  // released after the lock
    MutexLock const lock(mLock);
    auto const found = mEntries.find(number);
    if (found == mEntries.end() || found->second.isClaimed ||
        found->second.recorded.request != request) {
        return false;
    }
    withdrawn = mEntries.extract(found);
    return true;
}

std::vector<RequestTable::Claim> RequestTable::clear() {
    MutexLock const lock(mLock);
    return takeAllLocked();
}

std::vector<RequestTable::Claim> RequestTable::close() {
    MutexLock const lock(mLock);
    mIsClosed = true;
    return takeAllLocked();
}

bool RequestTable::empty() const {
    MutexLock const lock(mLock);
    return mEntries.empty();
}

size_t RequestTable::size() const {
    MutexLock const lock(mLock);
    return mEntries.size();
}

std::vector<uint32_t> RequestTable::numbers() const {
    std::vector<uint32_t> numbers;
    MutexLock const lock(mLock);
    numbers.reserve(mEntries.size());
    for (auto const& entry : mEntries) {
        numbers.push_back(entry.first);
    }
    return numbers;
}

/** Takes an entry over; its number stays taken until the entry is erased. */
RequestTable::Claim RequestTable::claimOf(uint32_t number, Entry& entry) {
    entry.isClaimed = true;
    return {number, entry.serial, entry.recorded.request, std::move(entry.recorded.callback),
            std::move(entry.stage)};
}

/** Empties the table. Records that a result has claimed are left to that result. */
std::vector<RequestTable::Claim> RequestTable::takeAllLocked() {
    std::vector<Claim> claims;
    for (auto& [number, entry] : mEntries) {
        if (!entry.isClaimed) {
            claims.push_back(claimOf(number, entry));
        }
    }
    mEntries.clear();  // no callback is left in it
    return claims;
}

}  // namespace quen
