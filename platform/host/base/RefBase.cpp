#include <utils/RefBase.h>

#include <atomic>

#include <android/log.h>

namespace android {
namespace {

// Strong count of an object that never had a strong reference. Far above any real count, which
// tells such an object from one that has lost its last reference.
constexpr int32_t kNeverHeld = 1 << 28;

}  // namespace

/**
 * Counts the object itself as one weak reference, so that its constructor may take and drop weak
 * references. Deleted with the last weak reference.
 */
class RefBase::Counts final : public RefBase::weakref_type {
  public:
    /** Takes kNeverHeld off the count. Only for the thread whose increment found it there. */
    void endNeverHeld() { mStrong.fetch_sub(kNeverHeld, std::memory_order_relaxed); }

    std::atomic<int32_t> mStrong{kNeverHeld};
    std::atomic<int32_t> mWeak{1};
};

void RefBase::weakref_type::incWeak(void const* /*id*/) {
    static_cast<Counts*>(this)->mWeak.fetch_add(1, std::memory_order_relaxed);
}

void RefBase::weakref_type::decWeak(void const* /*id*/) {
    auto* const counts = static_cast<Counts*>(this);
    if (counts->mWeak.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete counts;
    }
}

bool RefBase::weakref_type::attemptIncStrong(void const* /*id*/) {
    auto* const counts = static_cast<Counts*>(this);
    int32_t strong = counts->mStrong.load(std::memory_order_relaxed);
    while (strong > 0) {
        // Counts an object that was never held like any other: when another thread takes and drops
        // its first reference after the load, the exchange fails.
        if (counts->mStrong.compare_exchange_weak(strong, strong + 1, std::memory_order_relaxed)) {
            if (strong == kNeverHeld) {
                counts->endNeverHeld();
            }
            return true;
        }
    }
    return false;
}

RefBase::RefBase() : mCounts(new Counts) {}

RefBase::~RefBase() {
    bool const isOwnersToDelete = mCounts->mStrong.load(std::memory_order_relaxed) == kNeverHeld;
    if (isOwnersToDelete && mCounts->mWeak.load(std::memory_order_relaxed) != 1) {
        __android_log_assert(nullptr, "RefBase",
                             "%p, which never was held, deleted while weak references are left",
                             static_cast<void const*>(this));
    }
    mCounts->decWeak(this);
}

void RefBase::incStrong(void const* /*id*/) const {
    int32_t const before = mCounts->mStrong.fetch_add(1, std::memory_order_relaxed);
    if (before == kNeverHeld) {
        mCounts->endNeverHeld();
        const_cast<RefBase*>(this)->onFirstRef();
    } else if (before <= 0) {
        __android_log_assert(nullptr, "RefBase", "strong reference to %p, which is being destroyed",
                             static_cast<void const*>(this));
    }
}

void RefBase::decStrong(void const* id) const {
    int32_t const before = mCounts->mStrong.fetch_sub(1, std::memory_order_acq_rel);
    if (before == 1) {
        const_cast<RefBase*>(this)->onLastStrongRef(id);
        delete this;
    } else if (before <= 0 || before == kNeverHeld) {
        __android_log_assert(nullptr, "RefBase", "%p lost a strong reference that it did not have",
                             static_cast<void const*>(this));
    }
}

RefBase::weakref_type* RefBase::createWeak(void const* id) const {
    mCounts->incWeak(id);
    return mCounts;
}

RefBase::weakref_type* RefBase::getWeakRefs() const {
    return mCounts;
}

int32_t RefBase::getStrongCount() const {
    return mCounts->mStrong.load(std::memory_order_relaxed);
}

void RefBase::onFirstRef() {}

void RefBase::onLastStrongRef(void const* /*id*/) {}

void sp_report_race() {
    __android_log_assert(nullptr, "StrongPointer",
                         "a strong reference changed while it was being assigned");
}

}  // namespace android
